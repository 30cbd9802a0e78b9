"""python3 drive_list.py pdlist.txt: counts drives and their properties."""
import sys

WANTED = {
    b"Shield Counter", b"Media Error Count", b"Other Error Count", b"Drive Temperature",
    b"Predictive Failure Count", b"S.M.A.R.T alert flagged by drive", b"SN", b"WWN",
    b"Firmware Revision", b"Raw size", b"Non Coerced size", b"Coerced size", b"Device Speed",
    b"Link Speed", b"Logical Sector Size", b"Enclosure position", b"Connected Port Number",
    b"Commissioned Spare", b"Emergency Spare", b"Needs EKM Attention",
}

records = properties = 0
record = {}
with open(sys.argv[1], "rb") as capture:
    for line in capture:
        key, equals, value = line.partition(b" =")
        if key not in WANTED:
            continue
        record[key] = value
        if key == b"Needs EKM Attention":
            records += 1
            properties += len(record)
print(records, properties)
