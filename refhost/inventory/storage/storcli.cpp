#include "inventory/storage/storcli.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "inventory/storage/keys.h"
#include "inventory/storage/storcli_tables.h"
#include "inventory/storage/tool.h"

namespace qvhost::inventory {

namespace {

using storcli::Counted;

// An answer for each controller, which begins with these lines; "show" and "show ctrlcount" say "Status
// Code = 0" in place of the first:
//     Controller = 0
//     Status = Success
//     Description = None
//
//     Product Name = AVAGO MegaRAID SAS 9361-8i
//     Serial Number = SV00000001
//     FW Version = 4.680.00-8465
//     ...
// "show all" says the same under headings:
//     Basics :
//     ======
//     Controller = 0
//     Model = AVAGO MegaRAID SAS 9361-8i
//
//     Status :
//     ======
//     Controller Status = Needs Attention
constexpr auto kController = std::to_array<Key<Controller>>({
    {"Product Name",      as_text<&Controller::model>     },
    {"Model",             as_text<&Controller::model>     },
    {"Serial Number",     as_identity<&Controller::serial>},
    {"FW Version",        as_text<&Controller::firmware>  },
    {"Firmware Version",  as_text<&Controller::firmware>  },
    {"Controller Status", as_text<&Controller::status>    },
    {"Virtual Drives",    as_number<&Controller::volumes> },
    {"Physical Drives",   as_number<&Controller::drives>  },
});

// What "Controller Status = Optimal" does not tell:
//     Memory Uncorrectable Errors = 2
//     Any Offline VD Cache Preserved = Yes
constexpr auto kControllerTroubles = std::to_array<std::string_view>({
    "Memory Uncorrectable Errors",
    "Any Offline VD Cache Preserved",
    "Failed to get lock key on bootup",
    "Controller has booted into safe mode",
    "Controller shutdown required",
});

bool is_trouble(const KeyValue& pair) {
    return (pair.value == "Yes" || integer(pair.value).value_or(0) > 0) &&
           std::find(kControllerTroubles.begin(), kControllerTroubles.end(), pair.key) !=
               kControllerTroubles.end();
}

// How many rows a table will have. Foreign drives and groups come on top.
struct Announcement {
    std::string_view key;
    Counted counted;
    std::string_view words;
};
constexpr auto kAnnouncements = std::to_array<Announcement>({
    {"Drive Groups",          Counted::topology,    "drive groups"   },
    {"Virtual Drives",        Counted::volumes,     "virtual drives" },
    {"Physical Drives",       Counted::drives,      "physical drives"},
    {"JBOD Drives",           Counted::jbods,       "JBOD drives"    },
    {"Enclosures",            Counted::enclosures,  "enclosures"     },
    {"Number of Controllers", Counted::controllers, "controllers"    },
});

// Drive /c0/e8/s1 State :
// =====================
// Media Error Count = 0
// Drive Temperature =  31C (87.80 F)
// S.M.A.R.T alert flagged by drive = No
//
// Drive /c0/e8/s1 Device attributes :
// =================================
// SN = Z1X00000
// WWN = 5000C500A0000000
// Firmware Revision = TN05
// Coerced size = 930.390 GB [0x744c8000 Sectors]
// Logical Sector Size = 512B
//
// Drive /c0/e8/s1 Policies/Settings :
// =================================
// Drive position = DriveGroup:0, Span:0, Row:1
bool read_position(Drive& drive, std::string_view value) {
    constexpr std::string_view kGroup = "DriveGroup:";
    const auto at = value.find(kGroup);
    if (at == std::string_view::npos) return true;
    value.remove_prefix(at + kGroup.size());
    return as_number<&Drive::drive_group>(drive, value.substr(0, value.find(',')));
}

constexpr auto kDrive = std::to_array<Key<Drive>>({
    {"Media Error Count",                as_number<&Drive::media_errors>        },
    {"Other Error Count",                as_number<&Drive::other_errors>        },
    {"Predictive Failure Count",         as_number<&Drive::predicted_failures>  },
    {"Shield Counter",                   as_number<&Drive::shield_counter>      },
    {"S.M.A.R.T alert flagged by drive", as_yes_or_no<&Drive::smart_alert>      },
    {"Drive Temperature",                as_leading<&Drive::temperature_celsius>},
    {"SN",                               as_identity<&Drive::serial>            },
    {"Model Number",                     as_text<&Drive::model>                 },
    {"WWN",                              as_identity<&Drive::wwn>               },
    {"Firmware Revision",                as_text<&Drive::firmware>              },
    {"Coerced size",                     as_bytes<&Drive::capacity_bytes>       },
    {"Sector Size",                      as_bytes<&Drive::sector_bytes>         },
    {"Logical Sector Size",              as_bytes<&Drive::sector_bytes>         },
    {"Drive position",                   read_position                          },
});

// Whose lines tell of faults: a finding points at them.
constexpr auto kJudged = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"Media Error Count",                "media_errors"       },
    {"Other Error Count",                "other_errors"       },
    {"Predictive Failure Count",         "predicted_failures" },
    {"Shield Counter",                   "shield_counter"     },
    {"S.M.A.R.T alert flagged by drive", "smart_alert"        },
    {"Drive Temperature",                "temperature_celsius"},
});

