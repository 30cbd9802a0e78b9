#include "inventory/storage/ssacli.h"

#include <array>
#include <cmath>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "inventory/storage/keys.h"
#include "inventory/storage/tool.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

// Smart Array P440ar in Slot 0 (Embedded)
//    Slot: 0
//    Serial Number: PDNLH0BRH0000
//    Controller Status: OK
//    Firmware Version: 4.52
//    Cache Status: OK
//    Battery/Capacitor Count: 1
//    Battery/Capacitor Status: OK
//    Capacitor Temperature  (C): 38
constexpr auto kController = std::to_array<Key<Controller>>({
    {"Serial Number",     as_identity<&Controller::serial>},
    {"Controller Status", as_text<&Controller::status>    },
    {"Firmware Version",  as_text<&Controller::firmware>  },
});

//       Logical Drive: 1
//          Size: 279.4 GB
//          Fault Tolerance: 1+0
//          Status: Recovering, 12% complete
//          Unrecoverable Media Errors: None
//          Disk Name: /dev/sda
//          Logical Drive Label: boot
bool read_volume_state(Volume& volume, std::string_view value) {
    volume.state = told(value);
    const auto comma = value.find(',');
    if (comma == npos || value.find('%') == npos) return true;
    volume.operation = told(value.substr(0, comma));
    volume.progress_percent = leading_real(value.substr(comma + 1));
    return true;
}

constexpr auto kVolume = std::to_array<Key<Volume>>({
    {"Size",                as_bytes<&Volume::capacity_bytes>},
    {"Fault Tolerance",     as_text<&Volume::raid>           },
    {"Status",              read_volume_state                },
    {"Disk Name",           as_text<&Volume::device>         },
    {"Logical Drive Label", as_text<&Volume::name>           },
    {"Caching",             as_text<&Volume::cache>          },
});

//       physicaldrive 1I:1:3
//          Port: 1I
//          Box: 1
//          Bay: 3
//          Status: Predictive Failure
//          Drive Type: Spare Drive
//          Interface Type: Solid State SATA
//          Size: 300 GB
//          Logical/Physical Block Size: 512/4096
//          Serial Number: 6SE00000
//          WWID: 5000C50000000000
//          Model: HP      EG0300FBVFL
//          Current Temperature (C): 29
//          Usage remaining: 99.90%
//          Power On Hours: 1234
// Sizes of drives are the makers': its GB is 10^9 bytes.
bool read_drive_size(Drive& drive, std::string_view value) {
    const auto number = leading_real(value);
    const auto unit = value.substr(std::min(value.find_first_not_of("0123456789. "), value.size()));
    const double factor = unit == "TB" ? 1e12 : unit == "GB" ? 1e9 : unit == "MB" ? 1e6 : 0;
    if (!number || factor == 0 || *number * factor > 9e18) return false;
    drive.capacity_bytes = std::llround(*number * factor);
    return true;
}

bool read_kind(Drive& drive, std::string_view value) {
    if (value.find("Spare") != npos) drive.spare = "dedicated";
    return true;
}

bool read_interface(Drive& drive, std::string_view value) {
    for (const std::string_view name : {"SAS", "SATA", "NVMe"}) {
        if (value.find(name) != npos) drive.interface = std::string(name);
    }
    drive.media = value.find("Solid State") != npos || drive.interface == "NVMe" ? "SSD" : "HDD";
    return true;
}

bool read_sectors(Drive& drive, std::string_view value) {
    return as_number<&Drive::sector_bytes>(drive, value.substr(0, value.find('/')));
}

bool read_remaining(Drive& drive, std::string_view value) {
    if (const auto left = leading_real(value))
        drive.percentage_used = std::round((100 - *left) * 100) / 100;
    return true;
}

bool read_drive_state(Drive& drive, std::string_view value) {
    drive.state = told(value);
    drive.smart_alert = value.find("Predictive") != npos || drive.smart_alert.value_or(false);
    return true;
}

// "SSD Smart Trip Wearout: True", of a drive whose status is OK
bool read_wearout(Drive& drive, std::string_view value) {
    if (value == "True") drive.smart_alert = true;
    return true;
}

// "HP      EG0300FBVFL": the maker in eight columns, then the model.
bool read_model(Drive& drive, std::string_view value) {
    const auto gap = value.find("  ");
    drive.model = told(gap == npos ? value : value.substr(gap));
    return true;
}

