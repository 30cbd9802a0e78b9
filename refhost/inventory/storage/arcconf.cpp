#include "inventory/storage/arcconf.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

#include "inventory/columns.h"
#include "inventory/storage/keys.h"
#include "inventory/storage/tool.h"
#include "inventory/text.h"
#include "text/case.h"

namespace qvhost::inventory {

namespace {

// A state, and the troubles that lines of their own tell, above it or below: the state goes before them,
// "Failed, temperature: 110 C/ 230 F (Abnormal)".
template <auto Field>
bool as_state(EntityOf<Field>& entity, std::string_view value) {
    auto state = told(value);
    if (!state) return true;
    if (entity.*Field) *state += ", " + *(entity.*Field);
    entity.*Field = std::move(state);
    return true;
}

// What a temperature is called: "(Normal)" behind "60 C/ 140 F (Normal)"; empty where it is called nothing.
std::string_view name_of_temperature(std::string_view value) {
    const auto bracket = value.find('(');
    return bracket == npos ? std::string_view() : value.substr(bracket);
}

bool is_abnormal(std::string_view value) {
    const auto name = name_of_temperature(value);
    return !name.empty() && name != "(Normal)";
}

// Controllers found: 1
// ----------------------------------------------------------------------
// Controller information
// ----------------------------------------------------------------------
//    Controller Status                        : Optimal
//    Controller Model                         : Adaptec ASR7805
//    Controller Serial Number                 : 2B0000000AF
//    Temperature                              : 60 C/ 140 F (Normal)
//    Logical devices/Failed/Degraded          : 2/0/1
//    --------------------------------------------------------
//    Controller Version Information
//    --------------------------------------------------------
//    Firmware                                 : 7.5-0 (32033)
bool read_volume_count(Controller& controller, std::string_view value) {
    return as_number<&Controller::volumes>(controller, value.substr(0, value.find('/')));
}

constexpr auto kController = std::to_array<Key<Controller>>({
    {"controller status",               as_state<&Controller::status>   },
    {"controller model",                as_text<&Controller::model>     },
    {"controller serial number",        as_identity<&Controller::serial>},
    {"logical devices/failed/degraded", read_volume_count               },
});
constexpr auto kVersions = std::to_array<Key<Controller>>({
    {"firmware", as_text<&Controller::firmware>},
});

// Below "Controller Battery Information", "Controller ZMM Information", "Controller Cache Backup Unit
// Information", "Green Backup Information":
//    Status                                   : ZMM not installed
//    Overall Backup Unit Status               : Ready
//    Backup Power Status                      : Not Fully Charged
//    Hardware Error                           : No Error
//    Current Temperature                      : 19 deg C
//    Relative Charge                          : 95 percent
// Further lines of it, and the word with which each says that all is well:
//    Over temperature                         : No
//    Non-Volatile Storage Status              : Ready
//    Supercap Status                          : Ready
constexpr auto kBackupParts = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"hardware error",              "No Error"},
    {"over temperature",            "No"      },
    {"non-volatile storage status", "Ready"   },
    {"supercap status",             "Ready"   },
});

constexpr auto kBattery = std::to_array<Key<Battery>>({
    {"status",                     as_state<&Battery::state>                },
    {"overall backup unit status", as_state<&Battery::state>                },
    {"backup power status",        as_state<&Battery::state>                },
    {"backup unit type",           as_text<&Battery::model>                 },
    {"power type",                 as_text<&Battery::model>                 },
    {"current temperature",        as_leading<&Battery::temperature_celsius>},
    {"capacity remaining",         as_leading<&Battery::charge_percent>     },
    {"relative charge",            as_leading<&Battery::charge_percent>     },
    {"charge level",               as_leading<&Battery::charge_percent>     },
});