// VD0 Properties :
// ==============
// Active Operations = Rebuild (34%)
// OS Drive Name = /dev/sda
bool read_operation(Volume& volume, std::string_view value) {
    if (!told(value)) return true;
    const auto bracket = value.find('(');
    volume.operation = told(value.substr(0, bracket));
    if (bracket != std::string_view::npos)
        volume.progress_percent = leading_real(value.substr(bracket + 1));
    return true;
}

constexpr auto kVolume = std::to_array<Key<Volume>>({
    {"Active Operations", read_operation          },
    {"OS Drive Name",     as_text<&Volume::device>},
});

// Enclosure /c0/e14  :
// ==================
// Information :
// ===========
// Status = OK
// Enclosure Serial Number =    50000d1704770b3e
// Product Identification = AEC-82885T
constexpr auto kEnclosure = std::to_array<Key<Enclosure>>({
    {"Status",                  as_text<&Enclosure::state>     },
    {"Enclosure Serial Number", as_identity<&Enclosure::serial>},
    {"Product Identification",  as_text<&Enclosure::model>     },
});

// "06/08/2015, 09:11:28", "04/01/2021 18:24:24": month, day, year
Text time_of(std::string_view value) {
    std::array<int, 6> parts{};
    std::size_t count = 0, at = 0;
    while (at < value.size() && count < parts.size()) {
        const auto begin = value.find_first_of("0123456789", at);
        if (begin == std::string_view::npos) break;
        at = std::min(value.find_first_not_of("0123456789", begin), value.size());
        const auto part = integer(value.substr(begin, at - begin));
        if (!part || *part > 9999) return std::nullopt;
        parts[count++] = static_cast<int>(*part);
    }
    if (count != parts.size()) return std::nullopt;
    const auto& [month, day, year, hour, minute, second] = parts;
    return iso_time(year, month, day, hour, minute, second);
}

// "00 00 07 12 c5 00 10 03 4e 45 54 41 50 50 20 20"
bool is_hex_dump(std::string_view line) {
    if (line.size() < 2) return false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const bool is_blank_place = i % 3 == 2;
        const bool is_hex =
            std::string_view("0123456789abcdefABCDEF").find(line[i]) != std::string_view::npos;
        if (is_blank_place ? line[i] != ' ' : !is_hex) return false;
    }
    return true;
}

// Sections whose tables tell states.
constexpr auto kStates = std::to_array<std::string_view>(
    {"TOPOLOGY", "VD LIST", "PD LIST", "JBOD LIST", "Enclosure LIST", "BBU_Info", "Cachevault_Info",
     "Energy Pack", "PDs for VD "});

bool tells_states(std::string_view section) {
    return std::any_of(kStates.begin(), kStates.end(),
                       [&](std::string_view one) { return section.starts_with(one); });
}

// Sections whose tables are followed by a legend of their words, in every version.
constexpr auto kExplained =
    std::to_array<std::string_view>({"TOPOLOGY", "VD LIST", "PD LIST", "Enclosure LIST"});

bool has_legend(std::string_view section) {
    return std::find(kExplained.begin(), kExplained.end(), section) != kExplained.end();
}

