#include "inventory/storage/ircu.h"

#include <array>
#include <optional>
#include <string>
#include <utility>

#include "inventory/columns.h"
#include "inventory/storage/keys.h"
#include "inventory/storage/tool.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

// Both tools print the same.
const char* tool_of(std::string_view capture) {
    return capture.starts_with("host_sas3ircu") ? "sas3ircu" : "sas2ircu";
}

constexpr std::int64_t kMebibyte = std::int64_t{1} << 20;

// Read configuration has been initiated for controller 0
// ------------------------------------------------------------------------
// Controller information
// ------------------------------------------------------------------------
//   Controller type                         : SAS2308_2
//   Firmware version                        : 19.00.00.00
constexpr auto kController = std::to_array<Key<Controller>>({
    {"Controller type",  as_text<&Controller::model>   },
    {"Firmware version", as_text<&Controller::firmware>},
});

// IR volume 1
//   Volume ID                               : 286
//   Status of volume                        : Degraded (DGD)
//   RAID level                              : RAID1
//   Size (in MB)                            : 139236
//   Physical hard disks                     :
//   PHY[0] Enclosure#/Slot#                 : 1:0
template <auto Field>
bool as_mebibytes(EntityOf<Field>& entity, std::string_view value) {
    if (!told(value)) return true;
    const auto number = integer(value.substr(0, value.find('/')));
    if (!number || *number < 0 || *number > (std::int64_t{1} << 42)) return false;
    entity.*Field = *number * kMebibyte;
    return true;
}

// "12.00%", "12 %"
constexpr auto kVolume = std::to_array<Key<Volume>>({
    {"Volume ID",           as_number<&Volume::number>           },
    {"Status of volume",    as_text<&Volume::state>              },
    {"Volume state",        as_text<&Volume::state>              },
    {"RAID level",          as_text<&Volume::raid>               },
    {"Size (in MB)",        as_mebibytes<&Volume::capacity_bytes>},
    {"Volume Name",         as_text<&Volume::name>               },
    {"Current operation",   as_text<&Volume::operation>          },
    {"Percentage complete", as_leading<&Volume::progress_percent>},
});

// Device is a Hard disk
//   Enclosure #                             : 1
//   Slot #                                  : 0
//   State                                   : Optimal (OPT)
//   Size (in MB)/(in sectors)               : 476940/976773167
//   Model Number                            : ST9500620NS
//   Firmware Revision                       : AA0D
//   Serial No                               : 9XF00000
//   GUID                                    : 5000c50000000000
//   Protocol                                : SATA
//   Drive Type                              : SATA_HDD
bool read_media(Drive& drive, std::string_view value) {
    const auto mark = value.find('_');
    if (mark != npos) drive.media = told(value.substr(mark + 1));
    return true;
}

bool read_state(Drive& drive, std::string_view value) {
    drive.state = told(value);
    if (value.find("(HSP)") != npos) drive.spare = "global";
    return true;
}

constexpr auto kDrive = std::to_array<Key<Drive>>({
    {"Enclosure #",               as_number<&Drive::enclosure>        },
    {"Slot #",                    as_number<&Drive::slot>             },
    {"State",                     read_state                          },
    {"Size (in MB)/(in sectors)", as_mebibytes<&Drive::capacity_bytes>},
    {"Model Number",              as_text<&Drive::model>              },
    {"Firmware Revision",         as_text<&Drive::firmware>           },
    {"Serial No",                 as_identity<&Drive::serial>         },
    {"GUID",                      as_identity<&Drive::wwn>            },
    {"Protocol",                  as_text<&Drive::interface>          },
    {"Drive Type",                read_media                          },
});

//   Enclosure#                              : 1
//   Logical ID                              : 5782bcb0:19e35100
//   Numslots                                : 9
constexpr auto kEnclosure = std::to_array<Key<Enclosure>>({
    {"Enclosure#", as_number<&Enclosure::number>},
    {"Numslots",   as_number<&Enclosure::slots> },
});

class Reader {
public:
    Reader(CaptureLines& lines, Reading& reading) : lines_(lines), reading_(reading) {}

    void read() {
        while (const auto line = lines_.next()) {
            line_ = line->number;
            const auto text = trimmed(line->text);
            if (text.empty()) continue;
            read(text);
            before_ = text;
        }
        end_entity();
        // Its type is the first that is told of it: a heading alone tells nothing.
        if (controller_ && controller_->model)
            reading_.found.controllers.push_back(std::move(*controller_));
        if (in_list_) count_controllers();
        if (!completed_) gap("the answer has no end");
        reading_.how.lines = lines_.count();
    }

private:
    enum class In { head, controller, volumes, volume, devices, enclosures, rows };

    void gap(std::string words) { reading_.how.gaps.push_back({line_, std::move(words)}); }