// Logical device number 1
//    Logical device name                      : archive
//    Array                                    : 0
//    Disk Name                                : /dev/sdb (Disk0) (Bus: 1, Target: 0, Lun: 0)
//    RAID level                               : 6 Reed-Solomon
//    Status of Logical Device                 : Impacted ( Build/Verify with fix : 90 % )
//    Size                                     : 7628800 MB
//    Write-cache status                       : On
//    Failed stripes                           : No
bool read_volume_state(Volume& volume, std::string_view value) {
    const auto bracket = value.find('(');
    as_state<&Volume::state>(volume, value.substr(0, bracket));
    if (bracket == npos) return true;
    const auto inside = value.substr(bracket + 1, value.find(')') - bracket - 1);
    const auto colon = inside.find(':');
    volume.operation = told(inside.substr(0, colon));
    if (colon != npos) volume.progress_percent = leading_real(inside.substr(colon + 1));
    return true;
}

bool read_device(Volume& volume, std::string_view value) {
    const auto word = value.substr(0, value.find(' '));
    if (word.starts_with("/dev/")) volume.device = std::string(word);
    return true;
}

constexpr auto kVolume = std::to_array<Key<Volume>>({
    {"logical device name",      as_text<&Volume::name>           },
    {"array",                    as_number<&Volume::drive_group>  },
    {"disk name",                read_device                      },
    {"raid level",               as_text<&Volume::raid>           },
    {"status of logical device", read_volume_state                },
    {"size",                     as_bytes<&Volume::capacity_bytes>},
    {"caching",                  as_text<&Volume::cache>          },
    {"write-cache mode",         as_text<&Volume::cache>          },
    {"write-cache status",       as_text<&Volume::cache>          },
});

bool read_drive_temperature(Drive& drive, std::string_view value) {
    if (is_abnormal(value)) drive.temperature_state = std::string(name_of_temperature(value));
    return as_leading<&Drive::temperature_celsius>(drive, value);
}

// "Threshold Temperature : 65 deg C", below "Current Temperature : 31 deg C"
bool read_temperature_limit(Drive& drive, std::string_view value) {
    const auto limit = leading_real(value);
    if (limit && *limit > 0 && drive.temperature_celsius && *drive.temperature_celsius > *limit)
        drive.temperature_state = "above its threshold, " + std::string(value);
    return true;
}

// Several lines count the same.
bool read_predicted(Drive& drive, std::string_view value) {
    const auto before = drive.predicted_failures;
    const bool is_number = as_number<&Drive::predicted_failures>(drive, value);
    if (before && drive.predicted_failures < before) drive.predicted_failures = before;
    return is_number;
}

// "False", "Not Applicable"
bool read_trip(Drive& drive, std::string_view value) {
    if (same_word(value, "True") || same_word(value, "Yes")) drive.smart_alert = true;
    return true;
}

bool read_state(Drive& drive, std::string_view value) {
    drive.state = told(value);
    if (!drive.state) return true;
    const auto state = lowered(value);
    if (state.find("spare") != std::string::npos)
        drive.spare = state.find("dedicated") != std::string::npos ? "dedicated" : "global";
    return true;
}

bool read_channel(Drive& drive, std::string_view value) {
    const auto comma = value.find(',');
    if (comma == npos) return true;
    value = value.substr(comma + 1);
    drive.device_id = integer(value.substr(0, value.find('(')));
    return drive.device_id.has_value();
}

// "Enclosure 0, Slot 2(Connector 0)", "Enclosure Direct Attached, Slot 2(Connector 0:CN0)",
// "Backplane 0, Slot 1(...)"; "Connector 0, Device 3" is in no slot.
bool read_location(Drive& drive, std::string_view value) {
    for (const auto part : fields_between(value.substr(0, value.find('(')), ',')) {
        const auto blank = part.find(' ');
        if (blank == npos) continue;
        const auto name = part.substr(0, blank);
        const auto number = integer(part.substr(blank));
        if (name == "Enclosure" || name == "Backplane") drive.enclosure = number;
        if (name == "Slot") drive.slot = number;
    }
    return true;
}

bool read_speed(Drive& drive, std::string_view value) {
    for (const std::string_view name : {"SATA", "SAS", "NVMe", "PCIe"}) {
        if (value.starts_with(name)) drive.interface = name == "PCIe" ? "NVMe" : std::string(name);
    }
    return true;
}