// Headings of tables that nobody needs, by their first column.
constexpr auto kNeedless = std::to_array<std::string_view>({
    "Policy ",
    "Adv S/W Opt ",
    "Prop ",
    "Port ",
    "Index ",
});

bool is_needless(std::string_view heading) {
    return std::any_of(kNeedless.begin(), kNeedless.end(),
                       [&](std::string_view one) { return heading.starts_with(one); });
}

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const auto part : parts) text += part;
    return text;
}

// What "Controller = N" begins.
struct Answer {
    Integer number;
    std::int64_t line = 0;
    std::string_view outcome;
    bool failed = false;
    std::int64_t failed_line = 0;
    std::string description;
    std::size_t errors_before = 0;     // that a table told
    Controller controller;             // place.line 0: it says nothing of the controller
    std::vector<FieldPlace> troubles;  // of the controller
    bool has_content = false;
    bool expects_battery = false;
    std::array<std::int64_t, storcli::kCounted> rows{};
    std::array<Integer, storcli::kCounted> announced{};
    Text time, system_time;
    std::int64_t time_line = 0;
};

// The lines below "Drive /c0/e8/s1 ...".
struct Details {
    Drive drive;
    bool has_details = false, has_attributes = false, has_settings = false;
    bool has_counters = false, has_alert = false, has_identity = false, has_firmware = false;
};

class Reader {
public:
    Reader(CaptureLines& lines, Reading& reading) : lines_(lines), reading_(reading) {}

    void read() {
        while (const auto line = lines_.next()) {
            ended_ = line->ended;
            read(line->text, line->number);
        }
        end_table("at the end of the text");
        if (awaits_legend_) gap("the legend below a table is missing");
        end_answer();
        if (!answered_) gap("no answer of storcli is in it");
        reading_.how.lines = lines_.count();
    }

private:
    enum class TablePart { none, before_heading, before_rows, rows };

    void gap(std::string words) { reading_.how.gaps.push_back({line_, std::move(words)}); }

    void read(std::string_view raw, std::int64_t number) {
        line_ = number;
        const auto line = trimmed(raw);
        if (line.empty()) {
            legend_ = false;
            if (part_ == TablePart::before_heading) part_ = TablePart::none;
            return;
        }
        if (is_ruler(line)) return ruler(line);
        awaits_legend_ = false;
        if (part_ == TablePart::rows || (part_ == TablePart::before_rows && table_)) {
            if (row(raw)) return;
        }
        if (const auto pair = key_and_value(line)) return key(*pair);
        if (line.ends_with(':') && heading(line)) return;
        if (find_heading(raw)) return;
        if (part_ != TablePart::none) return;  // of a table that nobody needs
        if (is_prose(line)) return;
        reading_.how.unknown_line(line_);
    }

    static std::optional<KeyValue> key_and_value(std::string_view line) {
        const auto at = line.find(" =");
        if (at == std::string_view::npos || at == 0) return std::nullopt;
        if (at + 2 < line.size() && line[at + 2] != ' ') return std::nullopt;
        return KeyValue{trimmed(line.substr(0, at)), trimmed(line.substr(at + 2))};
    }

    // Lines that belong to the form: legends below tables, wrapped lists, hex dumps.
    //     EID=Enclosure Device ID|Slt=Slot No.|DID=Device ID|DG=DriveGroup
    //     AWB=Always WriteBack|WT=WriteThrough|C=Cached IO|D=Direct IO|sCC=Scheduled
    //     Check Consistency
    bool is_prose(std::string_view line) {
        if (line.find('|') != std::string_view::npos) return legend_ = true;
        if (legend_ || is_hex_dump(line)) return true;
        if (list_goes_on_) {
            list_goes_on_ = line.ends_with(',');
            return true;
        }
        return line.starts_with("Generating detailed summary");
    }

    // ---- tables ----

