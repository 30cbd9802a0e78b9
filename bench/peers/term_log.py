"""python3 term_log.py fwtermlog.txt: counts lines, if the log is one."""
import sys

records = properties = 0
record, is_log = {}, False
with open(sys.argv[1], "rb") as capture:
    for line in capture:
        is_log = is_log or b"Firmware Term Log Information" in line
        record["FWTERMLOG"] = line
        records += 1
        properties += len(record)
if is_log:
    print(records, properties)