bool read_block_size(Drive& drive, std::string_view value) {
    const auto number = leading_real(value);
    if (!number) return true;
    const bool is_kilo = value.find_first_of("Kk") != npos;
    drive.sector_bytes = std::llround(*number * (is_kilo ? 1024 : 1));
    return true;
}

bool read_is_ssd(Drive& drive, std::string_view value) {
    if (value == "Yes") drive.media = "SSD";
    if (value == "No") drive.media = "HDD";
    return true;
}

bool read_remaining(Drive& drive, std::string_view value) {
    if (const auto left = leading_real(value))
        drive.percentage_used = std::round((100 - *left) * 100) / 100;
    return true;
}

//       Device #4
//          Device is a Hard drive
//          State                              : Global Hot-Spare
//          Block Size                         : 4K Bytes
//          Transfer Speed                     : SATA 6.0 Gb/s
//          Reported Channel,Device(T:L)       : 0,4(4:0)
//          Reported Location                  : Enclosure 0, Slot 2(Connector 0)
//          Model                              : WD1003FBYX-01Y7B
//          Serial number                      : WD-WCAW00000000
//          World-wide name                    : 5000CCA000000000
//          Total Size                         : 953869 MB
//          S.M.A.R.T.                         : No
//          S.M.A.R.T. warnings                : 0
//          SSD                                : No
//          Temperature                        : 41 C/ 105 F
//       Runtime Error Counters
//          Hardware Error Count               : 0
//          Medium Error Count                 : 0
constexpr auto kDrive = std::to_array<Key<Drive>>({
    {"state",                        read_state                             },
    {"array",                        as_number<&Drive::drive_group>         },
    {"block size",                   read_block_size                        },
    {"transfer speed",               read_speed                             },
    {"reported channel,device(t:l)", read_channel                           },
    {"reported location",            read_location                          },
    {"model",                        as_text<&Drive::model>                 },
    {"firmware",                     as_text<&Drive::firmware>              },
    {"serial number",                as_identity<&Drive::serial>            },
    {"world-wide name",              as_identity<&Drive::wwn>               },
    {"size",                         as_bytes<&Drive::capacity_bytes>       },
    {"total size",                   as_bytes<&Drive::capacity_bytes>       },
    {"s.m.a.r.t.",                   as_yes_or_no<&Drive::smart_alert>      },
    {"s.m.a.r.t. warnings",          read_predicted                         },
    {"smart warning count",          read_predicted                         },
    {"ssd smart trip wearout",       read_trip                              },
    {"56 day warning present",       read_trip                              },
    {"ssd",                          read_is_ssd                            },
    {"temperature",                  read_drive_temperature                 },
    {"current temperature",          as_leading<&Drive::temperature_celsius>},
    {"threshold temperature",        read_temperature_limit                 },
    {"usage remaining",              read_remaining                         },
    {"medium error count",           as_number<&Drive::media_errors>        },
    {"media failures",               as_number<&Drive::media_errors>        },
    {"hardware error count",         as_number<&Drive::other_errors>        },
    {"hardware errors",              as_number<&Drive::other_errors>        },
    {"service hours",                as_number<&Drive::power_on_hours>      },
});

// Whose lines tell of faults.
constexpr auto kJudged = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"s.m.a.r.t.",             "smart_alert"        },
    {"s.m.a.r.t. warnings",    "predicted_failures" },
    {"smart warning count",    "predicted_failures" },
    {"ssd smart trip wearout", "smart_alert"        },
    {"56 day warning present", "smart_alert"        },
    {"medium error count",     "media_errors"       },
    {"media failures",         "media_errors"       },
    {"hardware error count",   "other_errors"       },
    {"hardware errors",        "other_errors"       },
    {"temperature",            "temperature_celsius"},
    {"current temperature",    "temperature_celsius"},
    {"usage remaining",        "percentage_used"    },
});

//       Device #15
//          Device is an Enclosure Services Device
//          Enclosure ID                         : 0
//          Vendor                               : ADAPTEC
//          Model                                : AEC-82885T
//          Status of Enclosure Services Device
//             Fan 1 status                      : 0 rpm (Not Supported)
//             Power supply 1 status             : Optimal
constexpr auto kEnclosure = std::to_array<Key<Enclosure>>({
    {"enclosure id", as_number<&Enclosure::number>},
    {"model",        as_text<&Enclosure::model>   },
});

