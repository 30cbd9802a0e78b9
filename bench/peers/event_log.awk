# gawk -b -f event_log.awk raidevents.txt: counts events and their properties.
function value(key) { return substr($0, index($0, key) + length(key) + 1) }
function finish() { record["EventData"] = data; records++; properties += length(record) }
/seqNum:/                    { if (started) finish(); started = 1; record["seqNum"] = value("seqNum:"); next }
/Seconds since last reboot:/ { record["Time"] = value("reboot:"); next }
/Time:/                      { record["Time"] = value("Time:"); next }
/Code:/                      { record["Code"] = value("Code:"); next }
/Class:/                     { record["Class"] = value("Class:"); next }
/Locale:/                    { record["Locale"] = value("Locale:"); next }
/Event Description:/         { record["EventDescription"] = value("Description:"); next }
/Event Data:/                { next }
/=======/                    { data = ""; next }
started && /Controller =/    { finish(); next }
                             { data = data $0 "\n" }
END                          { print records, properties }