    void ruler(std::string_view line) {
        legend_ = false;
        if (line.front() == '=') return;
        if (part_ == TablePart::rows && table_ && !ended_ && line.size() < width_)
            gap("the last line of a table is cut off");
        width_ = line.size();
        switch (part_) {
            case TablePart::none: part_ = TablePart::before_heading; return;
            case TablePart::before_heading: return;  // an empty table: two rulers
            case TablePart::before_rows: part_ = TablePart::rows; return;
            case TablePart::rows:
                part_ = TablePart::none;
                table_ = nullptr;
                awaits_legend_ = has_legend(section_);
                return;
        }
    }

    bool find_heading(std::string_view line) {
        for (const auto& table : storcli::tables()) {
            auto found = Heading::find(line, table.columns);
            if (!found) continue;
            end_table("before the next one");
            heading_ = std::move(*found);
            table_ = &table;
            part_ = TablePart::before_rows;
            answer_.has_content = answered_ = true;
            return true;
        }
        if (part_ == TablePart::before_heading) {
            if (tells_states(section_))
                gap("a table with a heading that no reader knows");
            else if (!is_needless(trimmed(line)))
                reading_.how.unknown_line(line_);
            table_ = nullptr;
            part_ = TablePart::before_rows;
            return true;
        }
        return false;
    }

    // Whether the line was the table's.
    bool row(std::string_view line) {
        if (ends_table(line)) {
            end_table("without its last line");
            return false;
        }
        part_ = TablePart::rows;
        if (!table_) return true;
        if (!ended_) {
            gap("a row is cut off");
            return true;
        }
        const auto cells = heading_.cut(line);
        const auto before = reading_.found.topology.size();
        const storcli::Where where{answer_.number, section_};
        if (!cells || !table_->read(*cells, where, line_, reading_)) {
            gap("a row that does not fit its heading");
            return true;
        }
        auto& count = answer_.rows[static_cast<std::size_t>(table_->counted)];
        if (table_->counted != Counted::topology) {
            ++count;
        } else if (reading_.found.topology.size() > before) {
            if (!reading_.found.topology.back().array) ++count;
        }
        return true;
    }

    // What stands in no row: a table that was cut off ends there.
    static bool ends_table(std::string_view line) {
        line = trimmed(line);
        const auto pair = key_and_value(line);
        return (pair && pair->key.size() < 60 && line.front() != '/') || line.ends_with(" :");
    }

    void end_table(std::string_view where) {
        const bool open = table_ && part_ != TablePart::none;
        part_ = TablePart::none;
        table_ = nullptr;
        if (open) gap(joined({"a table ends ", where}));
    }

    // ---- headings ----

    bool heading(std::string_view line) {
        line.remove_suffix(1);
        line = trimmed(line);
        end_table("without its last line");
        legend_ = false;
        section_ = line;
        if (line.starts_with("Drive /c")) {
            const auto path = storcli::path_in(line);
            if (!path || !path->slot) return false;
            begin_drive(*path);
        } else if (line.starts_with("Enclosure /c")) {
            const auto path = storcli::path_in(line);
            if (!path || !path->enclosure) return false;
            end_details();
            enclosure_ = reading_.entity_at<Enclosure>(line_);
            enclosure_->controller = path->controller;
            enclosure_->number = path->enclosure;
        } else if (line.starts_with("VD") && line.ends_with(" Properties")) {
            const auto volume = integer(line.substr(2, line.size() - 2 - 11));
            end_details();
            if (!volume) return false;
            volume_ = reading_.entity_at<Volume>(line_);
            volume_->controller = answer_.number;
            volume_->number = volume;
            open_volume_.reset();
        } else if (line.starts_with("PDs for VD ")) {
            end_details();
            if (open_volume_) gap("the properties of a volume are missing");
            open_volume_ = integer(line.substr(11));
        } else if (line.starts_with("/c")) {
            end_details();
        }
        answer_.has_content = true;
        return true;
    }

    void begin_drive(const storcli::Path& path) {
        const bool same = details_ && details_->drive.controller == path.controller &&
                          details_->drive.enclosure == path.enclosure &&
                          details_->drive.slot == path.slot;
        if (!same) {
            end_details();
            details_.emplace();
            details_->drive.place = reading_.at(line_);
            details_->drive.controller = path.controller;
            details_->drive.enclosure = path.enclosure;
            details_->drive.slot = path.slot;
        }
        if (!trimmed(path.rest).empty() && trimmed(path.rest) != ":") details_->has_details = true;
        if (path.rest.find("Device attributes") != std::string_view::npos)
            details_->has_attributes = true;
        if (path.rest.find("Policies/Settings") != std::string_view::npos)
            details_->has_settings = true;
    }