// Words with which a part of an enclosure says that it is not well.
bool is_bad(std::string_view state) {
    const auto word = lowered(state);
    constexpr auto kBad = std::to_array<std::string_view>(
        {"fail", "degraded", "critical", "warning", "error", "fault", "abnormal"});
    return std::any_of(kBad.begin(), kBad.end(),
                       [&](auto bad) { return word.find(bad) != std::string::npos; });
}

// Logical device Task:
//    Logical device                 : 0
//    Current operation              : Rebuild
//    Percentage complete            : 1
constexpr auto kTask = std::to_array<Key<Volume>>({
    {"logical device",      as_number<&Volume::number>           },
    {"current operation",   as_text<&Volume::operation>          },
    {"percentage complete", as_leading<&Volume::progress_percent>},
});

std::optional<KeyValue> key_and_value(std::string_view line) {
    for (const std::string_view separator : {" : ", ": "}) {
        if (const auto pair = key_value(line, separator)) return pair;
    }
    if (line.ends_with(" :")) return KeyValue{trimmed(line.substr(0, line.size() - 2)), {}};
    return std::nullopt;
}

// The number behind the words, "Logical device number 3", "Device #3".
Integer number_behind(const std::string& line, std::string_view words) {
    if (!line.starts_with(words)) return std::nullopt;
    return integer(std::string_view(line).substr(words.size()));
}

class Reader {
public:
    Reader(CaptureLines& lines, Reading& reading, Integer controller)
        : lines_(lines), reading_(reading), number_(controller) {}

    void read() {
        while (const auto line = lines_.next()) {
            line_ = line->number;
            const auto text = trimmed(line->text);
            if (text.empty()) continue;
            if (is_ruler(text)) {
                after_ruler_ = true;
                continue;
            }
            read(text);
            after_ruler_ = false;
            if (!text.empty()) before_ = text;
        }
        end_entity();
        if (controller_) reading_.found.controllers.push_back(std::move(*controller_));
        if (battery_ && !has_battery_state_) gap("the state of the cache's backup is missing");
        if (battery_ && battery_->state) reading_.found.batteries.push_back(std::move(*battery_));
        if (announced_ && volumes_section_ && volumes_ < *announced_)
            gap(std::to_string(*announced_) + " logical devices announced, " +
                std::to_string(volumes_) + " read");
        if (listing_ && found_ && listed_ < *found_)
            gap(std::to_string(*found_) + " controllers found, " + std::to_string(listed_) +
                " listed");
        if (!completed_) gap("the answer has no end");
        reading_.how.lines = lines_.count();
    }

private:
    enum class In {
        nothing,
        controller,
        versions,
        controller_part,
        battery,
        list,
        volume,
        segments,
        drives,
        device,
        drive,
        enclosure,
        task
    };

    void gap(std::string words) { reading_.how.gaps.push_back({line_, std::move(words)}); }

    void read(std::string_view line) {
        if (line.starts_with("Command completed successfully")) {
            completed_ = true;
            return;
        }
        if (line.starts_with("Command aborted") || line.starts_with("Command failed")) {
            completed_ = true;
            reading_.how.errors.push_back({line_, before_.empty() ? std::string(line) : before_});
            return;
        }
        // Versions differ in capitals ("Status of logical device", "Status of Logical Device").
        const auto words = lowered(line);
        if (heading(words)) return;
        if (const auto pair = key_and_value(line)) return key(lowered(pair->key), pair->value);
        if (after_ruler_ && part(words)) return;
        if (after_ruler_ || is_known(words)) return;
        reading_.how.unknown_line(line_);
    }

    static bool is_known(const std::string& words) {
        if (words.starts_with("no ") || words.starts_with("status of ") ||
            words.starts_with("array number"))
            return true;
        const auto mark = words.find(" #");
        return mark != std::string::npos || words.ends_with("information") || words.ends_with(':');
    }