constexpr auto kDrive = std::to_array<Key<Drive>>({
    {"Box",                         as_number<&Drive::enclosure>           },
    {"Bay",                         as_number<&Drive::slot>                },
    {"Status",                      read_drive_state                       },
    {"Drive Type",                  read_kind                              },
    {"Interface Type",              read_interface                         },
    {"Size",                        read_drive_size                        },
    {"Logical/Physical Block Size", read_sectors                           },
    {"Firmware Revision",           as_text<&Drive::firmware>              },
    {"Serial Number",               as_identity<&Drive::serial>            },
    {"WWID",                        as_identity<&Drive::wwn>               },
    {"Model",                       read_model                             },
    {"Current Temperature (C)",     as_leading<&Drive::temperature_celsius>},
    {"Usage remaining",             read_remaining                         },
    {"SSD Smart Trip Wearout",      read_wearout                           },
    {"Power On Hours",              as_number<&Drive::power_on_hours>      },
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
        }
        end_controller();
        if (controllers_ == 0 && reading_.how.errors.empty()) gap("no controller is in it");
        reading_.how.lines = lines_.count();
    }

private:
    void gap(std::string words) { reading_.how.gaps.push_back({line_, std::move(words)}); }

    void read(std::string_view line) {
        if (line.starts_with("Error:")) {
            reading_.how.errors.push_back({line_, std::string(trimmed(line.substr(6)))});
            return;
        }
        const auto slot = line.find(" in Slot ");
        if (slot != npos && line.find(':') == npos) return begin_controller(line, slot);
        if (line.starts_with("physicaldrive ")) return physical_drive(line);
        // "Internal Drive Cage at Port 1I, Box 1, OK"
        const auto box = line.find(", Box ");
        // "SEP (Vendor ID EXAMPLE, Model SRCv8x6G) 379", with a firmware, a WWID and a model of its own
        if (line.starts_with("SEP (") || line.starts_with("Enclosure SEP (") ||
            line.starts_with("Expander ")) {
            end_entity();
            in_processor_ = true;
            return;
        }
        if (box != npos && line.find(" at Port ") != npos) return cage(line, box);
        if (const auto pair = key_value(line, ":")) return key(*pair);
        if (line == "Physical Drives" || line == "unassigned" || line == "HBA Drives" ||
            line == "Unassigned") {
            end_entity();
            array_volumes_.clear();
            array_trouble_.clear();
            has_drive_lists_ = true;
            return;
        }
        if (!controller_) reading_.how.unknown_line(line_);
    }

    void begin_controller(std::string_view line, std::size_t slot) {
        end_controller();
        ++controllers_;
        controller_ = reading_.entity_at<Controller>(line_);
        controller_->model = told(line.substr(0, slot));
        const auto number = line.substr(slot + 9);
        controller_->number = integer(number.substr(0, number.find(' ')));
        if (!controller_->number) gap("a controller without a number");
    }

    // With a bracket it is a row of a summary, "physicaldrive 1I:1:1 (port 1I:box 1:bay 1, SAS HDD, ...)";
    // without, the drive's details follow.
    void physical_drive(std::string_view line) {
        end_entity();
        has_drive_lists_ = true;
        const auto cells = words(line);
        if (cells.size() < 2) return gap("a drive without a name");
        if (cells.size() > 2) {
            announced_.insert(std::string(cells[1]));
            return;
        }
        detailed_.insert(std::string(cells[1]));
        drive_ = reading_.entity_at<Drive>(line_);
    }

    void cage(std::string_view line, std::size_t box) {
        end_entity();
        auto enclosure = reading_.entity_at<Enclosure>(line_);
        if (controller_) enclosure.controller = controller_->number;
        const auto rest = fields_between(line.substr(box + 6), ',');
        enclosure.number = integer(rest[0]);
        if (rest.size() > 1) enclosure.state = told(rest[1]);
        enclosure.model = told(line.substr(0, line.find(" at Port ")));
        in_cage_ = true;
        reading_.found.enclosures.push_back(std::move(enclosure));
    }

    template <class Entity>
    bool set(std::span<const Key<Entity>> keys, const KeyValue& pair, Entity& entity) {
        const auto result = set_by_key(keys, pair.key, pair.value, entity);
        if (result == KeyResult::unreadable)
            gap("a value that cannot be read: " + std::string(pair.key));
        return result != KeyResult::unknown;
    }

    void key(const KeyValue& pair) {
        if (!controller_) return reading_.how.unknown_line(line_);
        if (pair.key == "Array") {
            end_entity();
            in_array_ = true;
            array_trouble_.clear();
            array_volumes_.clear();
        } else if (pair.key == "Logical Drive") {
            end_entity();
            volume_ = reading_.entity_at<Volume>(line_);
            volume_->number = integer(pair.value);
            array_volumes_.push_back(volume_->number);
        } else if (drive_) {
            set(std::span<const Key<Drive>>(kDrive), pair, *drive_);
            if (pair.key == "Status") drive_->place.line = line_;
            if (pair.key == "SSD Smart Trip Wearout" && pair.value == "True")
                drive_->elsewhere.push_back({"smart_alert", reading_.at(line_)});
        } else if (volume_) {
            set(std::span<const Key<Volume>>(kVolume), pair, *volume_);
            if (pair.key == "Status") volume_->place.line = line_;
            if (pair.key == "Unrecoverable Media Errors" && told(pair.value))
                add_trouble(volume_->state, pair);
        } else if (in_cage_) {
            if (pair.key == "Drive Bays")
                reading_.found.enclosures.back().slots = integer(pair.value);
        } else if (in_array_) {
            if (pair.key == "Status" && !in_processor_ && told(pair.value) && pair.value != "OK") {
                array_trouble_ = "Status of the array: " + std::string(pair.value);
                array_trouble_place_ = reading_.at(line_);
            }
        } else if (!in_processor_) {
            controller_key(pair);
        }
    }

    // "OK, Cache Status: Permanently Disabled"
    static void add_trouble(Text& state, const KeyValue& pair) {
        if (!state) return;
        *state += ", " + std::string(pair.key) + ": " + std::string(pair.value);
    }

    void controller_key(const KeyValue& pair) {
        if (set(std::span<const Key<Controller>>(kController), pair, *controller_)) {
            if (pair.key == "Controller Status") controller_->place.line = line_;
        } else if (pair.key == "Cache Status") {
            if (told(pair.value) && pair.value != "OK" && pair.value != "Not Configured")
                add_trouble(controller_->status, pair);
        } else if (pair.key == "Battery/Capacitor Status") {
            battery_ = reading_.entity_at<Battery>(line_);
            battery_->controller = controller_->number;
            battery_->state = told(pair.value);
        } else if (pair.key.starts_with("Capacitor Temperature") && battery_) {
            battery_->temperature_celsius = leading_real(pair.value);
        }
    }

    // The drives of an array stand behind its logical drives, and make each of them.
    void add_member(const Integer& volume) {
        auto member = reading_.entity_at<VolumeMember>(drive_->place.line);
        member.controller = drive_->controller;
        member.volume = volume;
        member.is_spare = drive_->spare.has_value();
        member.enclosure = drive_->enclosure;
        member.slot = drive_->slot;
        member.serial = drive_->serial;
        reading_.found.volume_members.push_back(std::move(member));
    }

    void end_entity() {
        in_cage_ = in_processor_ = false;
        if (volume_) {
            if (controller_) volume_->controller = controller_->number;
            if (!volume_->state) gap("a logical drive without a status");
            // A logical drive that is not well says more itself.
            if (volume_->state == "OK" && !array_trouble_.empty()) {
                *volume_->state += ", " + array_trouble_;
                volume_->elsewhere.push_back({array_trouble_, array_trouble_place_});
            }
            reading_.found.volumes.push_back(std::move(*volume_));
        }
        if (drive_) {
            if (controller_) drive_->controller = controller_->number;
            if (!drive_->state) gap("a drive without a status");
            for (const auto& volume : array_volumes_) add_member(volume);
            reading_.found.drives.push_back(std::move(*drive_));
        }
        volume_.reset();
        drive_.reset();
    }

    void end_controller() {
        end_entity();
        in_array_ = false;
        array_trouble_.clear();
        array_volumes_.clear();
        for (const auto& name : announced_) {
            if (!detailed_.contains(name)) gap("the details of " + name + " are missing");
        }
        announced_.clear();
        detailed_.clear();
        if (battery_) reading_.found.batteries.push_back(std::move(*battery_));
        battery_.reset();
        if (!controller_) return;
        if (!controller_->status) gap("a controller without a status");
        if (!has_drive_lists_) gap("it ends before the lists of drives");
        has_drive_lists_ = false;
        reading_.found.controllers.push_back(std::move(*controller_));
        controller_.reset();
    }

    CaptureLines& lines_;
    Reading& reading_;
    std::int64_t line_ = 0;
    std::int64_t controllers_ = 0;
    bool in_cage_ = false, in_array_ = false, has_drive_lists_ = false;
    bool in_processor_ = false;  // an enclosure's, or an expander
    std::string array_trouble_;  // of the array that is read
    Place array_trouble_place_;
    std::vector<Integer> array_volumes_;  // the logical drives of the array that is read
    std::set<std::string> announced_, detailed_;
    std::optional<Controller> controller_;
    std::optional<Battery> battery_;
    std::optional<Volume> volume_;
    std::optional<Drive> drive_;
};

}  // namespace

void read_ssacli(CaptureLines& lines, Reading& reading) {
    const NumbersOf numbers(reading, "ssacli");
    Reader(lines, reading).read();
}

}  // namespace qvhost::inventory