    void end_details() {
        if (details_) {
            const auto& d = *details_;
            const bool whole = d.has_counters && d.has_alert && d.has_identity && d.has_firmware &&
                               d.has_attributes == d.has_settings;
            if (d.has_details && !whole) gap("the details of a drive are not whole");
            if (d.has_details) reading_.found.drives.push_back(std::move(details_->drive));
            details_.reset();
        }
        if (volume_ && (volume_->device || volume_->operation))
            reading_.found.volumes.push_back(std::move(*volume_));
        volume_.reset();
        if (enclosure_) reading_.found.enclosures.push_back(std::move(*enclosure_));
        enclosure_.reset();
    }

    // ---- keys ----

    void key(const KeyValue& pair) {
        legend_ = false;
        list_goes_on_ = pair.value.ends_with(',');
        if (pair.key == "Controller" && section_ != "Basics") return begin_answer(pair.value);
        if (pair.key == "Status Code") return begin_answer("");
        if (answer_.outcome.empty() && pair.key == "Status" && !enclosure_)
            return status(pair.value);
        if (pair.key == "Description" && section_.empty()) {
            answer_.description = pair.value;
            return;
        }
        if (details_) return drive_key(pair);
        if (volume_ && set(std::span<const Key<Volume>>(kVolume), pair, *volume_)) return;
        if (enclosure_ && set(std::span<const Key<Enclosure>>(kEnclosure), pair, *enclosure_))
            return;
        controller_key(pair);
    }

    // Whether it is a key of the table.
    template <class Entity>
    bool set(std::span<const Key<Entity>> keys, const KeyValue& pair, Entity& entity) {
        const auto result = set_by_key(keys, pair.key, pair.value, entity);
        if (result == KeyResult::unreadable)
            gap(joined({"a value that cannot be read: ", pair.key}));
        return result != KeyResult::unknown;
    }

    void drive_key(const KeyValue& pair) {
        auto& d = *details_;
        if (!set(std::span<const Key<Drive>>(kDrive), pair, d.drive)) return;
        d.has_details = true;
        answer_.has_content = answered_ = true;
        if (pair.key == "Media Error Count") d.has_counters = true;
        if (pair.key.starts_with("S.M.A.R.T")) d.has_alert = true;
        if (pair.key == "SN" || pair.key == "WWN") d.has_identity = true;
        if (pair.key == "Firmware Revision") d.has_firmware = true;
        for (const auto& [name, field] : kJudged) {
            if (pair.key == name)
                d.drive.elsewhere.push_back({std::string(field), reading_.at(line_)});
        }
    }

    void controller_key(const KeyValue& pair) {
        for (const auto& [name, counted, words] : kAnnouncements) {
            if (pair.key != name) continue;
            const auto count = integer(pair.value);
            if (!count) {
                gap(joined({"a count that cannot be read: ", name}));
                return;
            }
            answer_.announced[static_cast<std::size_t>(counted)] = count;
            answer_.has_content = true;
            section_.clear();
        }
        if (pair.key == "Controller Count" || pair.key == "Number of Controllers") {
            const auto count = integer(pair.value);
            if (!count) return gap("a count that cannot be read");
            reading_.found.controller_counts.push_back({reading_.at(line_), "storcli", count});
            answer_.has_content = answered_ = true;
        }
        if (pair.key == "BBU" && section_ == "HwCfg" && pair.value == "Present")
            answer_.expects_battery = true;
        if (pair.key == "Controller Time" || pair.key == "Current Controller Date/Time") {
            answer_.time = time_of(pair.value);
            answer_.time_line = line_;
        }
        if (pair.key == "System Time" || pair.key == "Current System Date/time")
            answer_.system_time = time_of(pair.value);

        if (!answer_.number) return;
        if (is_trouble(pair))
            answer_.troubles.push_back({joined({pair.key, " = ", pair.value}), reading_.at(line_)});
        auto& controller = answer_.controller;
        if (!set(std::span<const Key<Controller>>(kController), pair, controller)) return;
        answer_.has_content = answered_ = true;
        // A finding about the controller points at the word on its state.
        if (controller.place.line == 0 || pair.key == "Controller Status")
            controller.place = reading_.at(line_);
    }