    bool heading(const std::string& words) {
        if (words == "controller information") {
            end_entity();
            in_ = In::controller;
            return true;
        }
        if (words == "logical device information" || words == "logical device information:") {
            end_entity();
            in_ = In::volume;
            volumes_section_ = true;
            return true;
        }
        if (words.starts_with("physical device information")) {
            end_entity();
            in_ = In::drives;
            return true;
        }
        const bool is_cache = words.starts_with("maxcache ") && words.ends_with("information");
        if (words == "array information" || words == "connector information" || is_cache) {
            end_entity();
            in_ = In::nothing;
            return true;
        }
        if (const auto number = number_behind(words, "logical device number")) {
            end_entity();
            volume_ = reading_.entity_at<Volume>(line_);
            volume_->number = number;
            in_ = In::volume;
            volumes_section_ = true;
            return true;
        }
        if (words == "logical device task:") {
            end_entity();
            task_ = reading_.entity_at<Volume>(line_);
            in_ = In::task;
            return true;
        }
        if (number_behind(words, "device #")) {
            end_entity();
            in_ = In::device;
            place_ = line_;
            return true;
        }
        if (words.starts_with("device is a")) {
            if (in_ != In::device) {
                end_entity();
                place_ = line_;
            }
            if (words.find("hard drive") != std::string::npos) {
                drive_ = reading_.entity_at<Drive>(place_);
                in_ = In::drive;
            } else if (words.find("enclosure") != std::string::npos) {
                enclosure_ = reading_.entity_at<Enclosure>(place_);
                in_ = In::enclosure;
            }
            return true;
        }
        return false;
    }

    // The title of a part, between two rulers.
    bool part(const std::string& words) {
        if (in_ == In::controller || in_ == In::versions || in_ == In::controller_part ||
            in_ == In::battery) {
            const auto has = [&](const char* word) {
                return words.find(word) != std::string::npos;
            };
            if (has("version information")) {
                in_ = In::versions;
            } else if (has("battery information") || has("zmm information") ||
                       has("backup unit information") || has("backup information") ||
                       has("supercap information")) {
                in_ = In::battery;
                if (!battery_) battery_ = reading_.entity_at<Battery>(line_);
            } else {
                in_ = In::controller_part;
            }
            return true;
        }
        if ((in_ == In::volume || in_ == In::segments) && volume_) {
            const bool is_segments = words.find("segment information") != std::string::npos ||
                                     words.find("physical device information") != std::string::npos;
            if (is_segments) in_ = In::segments;
            return is_segments;
        }
        return false;
    }

    void key(const std::string& key, std::string_view value) {
        if (key == "controllers found") return found_controllers(value);
        switch (in_) {
            case In::controller: return controller_key(kController, key, value);
            case In::versions: return controller_key(kVersions, key, value);
            case In::controller_part:
                if (key == "logical devices/failed/degraded")
                    controller_key(kController, key, value);
                return;
            case In::list: return list_row(key, value);
            case In::battery: return battery_key(key, value);
            case In::volume:
                if (volume_) volume_key(key, value);
                return;
            case In::segments: return segment(key, value);
            case In::drive: return drive_key(key, value);
            case In::enclosure: return enclosure_key(key, value);
            case In::task: set(std::span<const Key<Volume>>(kTask), key, value, *task_); return;
            default: return;
        }
    }

    template <class Entity>
    bool set(std::span<const Key<Entity>> keys, const std::string& key, std::string_view value,
             Entity& entity) {
        const auto result = set_by_key(keys, key, value, entity);
        if (result == KeyResult::unreadable) gap("a value that cannot be read: " + key);
        return result != KeyResult::unknown;
    }

    template <auto State>
    void trouble(EntityOf<State>& entity, const std::string& key, std::string_view value) {
        const auto words = key + ": " + std::string(value);
        auto& state = entity.*State;
        state = state ? *state + ", " + words : words;
        entity.elsewhere.push_back({words, reading_.at(line_)});
    }

