# gawk -b -f drive_list.awk pdlist.txt: counts drives and their properties.
BEGIN {
    FS = " = ?"
    split("Shield Counter|Media Error Count|Other Error Count|Drive Temperature|" \
          "Predictive Failure Count|S.M.A.R.T alert flagged by drive|SN|WWN|Firmware Revision|" \
          "Raw size|Non Coerced size|Coerced size|Device Speed|Link Speed|Logical Sector Size|" \
          "Enclosure position|Connected Port Number|Commissioned Spare|Emergency Spare|" \
          "Needs EKM Attention", names, "|")
    for (i in names) wanted[names[i]] = 1
}
NF > 1 && $1 in wanted {
    record[$1] = $2
    if ($1 == "Needs EKM Attention") { records++; properties += length(record) }
}
END { print records, properties }