    // ---- answers ----

    void begin_answer(std::string_view number) {
        end_table("without its last line");
        end_answer();
        section_.clear();
        answered_ = true;
        answer_.line = line_;
        answer_.number = integer(number);
        answer_.controller.number = answer_.number;
        answer_.errors_before = reading_.how.errors.size();
    }

    void status(std::string_view value) {
        answer_.outcome = value.starts_with("Succ") ? "Success" : "Failure";
        answer_.failed = answer_.outcome == "Failure";
        answer_.failed_line = line_;
    }

    void end_answer() {
        end_details();
        if (open_volume_) gap("the properties of a volume are missing");
        open_volume_.reset();

        auto& a = answer_;
        const auto rows = [&](Counted counted) {
            return a.rows[static_cast<std::size_t>(counted)];
        };
        const auto announced = [&](Counted counted) {
            return a.announced[static_cast<std::size_t>(counted)];
        };
        for (const auto& [name, counted, words] : kAnnouncements) {
            if (const auto count = announced(counted); count && rows(counted) < *count)
                gap(joined({std::to_string(*count), " ", words, " announced, ",
                            std::to_string(rows(counted)), " read"}));
        }
        if (a.expects_battery && rows(Counted::batteries) == 0) gap("the battery is missing");

        const auto& c = a.controller;
        if (c.place.line != 0 && !a.failed) {
            // The lists of a controller without drives are left out; batteries come behind them.
            const bool has_lists = announced(Counted::drives) || rows(Counted::drives) > 0 ||
                                   announced(Counted::jbods) || rows(Counted::enclosures) > 0 ||
                                   rows(Counted::batteries) > 0;
            if (!has_lists)
                gap("it ends before the lists of drives");
            else if (announced(Counted::topology).value_or(0) > 0 && !announced(Counted::volumes))
                gap("it ends before the list of volumes");
        }
        for (const auto& trouble : a.troubles) {
            auto& status = a.controller.status;
            status = (status ? *status + ", " : "") + trouble.field;
        }
        a.controller.elsewhere = std::move(a.troubles);
        if (c.place.line != 0) reading_.found.controllers.push_back(std::move(a.controller));
        if (a.time && a.number)
            reading_.found.clocks.push_back({reading_.at(a.time_line),
                                             "controller " + std::to_string(*a.number), a.time,
                                             a.system_time});

        if (a.failed && reading_.how.errors.size() == a.errors_before)
            reading_.how.errors.push_back(
                {a.failed_line,
                 a.description.empty() || a.description == "None" ? "Failure" : a.description});
        if (a.line != 0 && !a.failed) {
            const std::string_view says = a.description;
            const bool says_none = says.empty() || says == "None" || says.starts_with("Show ") ||
                                   (!ended_ && !says.ends_with('.'));
            if (a.outcome.empty())
                gap("the answer has no status");
            else if (!a.has_content && says_none)
                gap("the answer is empty");
        }
        a = {};
    }

    CaptureLines& lines_;
    Reading& reading_;
    std::int64_t line_ = 0;
    bool ended_ = true;
    bool answered_ = false;

    std::string section_;  // the last heading; empty in the answer's first lines
    TablePart part_ = TablePart::none;
    const storcli::Table* table_ = nullptr;  // null in a table that nobody needs
    Heading heading_;
    std::size_t width_ = 0;  // of the table's ruler
    bool legend_ = false;
    bool awaits_legend_ = false;  // a list has come to its last line
    bool list_goes_on_ = false;

    Answer answer_;
    std::optional<Details> details_;
    std::optional<Volume> volume_;
    std::optional<Enclosure> enclosure_;
    Integer open_volume_;  // its drives were listed, its properties were not
};

}  // namespace

void read_storcli(CaptureLines& lines, Reading& reading) {
    const NumbersOf numbers(reading, "storcli");
    Reader(lines, reading).read();
}

}  // namespace qvhost::inventory