    void found_controllers(std::string_view value) {
        found_ = integer(value);
        if (!found_) return gap("a count that cannot be read");
        ControllerCount count;
        count.place = reading_.at(line_);
        count.tool = "arcconf";
        count.count = found_;
        reading_.found.controller_counts.push_back(std::move(count));
        if (!number_ && *found_ == 1) number_ = 1;
    }

    void controller_key(std::span<const Key<Controller>> keys, const std::string& key,
                        std::string_view value) {
        if (key == "controller id") {  // LIST
            in_ = In::list;
            listing_ = true;
            return;
        }
        if (!controller_) {
            controller_ = reading_.entity_at<Controller>(line_);
            controller_->number = number_;
        }
        if (key == "temperature" && is_abnormal(value))
            trouble<&Controller::status>(*controller_, key, value);
        if (!set(keys, key, value, *controller_)) return;
        if (key == "controller status") controller_->place.line = line_;
        if (key == "logical devices/failed/degraded") announced_ = controller_->volumes;
    }

    // Controller ID             : Status, Slot, Mode, Name, SerialNumber, WWN
    // ----------------------------------------------------------------------
    // Controller 1:             : Optimal, Slot 16, Mixed, Cisco 24G TriMode, M1, 3137F30003A, 50000D1E0
    void list_row(const std::string& key, std::string_view value) {
        auto controller = reading_.entity_at<Controller>(line_);
        std::string_view name = key;
        if (name.ends_with(':')) name.remove_suffix(1);
        controller.number = number_behind(std::string(trimmed(name)), "controller ");
        const auto cells = fields_between(value, ',');
        if (!controller.number || cells.size() < 6)
            return gap("a row that does not fit its heading");
        ++listed_;
        controller.status = told(cells[0]);
        controller.serial = told_identity(cells[cells.size() - 2]);
        const auto& last = cells[cells.size() - 3];
        controller.model = told(std::string_view(
            cells[3].data(),
            static_cast<std::size_t>(last.data() + last.size() - cells[3].data())));
        reading_.found.controllers.push_back(std::move(controller));
    }

    void battery_key(const std::string& key, std::string_view value) {
        const auto text = lowered(value);
        const bool is_state = key == "status" || key.ends_with(" status");
        if (is_state && (text.ends_with("not installed") || text.ends_with("not present"))) {
            has_battery_state_ = true;
            return;
        }
        const bool is_trouble =
            told(value) && !text.starts_with("not supported") &&
            std::any_of(kBackupParts.begin(), kBackupParts.end(), [&](const auto& part) {
                return key == part.first && !same_word(value, part.second);
            });
        if (is_trouble) trouble<&Battery::state>(*battery_, key, value);
        if (!set(std::span<const Key<Battery>>(kBattery), key, value, *battery_) && !is_trouble)
            return;
        battery_->controller = number_;
        if (battery_->state) has_battery_state_ = true;
        if (is_trouble || !is_state || !told(value)) return;
        battery_->place.line = line_;
        battery_->elsewhere.push_back({std::string(value), reading_.at(line_)});
    }

    void volume_key(const std::string& key, std::string_view value) {
        if (key == "failed stripes" && value != "No" && told(value)) {  // data is lost
            volume_->consistent = false;
            trouble<&Volume::state>(*volume_, key, value);
        }
        if (!set(std::span<const Key<Volume>>(kVolume), key, value, *volume_)) return;
        if (key != "status of logical device") return;
        for (const char* field : {"state", "operation"})
            volume_->elsewhere.push_back({field, reading_.at(line_)});
    }