    void read(std::string_view line) {
        if (is_ruler(line)) {
            // "----- ------------" under the heading of the list
            if (line.find(' ') == npos) return;
            in_ = In::rows;
            in_list_ = true;
            return;
        }
        if (message(line)) return;
        if (heading(line)) return;
        if (in_ == In::rows) return row(line);
        const auto at = line.find(" :");
        if (at != npos) return key({trimmed(line.substr(0, at)), trimmed(line.substr(at + 2))});
        if (in_ == In::head && !started_) return;  // the tool's name and rights
        reading_.how.unknown_line(line_);
    }

    // SAS2IRCU: Utility Completed Successfully.
    // SAS2IRCU: there are no IR volumes on the controller!
    // SAS2IRCU: Error executing command STATUS.
    bool message(std::string_view line) {
        if (!line.starts_with("SAS2IRCU:") && !line.starts_with("SAS3IRCU:")) return false;
        if (line.find("Utility Completed Successfully") != npos) completed_ = true;
        if (line.find("rror") == npos) return true;
        completed_ = true;
        const bool is_told = before_.starts_with("SAS2IRCU:") || before_.starts_with("SAS3IRCU:");
        reading_.how.errors.push_back({line_, is_told ? before_ : std::string(line)});
        return true;
    }

    bool heading(std::string_view line) {
        constexpr std::string_view kStart = "initiated for controller ";
        constexpr std::string_view kProgress = "status for controller ";
        for (const auto words : {kStart, kProgress}) {
            const auto at = line.find(words);
            if (at == npos) continue;
            auto number = line.substr(at + words.size());
            if (number.ends_with("...")) number.remove_suffix(3);
            number_ = integer(number);
            started_ = true;
            return true;
        }
        if (line == "Controller information") {
            begin(In::controller);
            controller_ = reading_.entity_at<Controller>(line_);
            controller_->number = number_;
        } else if (line == "IR Volume information") {
            begin(In::volumes);
        } else if (line == "Physical device information") {
            begin(In::devices);
        } else if (line == "Enclosure information") {
            begin(In::enclosures);
        } else if (line.starts_with("IR volume ") || line.starts_with("IR Volume ")) {
            begin(In::volume);
            volume_ = reading_.entity_at<Volume>(line_);
        } else if (line.starts_with("Device is a")) {
            begin(In::devices);
            if (line.find("Hard disk") != npos) drive_ = reading_.entity_at<Drive>(line_);
        } else {
            return line.starts_with("Initiator at ID");
        }
        return true;
    }

    void begin(In in) {
        end_entity();
        in_ = in;
    }

    template <class Entity>
    bool set(std::span<const Key<Entity>> keys, const KeyValue& pair, Entity& entity) {
        const auto result = set_by_key(keys, pair.key, pair.value, entity);
        if (result == KeyResult::unreadable)
            gap("a value that cannot be read: " + std::string(pair.key));
        return result != KeyResult::unknown;
    }

    void key(const KeyValue& pair) {
        if (drive_) {
            set(std::span<const Key<Drive>>(kDrive), pair, *drive_);
            if (pair.key == "State") drive_->place.line = line_;
        } else if (volume_) {
            if (pair.key.starts_with("PHY[")) return member(pair);
            set(std::span<const Key<Volume>>(kVolume), pair, *volume_);
            if (pair.key == "Status of volume" || pair.key == "Volume state")
                volume_->place.line = line_;
        } else if (in_ == In::controller && controller_) {
            set(std::span<const Key<Controller>>(kController), pair, *controller_);
        } else if (in_ == In::enclosures) {
            if (pair.key == "Enclosure#") {
                end_entity();
                enclosure_ = reading_.entity_at<Enclosure>(line_);
            }
            if (enclosure_) set(std::span<const Key<Enclosure>>(kEnclosure), pair, *enclosure_);
        }
    }

    // "PHY[1] Enclosure#/Slot#  : 1:1"
    void member(const KeyValue& pair) {
        auto member = reading_.entity_at<VolumeMember>(line_);
        member.controller = number_;
        member.volume = volume_->number;
        member.position = integer(pair.key.substr(4, pair.key.find(']') - 4));
        member.is_spare = false;
        const auto numbers = fields_between(pair.value, ':');
        if (numbers.size() != 2) return gap("a drive's place that cannot be read");
        member.enclosure = integer(numbers[0]);
        member.slot = integer(numbers[1]);
        reading_.found.volume_members.push_back(std::move(member));
    }

    //          Adapter      Vendor  Device                       SubSys  SubSys
    //  Index    Type          ID      ID    Pci Address          Ven ID  Dev ID
    //  -----  ------------  ------  ------  -----------------    ------  ------
    //    0     SAS2308_2    1000h    87h   00h:05h:00h:00h      1028h   1f1eh
    void row(std::string_view line) {
        const auto cells = words(line);
        const auto number = cells.empty() ? std::nullopt : integer(cells[0]);
        if (!number || cells.size() < 7) return gap("a row that does not fit its heading");
        auto controller = reading_.entity_at<Controller>(line_);
        controller.number = number;
        controller.model = told(cells[1]);
        reading_.found.controllers.push_back(std::move(controller));
        ++rows_;
    }

