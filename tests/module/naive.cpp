#include "naive.h"

#include <cstdio>
#include <cstring>
#include <vector>

#include "fakehost.h"

namespace naive {

namespace {

struct Row {
    explicit Row(const std::string& head) : head_(head) {}

    void set(const char* id, const char* display, const char* value) {
        for (auto& property : properties_) {
            if (property.id != id) continue;
            property = {id, display, value};
            return;
        }
        properties_.push_back({id, display, value});
    }

    void add(std::string& notes) const {
        notes += "add " + head_ + " -1:";
        const char* separator = " ";
        for (const auto& [id, display, value] : properties_) {
            notes += separator + id + " \"" + fakehost::escaped(display) + "\"=\"" +
                     fakehost::escaped(value) + "\"";
            separator = ", ";
        }
        notes += "\n";
    }

private:
    struct Property {
        std::string id, display, value;
    };
    std::string head_;
    std::vector<Property> properties_;
};

// What stands `offset` characters behind `at`, nothing if the line ends before.
const char* behind(const char* at, std::size_t offset) {
    return std::strlen(at) < offset ? "" : at + offset;
}

// One test of the chain: the value is what follows the key and `skip` characters.
bool took(Row& row, const char* line, const char* key, const char* id, const char* display,
          std::size_t skip = 0) {
    const char* at = std::strstr(line, key);
    if (!at) return false;
    row.set(id, display, behind(at, std::strlen(key) + skip));
    return true;
}

std::vector<char> whole(const std::string& file) {
    std::vector<char> text;
    FILE* in = std::fopen(file.c_str(), "r");
    for (int c = 0; (c = std::fgetc(in)) != EOF;) text.push_back(static_cast<char>(c));
    std::fclose(in);
    text.push_back('\0');
    return text;
}

}  // namespace

std::string summary(const std::string& file) {
    std::string notes;
    Row row("RAIDINFO \"LSI Controller 0 Info\"");
    char line[512];
    FILE* in = std::fopen(file.c_str(), "r");
    while (std::fgets(line, sizeof line, in)) {
        if (took(row, line, "Product Name =", "ProductName", "Product Name")) {
        } else if (took(row, line, "Serial Number =", "SerialNumber", "Serial Number")) {
        } else if (took(row, line, "SAS Address =", "SASAddress", "SAS Address")) {
        } else if (took(row, line, "Mfg. Date =", "MfgDate", "Mfg. Date")) {
        } else if (took(row, line, "System Time =", "SystemTime", "System Time")) {
        } else if (took(row, line, "Controller Time =", "ControllerTime", "Controller Time")) {
        } else if (took(row, line, "FW Package Build =", "FWPackageBuild", "FW Package Build")) {
        } else if (took(row, line, "BIOS Version =", "BIOSVersion", "BIOS Version")) {
        } else if (took(row, line, "FW Version =", "FWVersion", "FW Version")) {
        } else if (took(row, line, "Driver Name =", "DriverName", "Driver Name")) {
        } else if (took(row, line, "Driver Version =", "DriverVersion", "Driver Version")) {
        } else if (took(row, line, "Bus Number =", "BusNumber", "Bus Number")) {
        } else if (took(row, line, "Device Number =", "DeviceNumber", "Device Number")) {
        } else if (took(row, line, "Function Number =", "FunctionNumber", "Function Number")) {
            row.add(notes);
        }
    }
    std::fclose(in);
    return notes;
}

std::string drive_details(const std::string& file) {
    std::string notes;
    Row row("PDLIST \"Controller 0 PDLIST\"");
    char line[512];
    FILE* in = std::fopen(file.c_str(), "r");
    while (std::fgets(line, sizeof line, in)) {
        if (took(row, line, "Shield Counter =", "ShieldCounter", "Shield Counter")) {
        } else if (took(row, line, "Media Error Count =", "MediaErrorCount", "Media Error Count")) {
        } else if (took(row, line, "Other Error Count =", "OtherErrorCount", "Other Error Count")) {
        } else if (took(row, line, "Drive Temperature =", "DriveTemperature",
                        "Drive Temperature")) {
        } else if (took(row, line, "Predictive Failure Count =", "PredictiveFail",
                        "Predictive Failure Count")) {
        } else if (took(row, line, "S.M.A.R.T alert flagged by drive =", "SMARTflag",
                        "S.M.A.R.T alert flagged by drive")) {
        } else if (took(row, line, "SN =", "SN", "SN")) {
        } else if (took(row, line, "WWN =", "WWN", "WWN")) {
        } else if (took(row, line, "Firmware Revision =", "FirmwareRevision",
                        "Firmware Revision")) {
        } else if (took(row, line, "Raw size =", "Rawsize", "Raw size")) {
        } else if (const char* size = std::strstr(line, "Coerced size =")) {
            const char* value = size + std::strlen("Coerced size =");
            if (std::strstr(line, "Non Coerced size ="))
                row.set("NonCoercedsize", "Non Coerced size", value);
            else
                row.set("Coercedsize", "Coerced size", value);
        } else if (took(row, line, "Device Speed =", "DeviceSpeed", "Device Speed")) {
        } else if (took(row, line, "Link Speed =", "LinkSpeed", "Link Speed")) {
        } else if (took(row, line, "Logical Sector Size =", "LogicalSectorSize",
                        "Logical Sector Size")) {
        } else if (took(row, line, "Enclosure position =", "Enclosureposition",
                        "Enclosure position")) {
        } else if (took(row, line, "Connected Port Number =", "ConnectedPortNumber",
                        "Connected Port Number")) {
        } else if (took(row, line, "Commissioned Spare =", "CommissionedSpare",
                        "Commissioned Spare")) {
        } else if (took(row, line, "Emergency Spare =", "EmergencySpare", "Emergency Spare")) {
        } else if (took(row, line, "Needs EKM Attention =", "NeedsEKMAttention",
                        "Needs EKM Attention")) {
            row.add(notes);
        }
    }
    std::fclose(in);
    return notes;
}

std::string lists(const std::string& file) {
    std::string notes;
    Row t("TINFO \"Controller 0 TOPOLOGY INFO\"");
    Row v("VINFO \"Controller 0 Virtual Drive List\"");
    Row p("PINFO \"Controller 0 Physical Drive List\"");
    bool in_t = false;
    bool in_v = false;
    bool in_p = false;
    int count = 0;
    char line[512];
    char copy[512];
    FILE* in = std::fopen(file.c_str(), "r");
    while (std::fgets(line, sizeof line, in)) {
        if (std::strstr(line, "TOPOLOGY :")) in_t = true;
        if (std::strstr(line, "VD LIST :")) in_v = true;
        if (std::strstr(line, "PD LIST :")) in_p = true;
        if (in_t) {
            if (count <= 5) {
                ++count;
                continue;
            }
            if (std::strstr(line, "--------------------------")) {
                in_t = false;
                count = 0;
            } else {
                std::string size;
                int n = 0;
                std::strcpy(copy, line);
                for (char* f = std::strtok(copy, " "); f; f = std::strtok(nullptr, " ")) {
                    switch (++n) {
                        case 1: t.set("DG", "Disk Group Index", f); break;
                        case 2: t.set("Arr", "Array Index", f); break;
                        case 3: t.set("Row", "Row Index", f); break;
                        case 4: t.set("EID", "EID:Slot", f); break;
                        case 5: t.set("DID", "Device ID", f); break;
                        case 6: t.set("Type", "Type", f); break;
                        case 7: t.set("State", "State", f); break;
                        case 8: t.set("BT", "Background Task Active", f); break;
                        case 9: size = f; break;
                        case 10: t.set("Size", "Size", (size + " " + f).c_str()); break;
                        case 11: t.set("PDC", "PD Cache", f); break;
                        case 12: t.set("PI", "Protection Info", f); break;
                        case 13: t.set("SED", "Self Encrypting Drive", f); break;
                        case 14: t.set("DS3", "Dimmer Switch 3", f); break;
                        case 15:
                            t.set("FSpace", "Free Space Present", f);
                            t.add(notes);
                            break;
                        default: break;
                    }
                }
            }
        }
        if (in_v) {
            if (count <= 5) {
                ++count;
                continue;
            }
            if (std::strstr(line, "---------------------------")) {
                in_v = false;
                count = 0;
            } else {
                std::string size;
                int n = 0;
                std::strcpy(copy, line);
                for (char* f = std::strtok(copy, " "); f; f = std::strtok(nullptr, " ")) {
                    switch (++n) {
                        case 1: v.set("DG", "DG/VD", f); break;
                        case 2: v.set("TYPE", "TYPE", f); break;
                        case 3: v.set("State", "State", f); break;
                        case 4: v.set("Access", "Access", f); break;
                        case 5: v.set("Consist", "Consist", f); break;
                        case 6: v.set("Cache", "Cache", f); break;
                        case 7: v.set("sCC", "sCC", f); break;
                        case 8: size = f; break;
                        case 9: v.set("Size", "Size", (size + " " + f).c_str()); break;
                        case 10:
                            v.set("Name", "Name", f);
                            v.add(notes);
                            break;
                        default: break;
                    }
                }
            }
        }
        if (in_p) {
            if (count <= 5) {
                ++count;
                continue;
            }
            if (std::strstr(line, "----------------------------")) {
                in_p = false;
                count = 0;
            } else {
                std::string size;
                int n = 0;
                std::strcpy(copy, line);
                for (char* f = std::strtok(copy, " "); f; f = std::strtok(nullptr, " ")) {
                    switch (++n) {
                        case 1: p.set("EID", "EID:Slt", f); break;
                        case 2: p.set("DID", "Device ID", f); break;
                        case 3: p.set("State", "State", f); break;
                        case 4: p.set("DG", "DriveGroup", f); break;
                        case 5: size = f; break;
                        case 6: p.set("Size", "Size", (size + " " + f).c_str()); break;
                        case 7: p.set("Intf", "Intf", f); break;
                        case 8: p.set("Med", "Med", f); break;
                        case 9: p.set("SED", "SED", f); break;
                        case 10: p.set("PI", "PI", f); break;
                        case 11: p.set("SeSz", "SeSz", f); break;
                        case 12: p.set("Model", "Model", f); break;
                        case 13:
                            p.set("Sp", "Spun", f);
                            p.add(notes);
                            break;
                        default: break;
                    }
                }
            }
        }
    }
    std::fclose(in);
    return notes;
}

std::string events(const std::string& file) {
    std::string notes;
    std::vector<Row> pages;
    for (int i = 1; i <= 5; ++i) {
        const auto n = std::to_string(i);
        Row& page =
            pages.emplace_back("EVENTLOG" + n + " \"LSI Controller 0 event log page" + n + "\"");
        page.set("seqNum", "seqNum", "");
        page.set("EventData", "Event Data", "");
        page.set("Time", "Time", "");
        page.set("Code", "Code", "");
        page.set("Class", "Class", "");
        page.set("Locale", "Locale", "");
        page.set("EventDescription", "Event Description", "");
    }
    const auto page_of = [&](int n) -> Row& {
        if (n < 3000) return pages[0];
        if (n <= 5999) return pages[1];
        if (n <= 8999) return pages[2];
        if (n <= 11999) return pages[3];
        return pages[4];
    };
    std::string data;  // the buffer is empty at the start of a test
    int n = 0;
    int lines = 0;
    char line[512];
    FILE* in = std::fopen(file.c_str(), "r");
    while (std::fgets(line, sizeof line, in)) {
        ++lines;
        const auto finish = [&](Row& page) {
            page.set("EventData", "Event Data", data.c_str());
            page.add(notes);
        };
        if (std::strstr(line, "Controller =") && n != 0) {
            finish(page_of(n));
        } else if (const char* at = std::strstr(line, "seqNum:")) {
            const char* value = behind(at, 8);
            if (n < 3000) {
                if (lines > 13) finish(pages[0]);
                pages[0].set("seqNum", "seqNum", value);
                if (++n == 3000) pages[1].set("seqNum", "seqNum", value);
            } else if (n <= 5999) {
                finish(pages[1]);
                pages[1].set("seqNum", "seqNum", value);
                if (++n == 6000) pages[2].set("seqNum", "seqNum", value);
            } else if (n <= 8999) {
                finish(pages[2]);
                pages[2].set("seqNum", "seqNum", value);
                if (++n == 9000) pages[3].set("seqNum", "seqNum", value);
            } else if (n <= 11999) {
                finish(pages[3]);
                pages[3].set("seqNum", "seqNum", value);
                if (++n == 12000) pages[4].set("seqNum", "seqNum", value);
            } else {
                finish(pages[4]);
                pages[4].set("seqNum", "seqNum", value);
                ++n;
            }
        } else if (took(page_of(n), line, "Seconds since last reboot:", "Time", "Time", 1)) {
        } else if (took(page_of(n), line, "Time:", "Time", "Time", 1)) {
        } else if (took(page_of(n), line, "Code:", "Code", "Code", 1)) {
        } else if (took(page_of(n), line, "Class:", "Class", "Class", 1)) {
        } else if (took(page_of(n), line, "Locale:", "Locale", "Locale", 1)) {
        } else if (took(page_of(n), line, "Event Description:", "EventDescription",
                        "Event Description", 1)) {
        } else if (std::strstr(line, "Event Data:")) {
        } else if (std::strstr(line, "=======")) {
            data.clear();
        } else {
            data = (data + line).substr(0, 2047);
        }
    }
    std::fclose(in);
    return notes;
}

std::string term_log(const std::string& file) {
    std::string notes;
    char line[512];
    bool found = false;
    FILE* in = std::fopen(file.c_str(), "r");
    while (!found && std::fgets(line, sizeof line, in))
        found = std::strstr(line, "Firmware Term Log Information") != nullptr;
    std::rewind(in);
    Row row("FWTERMLOG \"Controller 0 FW Term Log\"");
    while (found && std::fgets(line, sizeof line, in)) {
        row.set("FWTERMLOG", "FW termlog", line);
        row.add(notes);
    }
    std::fclose(in);
    return notes;
}

std::string integrated_raid_log(const std::string& file) {
    std::string notes;
    Row row("SAS2IRLOG \"LSI SAS2308 Log\"");
    char line[512];
    FILE* in = std::fopen(file.c_str(), "r");
    while (std::fgets(line, sizeof line, in)) {
        if (took(row, line, "Time:", "Time", "Time", 1)) {
        } else if (took(row, line, "LogSequence:", "LogSequence", "LogSequence")) {
        } else if (took(row, line, "LogEntryQualifier:", "LogEntryQualifier",
                        "LogEntryQualifier")) {
        } else if (took(row, line, "LogEntryDescription:", "LogEntryDescription",
                        "LogEntryDescription")) {
        } else if (took(row, line, "LogEntryValue:", "LogEntryValue", "LogEntryValue")) {
        } else if (took(row, line, "vf_id:", "vfid", "vf_id")) {
        } else if (took(row, line, "vp_id:", "vpid", "vp_id")) {
        } else if (took(row, line, "LogCode:", "LogCode", "LogCode")) {
        } else if (took(row, line, "LogDataDescription:", "LogDataDescription",
                        "LogDataDescription")) {
        } else if (took(row, line, "LogDataValue:", "LogDataValue", "LogDataValue")) {
        } else if (took(row, line, "LogClass:", "LogClass", "LogClass")) {
        } else if (took(row, line, "ArgumentType:", "ArgumentType", "ArgumentType")) {
        } else if (took(row, line, "Locale:", "Locale", "Locale")) {
            row.add(notes);
        }
    }
    std::fclose(in);
    return notes;
}

std::string sensors(const std::string& file) {
    std::string notes;
    auto text = whole(file);
    if (std::strstr(text.data(), "Error sending MS")) return notes;
    std::vector<const char*> columns[10];
    int column = 0;
    for (char* f = std::strtok(text.data(), "|\n\r"); f; f = std::strtok(nullptr, "|\n\r")) {
        columns[column].push_back(f);
        column = column == 9 ? 0 : column + 1;
    }
    const char* names[] = {"Name", "Reading", "Units", "Status", "LNR",
                           "LC",   "LNC",     "UNC",   "UC",     "UNR"};
    for (std::size_t r = 0; r < columns[0].size(); ++r) {
        Row row("SENSORINFO \"Sensor Status\"");
        for (int i = 0; i < 10; ++i) {
            const auto id = "item" + std::to_string(i + 1);
            row.set(id.c_str(), names[i], r < columns[i].size() ? columns[i][r] : "");
        }
        row.add(notes);
    }
    return notes;
}

namespace {

bool tells_error(const char* text) {
    return std::strstr(text, "Error") || std::strstr(text, "Bad response") ||
           std::strstr(text, "Cannot open an IPMI driver");
}

// Labels and values in turn; the ids are the prefix and a number.
std::string labels(std::vector<char> text, const char* head, const char* delimiters,
                   const char* prefix, std::size_t most) {
    std::string notes;
    if (tells_error(text.data())) return notes;
    std::vector<const char*> tokens;
    for (char* f = std::strtok(text.data(), delimiters); f; f = std::strtok(nullptr, delimiters))
        tokens.push_back(f);
    Row row(head);
    for (std::size_t i = 0; i < tokens.size() && i / 2 < most; i += 2) {
        const auto id = prefix + std::to_string(i / 2 + 1);
        row.set(id.c_str(), tokens[i], i + 1 < tokens.size() ? tokens[i + 1] : "");
    }
    row.add(notes);
    return notes;
}

std::string rows_without_ends(std::vector<char> text, const char* head, const char* id,
                              const char* display) {
    std::string notes;
    Row row(head);
    for (char* f = std::strtok(text.data(), "\n\r"); f; f = std::strtok(nullptr, "\n\r")) {
        row.set(id, display, f);
        row.add(notes);
    }
    return notes;
}

std::string rows_as_read(const std::string& file, const char* head, const char* id,
                         const char* display) {
    std::string notes;
    char line[512];
    Row row(head);
    FILE* in = std::fopen(file.c_str(), "r");
    while (std::fgets(line, sizeof line, in)) {
        row.set(id, display, line);
        row.add(notes);
    }
    std::fclose(in);
    return notes;
}

}  // namespace

std::string data_records(const std::string& file) {
    return rows_without_ends(whole(file), "SDRINFO \"SDR Information\"", "SDRINFO",
                             "SDR Detailed Info");
}

std::string first_fru(const std::string& file) {
    return rows_without_ends(whole(file), "FRUINFO \"FRU Information\"", "FRUINFO",
                             "FRU Detailed Info");
}

std::string power_supplies(const std::string& file) {
    const auto text = whole(file);
    if (tells_error(text.data())) return "";
    return rows_without_ends(text, "PSUINFO \"PSU Information\"", "PSUINFO", "PSU Detailed Info");
}

std::string leds(const std::string& file) {
    const auto text = whole(file);
    if (tells_error(text.data())) return "";
    return rows_without_ends(text, "LEDINFO \"LEDs Status\"", "LEDINFO", "LED Detailed Status");
}

std::string controller(const std::string& file) {
    return labels(whole(file), "MCINFO \"MC Information\"", ":\n\r", "MC", 12);
}

std::string self_test(const std::string& file) {
    auto text = whole(file);
    int newlines = 0;
    std::size_t first = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\n') continue;
        ++newlines;
        if (first == 0) first = i;
    }
    if (newlines == 2) text[first] = ' ';
    return labels(text, "SELFINFO \"QVM Selftest\"", ":\n\r", "self", 2);
}

