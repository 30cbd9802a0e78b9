# gawk -b -f term_log.awk fwtermlog.txt: counts lines, if the log is one.
/Firmware Term Log Information/ { is_log = 1 }
                                { record["FWTERMLOG"] = $0; records++; properties += length(record) }
END                             { if (is_log) print records, properties }