    void count_controllers() {
        ControllerCount count;
        count.place = reading_.at(line_);
        count.tool = tool_of(reading_.capture);
        count.count = rows_;
        reading_.found.controller_counts.push_back(std::move(count));
    }

    void end_entity() {
        if (volume_) {
            volume_->controller = number_;
            if (!volume_->state) gap("a volume without a state");
            reading_.found.volumes.push_back(std::move(*volume_));
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
        drive_.reset();
        enclosure_.reset();
    }

    CaptureLines& lines_;
    Reading& reading_;
    std::int64_t line_ = 0;
    std::string before_;
    In in_ = In::head;
    Integer number_;
    bool started_ = false, completed_ = false, in_list_ = false;
    std::int64_t rows_ = 0;
    std::optional<Controller> controller_;
    std::optional<Volume> volume_;
    std::optional<Drive> drive_;
    std::optional<Enclosure> enclosure_;
};

// Input: logir.log, 41 records
//
// Log Entry 1
// Time: 03/02/2026 04:12:07
// LogEntryDescription: IR Physical Disk
// LogDataDescription: PhysDisk 1 in Encl 1 Slot 1 state changed to Missing
// LogClass: Warning
Text log_time(std::string_view value) {
    if (value.size() != 19 || value[2] != '/' || value[5] != '/' || value[13] != ':')
        return std::nullopt;
    const auto part = [&](std::size_t at, std::size_t size) {
        return static_cast<int>(integer(value.substr(at, size)).value_or(-1));
    };
    return iso_time(part(6, 4), part(0, 2), part(3, 2), part(11, 2), part(14, 2), part(17, 2));
}

struct ClassRow {
    std::string_view word;
    Severity severity;
};
constexpr auto kClasses = std::to_array<ClassRow>({
    {"Informational", Severity::info    },
    {"Progress",      Severity::info    },
    {"Warning",       Severity::warning },
    {"Critical",      Severity::critical},
    {"Fatal",         Severity::critical},
    {"Dead",          Severity::critical},
});

}  // namespace

void read_ircu(CaptureLines& lines, Reading& reading) {
    const NumbersOf numbers(reading, tool_of(reading.capture));
    Reader(lines, reading).read();
}

void read_ir_log(CaptureLines& lines, Reading& reading) {
    Event event;
    bool open = false, has_class = false;
    Integer announced;
    std::int64_t count = 0, line_number = 0;
    const auto gap = [&](std::string words) {
        reading.how.gaps.push_back({line_number, std::move(words)});
    };
    const auto finish = [&] {
        if (event.text.empty() && event.subject) event.text = *event.subject;
        if (open && (event.text.empty() || !has_class)) {
            gap("a log entry that is cut off");
        } else if (open) {
            ++count;
            event.place.capture = reading.capture;
            event.source = "controller 0";
            if (reading.event) reading.event(std::move(event));
        }
        event = {};
        open = has_class = false;
    };
    while (const auto line = lines.next()) {
        line_number = line->number;
        const auto text = trimmed(line->text);
        if (text.empty()) continue;
        if (text.starts_with("Input: ") && text.ends_with(" records")) {
            const auto comma = text.rfind(',');
            if (comma != npos) announced = integer(words(text.substr(comma + 1))[0]);
            continue;
        }
        if (text.starts_with("Log Entry ")) {
            finish();
            open = true;
            continue;
        }
        const auto pair = key_value(text, ":");
        if (!open || !pair) {
            if (count > 0 || open) reading.how.unknown_line(line_number);
            continue;
        }
        if (pair->key == "Time") {
            event.time = log_time(pair->value);
        } else if (pair->key == "LogEntryDescription") {
            event.subject = told(pair->value);
            event.place.line = line_number;
        } else if (pair->key == "LogDataDescription") {
            event.text = pair->value;
            event.place.line = line_number;
        } else if (pair->key == "LogClass") {
            for (const auto& row : kClasses) {
                if (row.word != pair->value) continue;
                event.severity = row.severity;
                has_class = true;
            }
            if (!has_class && line->ended) {  // it may matter
                event.severity = Severity::warning;
                has_class = true;
                reading.how.unknown_line(line_number);
            }
        }
    }
    finish();
    if (announced && count < *announced)
        gap(std::to_string(*announced) + " records announced, " + std::to_string(count) + " read");
    if (!announced && count == 0) gap("no log entry is in it");
    reading.how.lines = lines.count();
}

}  // namespace qvhost::inventory