std::string versions(const std::string& file) {
    return labels(whole(file), "VERINFO \"Version Information\"", ":\n\r", "VER", 16);
}

std::string lan(const std::string& file) {
    return labels(whole(file), "LANINFO \"LAN Information\"", "-\n\r", "LAN", 12);
}

std::string fru(const std::string& file) {
    return rows_as_read(file, "FRUINFO \"FRU Information\"", "FRUINFO", "FRU Detailed Info");
}

std::string events_of_bmc(const std::string& file) {
    return rows_as_read(file, "SELINFO \"SEL Information\"", "SELINFO", "SEL Info");
}

std::string adaptec(const std::string& file) {
    std::string notes;
    Row link("PMCLINK \"PMC other info link\"");
    link.set("Link", "Link Address",
             "\n<pre>\n<a href='../Firmware' target='_blank'>../Firmware</a>\n<pre>\n");
    link.add(notes);

    Row info("PMCINFO \"Controller information\"");
    Row version("PMCVER \"Controller Version Info\"");
    char line[512];
    const auto has = [&](Row& row, const char* key, const char* id, const char* display) {
        const char* at = std::strstr(line, key);
        if (at) row.set(id, display, behind(at, 43));
        return at != nullptr;
    };
    FILE* in = std::fopen(file.c_str(), "r");
    while (std::fgets(line, sizeof line, in)) {
        const bool is_model = std::strstr(line, "Controller Model");
        if (has(info, "Controller Status", "Status", "Controller Status")) {
        } else if (is_model && has(info, "Controller Mode", "Model", "Controller Model")) {
        } else if (has(info, "Controller Mode", "Mode", "Controller Mode")) {
        } else if (has(info, "Channel description", "description", "Channel description")) {
        } else if (has(info, "Controller Serial Number", "SerialNumber",
                       "Controller Serial Number")) {
        } else if (has(info, "Controller World Wide Name", "WorldWideName",
                       "Controller World Wide Name")) {
        } else if (has(info, "Controller Alarm", "Alarm", "Controller Alarm")) {
        } else if (has(info, "Temperature", "Temperature", "Temperature")) {
        } else if (has(info, "Installed memory", "memory", "Installed memory")) {
        } else if (has(info, "Global task priority", "priority", "Global task priority")) {
        } else if (has(info, "Host bus type", "type", "Host bus type")) {
        } else if (has(info, "Host bus speed", "speed", "Host bus speed")) {
        } else if (has(info, "Host bus link width", "width", "Host bus link width")) {
        } else if (has(info, "Stayawake period", "period", "Stayawake period")) {
        } else if (has(info, "Spinup limit internal drives", "internal",
                       "Spinup limit internal drives")) {
        } else if (has(info, "Spinup limit external drives ", "external",
                       "Spinup limit external drives ")) {
        } else if (has(info, "Logical devices/Failed/Degraded", "Logical",
                       "Logical devices/Failed/Degraded")) {
        } else if (has(info, "NCQ status", "NCQ", "NCQ status")) {
        } else if (has(info, "Statistics data collection mode", "Statistics",
                       "Statistics data collection mode")) {
        } else if (has(info, "Global Physical Device Write Cache Policy", "Policy",
                       "Global Physical Device Write Cache Policy")) {
        } else if (has(info, "Monitor Log Severity Level", "Level", "Monitor Log Severity Level")) {
        } else if (has(info, "Global Max SAS Phy Link Rate", "Rate",
                       "Global Max SAS Phy Link Rate")) {
            info.add(notes);
        } else if (!std::strstr(line, "Controller BIOS") && !std::strstr(line, "Runtime BIOS") &&
                   !std::strstr(line, "BIOS Halt") && has(version, "BIOS", "BIOS", "BIOS")) {
        } else if (has(version, "Firmware", "Firmware", "Firmware")) {
        } else if (has(version, "Driver", "Driver", "Driver")) {
        } else if (has(version, "Boot Flash", "BootFlash", "Boot Flash")) {
            version.add(notes);
        }
    }
    std::fclose(in);
    return notes;
}

}  // namespace naive
