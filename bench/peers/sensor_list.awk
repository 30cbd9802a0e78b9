# gawk -b -f sensor_list.awk sensorinfo.txt: counts sensors and their properties.
BEGIN { FS = "|" }
NF == 10 {
    for (i = 1; i <= 10; i++) record["item" i] = $i
    records++
    properties += length(record)
}
END { print records, properties }
