"""python3 sensor_list.py sensorinfo.txt: counts sensors and their properties."""
import sys

NAMES = ["item%d" % number for number in range(1, 11)]

records = properties = 0
with open(sys.argv[1], "rb") as capture:
    for line in capture:
        record = dict(zip(NAMES, line.rstrip(b"\n").split(b"|")))
        records += 1
        properties += len(record)
print(records, properties)
