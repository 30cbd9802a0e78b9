"""python3 event_log.py raidevents.txt: counts events and their properties."""
import sys

PROPERTY = {
    b"seqNum": "seqNum",
    b"Seconds since last reboot": "Time",
    b"Time": "Time",
    b"Code": "Code",
    b"Class": "Class",
    b"Locale": "Locale",
    b"Event Description": "EventDescription",
}

records = properties = 0
record, data, started = {}, [], False


def finish():
    global records, properties
    record["EventData"] = b"".join(data)
    records += 1
    properties += len(record)


with open(sys.argv[1], "rb") as capture:
    for line in capture:
        key, colon, value = line.partition(b":")
        name = PROPERTY.get(key)
        if name:
            if name == "seqNum":
                if started:
                    finish()
                started = True
            record[name] = value[1:]
        elif key == b"Event Data":
            pass
        elif b"=======" in line:
            data = []
        elif started and b"Controller =" in line:
            finish()
        else:
            data.append(line)
print(records, properties)