    //    Group 0, Segment 1                       : Missing (Controller:1,Enclosure:0,Slot:1)      WD-WCA
    //    Segment 0            : Present (286102MB, SAS, HDD, Connector:CN0, Enclosure:1, Slot:3) S0K30A4N
    //    Device 2             : Present (1144641MB, SAS, HDD, Connector:CN2, Backplane:0, Slot:3) WFK076D
    void segment(const std::string& key, std::string_view value) {
        const bool is_row =
            key.starts_with("group ") || key.starts_with("segment ") || key.starts_with("device ");
        if (!is_row || key == "device id") return;
        auto member = reading_.entity_at<VolumeMember>(line_);
        member.controller = number_;
        member.drive_group = volume_->drive_group;
        member.volume = volume_->number;
        member.is_spare = false;
        for (const auto part : fields_between(key, ',')) {
            const std::string words(part);
            if (const auto number = number_behind(words, "group ")) member.span = number;
            if (const auto number = number_behind(words, "segment ")) member.position = number;
            if (const auto number = number_behind(words, "device ")) member.device_id = number;
        }
        const auto bracket = value.find('(');
        member.state = told(value.substr(0, bracket));
        if (!member.state) return gap("a segment that cannot be read");
        if (bracket != npos) {
            const auto inside = value.substr(bracket + 1, value.find(')') - bracket - 1);
            for (const auto part : fields_between(inside, ',')) {
                const auto pair = key_value(part, ":");
                if (!pair) continue;
                if (pair->key == "Enclosure" || pair->key == "Backplane")
                    member.enclosure = integer(pair->value);
                if (pair->key == "Slot") member.slot = integer(pair->value);
            }
            if (const auto end = value.rfind(')'); end != npos)
                member.serial = told_identity(trimmed(value.substr(end + 1)));
        }
        reading_.found.volume_members.push_back(std::move(member));
    }

    void drive_key(const std::string& key, std::string_view value) {
        const auto predicted = drive_->predicted_failures;
        const auto alert = drive_->smart_alert;
        if (!set(std::span<const Key<Drive>>(kDrive), key, value, *drive_)) return;
        if (key == "state") drive_->place.line = line_;
        for (const auto& [name, field] : kJudged) {
            if (key != name) continue;
            // Of several lines on the same the one counts that tells more.
            if (drive_->predicted_failures > predicted || drive_->smart_alert > alert)
                std::erase_if(drive_->elsewhere,
                              [&, judged = field](const auto& at) { return at.field == judged; });
            drive_->elsewhere.push_back({std::string(field), reading_.at(line_)});
        }
    }

    void enclosure_key(const std::string& key, std::string_view value) {
        if (set(std::span<const Key<Enclosure>>(kEnclosure), key, value, *enclosure_)) return;
        if (key.find("status") == std::string::npos || !is_bad(value)) return;
        if (!enclosure_->state) enclosure_->place.line = line_;
        trouble<&Enclosure::state>(*enclosure_, key, value);
    }

    void end_entity() {
        if (volume_) {
            ++volumes_;
            volume_->controller = number_;
            if (!volume_->state) gap("a logical device without a status");
            reading_.found.volumes.push_back(std::move(*volume_));
        }
        if (task_ && task_->number && task_->operation) {
            task_->controller = number_;
            reading_.found.volumes.push_back(std::move(*task_));
        }
        if (drive_) {
            drive_->controller = number_;
            if (!drive_->state) gap("a drive without a state");
            reading_.found.drives.push_back(std::move(*drive_));
        }
        if (enclosure_) {
            enclosure_->controller = number_;
            reading_.found.enclosures.push_back(std::move(*enclosure_));
        }
        volume_.reset();
        task_.reset();
        drive_.reset();
        enclosure_.reset();
        in_ = In::nothing;  // keys that follow are nobody's until a heading says whose
    }

    CaptureLines& lines_;
    Reading& reading_;
    Integer number_;
    std::int64_t line_ = 0;
    std::int64_t place_ = 0;  // of "Device #N"
    std::string before_;      // the line before
    bool after_ruler_ = false;
    bool completed_ = false;
    In in_ = In::nothing;
    Integer found_, announced_;
    std::int64_t volumes_ = 0, listed_ = 0;
    bool volumes_section_ = false, listing_ = false;
    std::optional<Controller> controller_;
    std::optional<Battery> battery_;
    bool has_battery_state_ = false;
    std::optional<Volume> volume_, task_;
    std::optional<Drive> drive_;
    std::optional<Enclosure> enclosure_;
};

}  // namespace

void read_arcconf(CaptureLines& lines, Reading& reading, Integer controller) {
    const NumbersOf numbers(reading, "arcconf");
    Reader(lines, reading, controller).read();
}

}  // namespace qvhost::inventory
