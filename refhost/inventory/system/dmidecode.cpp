// dmidecode: the firmware's tables. A structure begins with its handle and type; its fields are
// indented, and what is indented deeper is a list of the field before.
//     Handle 0x0011, DMI type 17, 40 bytes
//     Memory Device
//             Size: 16 GB
//             Locator: DIMM 2
//             Speed: 2133 MT/s
//     ...
//     Handle 0x0053, DMI type 127, 4 bytes
//     End Of Table
// dmidecode 2.2 has the type on a line of its own and indents once more:
//     Handle 0x0001
//             DMI type 1, 27 bytes.
//             System Information
//                     Manufacturer: HP
#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "inventory/each_line.h"
#include "inventory/forms.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/power_supply_name.h"
#include "inventory/system/readers.h"
#include "inventory/text.h"
#include "text/case.h"

namespace qvhost::inventory {

namespace {

struct Structure {
    std::int64_t type = -1;
    std::int64_t line = 0;
    std::vector<std::pair<std::string, std::string>> fields;
    bool is_virtual_machine = false;  // a BIOS characteristic
    bool is_cut_off = false;          // the capture ends within it

    std::string_view operator[](std::string_view key) const {
        for (const auto& [name, value] : fields)
            if (name == key) return value;
        return {};
    }
};

struct Trait {
    std::string_view key;   // of a field
    std::string_view word;  // that its value holds
};

// Products that only virtual machines have; type 1 or type 0.
constexpr auto kVirtualSystems = std::to_array<Trait>({
    {"Product Name", "KVM"                  },
    {"Product Name", "VMware"               },
    {"Product Name", "VirtualBox"           },
    {"Product Name", "Virtual Machine"      }, // Hyper-V
    {"Product Name", "HVM domU"             }, // Xen
    {"Product Name", "Bochs"                },
    {"Product Name", "Google Compute Engine"},
    {"Product Name", "OpenStack"            },
    {"Product Name", "Parallels Virtual"    },
    {"Product Name", "Alibaba Cloud ECS"    },
    {"Product Name", "Droplet"              },
    {"Product Name", "vServer"              },
    {"Product Name", "BHYVE"                },
    {"Product Name", "AHV"                  },
    {"Product Name", "oVirt"                },
    {"Product Name", "RHEV Hypervisor"      },
    {"Product Name", "Standard PC ("        }, // QEMU
    {"Manufacturer", "QEMU"                 },
    {"Manufacturer", "VMware"               },
    {"Manufacturer", "innotek GmbH"         },
    {"Manufacturer", "Xen"                  },
    {"Manufacturer", "Bochs"                },
    {"Manufacturer", "OpenStack"            },
    {"Manufacturer", "DigitalOcean"         },
    {"Version",      "amazon"               },
});
constexpr auto kVirtualFirmware = std::to_array<Trait>({
    {"Vendor",  "SeaBIOS"     },
    {"Vendor",  "Xen"         },
    {"Vendor",  "innotek GmbH"},
    {"Vendor",  "Bochs"       },
    {"Vendor",  "BHYVE"       },
    {"Version", "VirtualBox"  },
    {"Version", "OVMF"        },
});

template <class Table>
bool has_any(const Table& traits, const Structure& from) {
    return std::any_of(traits.begin(), traits.end(), [&](const Trait& trait) {
        return from[trait.key].find(trait.word) != std::string_view::npos;
    });
}

// Amazon lends whole servers too: "m5.metal".
bool is_amazon_machine(const Structure& from) {
    return from["Manufacturer"] == "Amazon EC2" &&
           from["Product Name"].find(".metal") == std::string_view::npos;
}

// "3200 MT/s"; older versions write "1333 MHz" for the same.
Integer speed_of(std::string_view text) {
    const auto parts = words(text);
    if (parts.size() < 2 || (parts[1] != "MT/s" && parts[1] != "MHz")) return std::nullopt;
    return integer(parts[0]);
}

void read_firmware(const Structure& from, System& system) {
    system.firmware = told(from["Version"]);
    if (from.is_virtual_machine || has_any(kVirtualFirmware, from)) system.is_virtual = true;
}

void read_system(const Structure& from, System& system) {
    system.manufacturer = told_identity(from["Manufacturer"]);
    system.product = told_identity(from["Product Name"]);
    system.serial = told_identity(from["Serial Number"]);
    system.uuid = told_identity(from["UUID"]);
    if (has_any(kVirtualSystems, from) || is_amazon_machine(from))
        system.is_virtual = true;
    else if (!system.is_virtual && !from.is_cut_off)
        system.is_virtual = false;
}

void read_processor(const Structure& from, Reading& reading) {
    const auto type = told(from["Type"]);
    if (type && *type != "Central Processor") return;
    const auto status = from["Status"];
    if (same_word(status, "Unpopulated")) return;
    Processor processor;
    processor.place = reading.at(from.line);
    processor.socket = told(from["Socket Designation"]);
    processor.model = told_identity(from["Version"]);
    processor.cores = integer(from["Core Count"]);
    processor.threads = integer(from["Thread Count"]);
    processor.state = told(status);
    reading.found.processors.push_back(std::move(processor));
}

// What holds the firmware is listed as a memory device too.
constexpr auto kReadOnlyMemory =
    std::to_array<std::string_view>({"Flash", "ROM", "EEPROM", "FEPROM", "EPROM"});

void read_memory_module(const Structure& from, Reading& reading) {
    if (std::find(kReadOnlyMemory.begin(), kReadOnlyMemory.end(), from["Type"]) !=
        kReadOnlyMemory.end())
        return;
    const auto capacity = binary_bytes(from["Size"]);
    const auto serial = told_identity(from["Serial Number"]);
    if (from["Size"] == "No Module Installed")
        reading.found.empty_memory_slots.push_back({reading.at(from.line), told(from["Locator"])});
    if (capacity ? *capacity == 0 : !serial || from["Size"] != "Unknown") return;
    MemoryModule module;
    module.place = reading.at(from.line);
    module.slot = told(from["Locator"]);
    module.capacity_bytes = capacity;
    module.type = told(from["Type"]);
    module.speed_mts = speed_of(from["Speed"]);
    module.manufacturer = told_identity(from["Manufacturer"]);
    module.serial = serial;
    module.part = told_identity(from["Part Number"]);
    reading.found.memory_modules.push_back(std::move(module));
}

void read_ipmi_device(const Structure& from, Reading& reading) {
    reading.found.ipmi_devices.push_back({reading.at(from.line), told(from["Interface Type"])});
}

void read_power_supply(const Structure& from, Reading& reading) {
    PowerSupply supply;
    supply.place = reading.at(from.line);
    supply.slot = told_identity(from["Location"]);
    const auto name = told_identity(from["Name"]);
    // Some firmware puts the bay's name where the model's belongs.
    if (name && !supply.slot && power_supply_name(*name) == *name)
        supply.slot = name;
    else
        supply.model = name;
    supply.serial = told_identity(from["Serial Number"]);
    supply.part = told_identity(from["Model Part Number"]);
    supply.state = told(from["Status"]);
    if (from["Status"].starts_with("Present")) supply.present = true;
    if (from["Status"].starts_with("Not Present") || from["Status"].starts_with("Absent"))
        supply.present = false;
    reading.found.firmware_power_supplies.push_back(std::move(supply));
}

struct StructureReader {
    std::int64_t type;
    void (*read)(const Structure&, Reading&);
};

constexpr std::int64_t kFirmware = 0, kSystem = 1, kChassis = 3, kEnd = 127;
constexpr auto kReaders = std::to_array<StructureReader>({
    {4,  read_processor    },
    {17, read_memory_module},
    {38, read_ipmi_device  },
    {39, read_power_supply },
});

// Lines between the structures.
constexpr auto kHeadings = std::to_array<std::string_view>({
    "#*",
    "SMBIOS *present.*",
    "Getting SMBIOS data from *",
    "Scanning /dev/mem for entry point*",
    "*structures occupying *",
    "Table at *",
    "Legacy DMI * present.*",
    "DMI * present.*",
    "Reading SMBIOS/DMI data from file *",
    "Wrong DMI structures *",
    "Invalid entry length *",
    "<TRUNCATED>",
    "COMMAND> *",
});

std::size_t indentation(std::string_view text) {
    const auto at = text.find_first_not_of(" \t");
    return at == std::string_view::npos ? text.size() : at;
}

class Dmi {
public:
    explicit Dmi(Reading& reading) : reading_(reading) {}

    void read(const CaptureLine& line) {
        const auto text = line.text;
        if (trimmed(text).empty()) {
            finish();
        } else if (text.starts_with("Handle 0x")) {
            finish();
            current_.emplace();
            current_->line = line.number;
            depth_ = 0;
            has_title_ = false;
            const auto comma = text.find(',');
            is_indented_ = comma == std::string_view::npos;
            if (!is_indented_) take_type(text.substr(comma + 1));
        } else if (!current_ || (indentation(text) == 0 && (is_indented_ || is_tool_error(text)))) {
            const bool is_heading = is_like_any(trimmed(text), kHeadings);
            if (!is_heading) read_aside(line, reading_);
        } else if (current_->type < 0 && take_type(text)) {
            return;
        } else if (!has_title_ || indentation(text) == 0) {
            has_title_ = true;  // a structure of several parts has more than one
        } else {
            if (line.ended) read_field(text);  // else its value may be cut off
        }
    }

    void finish() {
        if (!current_) return;
        const auto structure = std::move(*current_);
        current_.reset();
        if (structure.type == kEnd) has_end_ = true;
        if (structure.is_cut_off && structure.fields.empty()) return;
        if (structure.type == kFirmware) read_firmware(structure, system_);
        if (structure.type == kChassis && !system_.asset_tag)
            system_.asset_tag = told_identity(structure["Asset Tag"]);
        if (structure.type == kSystem && system_.place.line == 0) {
            system_.place = reading_.at(structure.line);
            read_system(structure, system_);
        }
        for (const auto& reader : kReaders)
            if (reader.type == structure.type) reader.read(structure, reading_);
    }

    void end() {
        if (current_) current_->is_cut_off = true;
        finish();
        auto& lines = reading_.how.lines;
        if (system_.place.line > 0) reading_.found.systems.push_back(std::move(system_));
        if (lines > 0 && !has_end_) add_gap(reading_, lines, "the table has no end");
    }

private:
    // "DMI type 17, 40 bytes"
    bool take_type(std::string_view text) {
        constexpr std::string_view kMark = "DMI type ";
        text = trimmed(text);
        if (!text.starts_with(kMark)) return false;
        text.remove_prefix(kMark.size());
        current_->type = integer(text.substr(0, text.find(','))).value_or(-1);
        return true;
    }

    void read_field(std::string_view text) {
        const auto depth = indentation(text);
        const auto pair = key_value(text, ":");
        if (depth_ == 0) depth_ = depth;
        if (trimmed(text) == "System is a virtual machine") current_->is_virtual_machine = true;
        if (depth == depth_ && pair)
            current_->fields.emplace_back(std::string(pair->key), std::string(pair->value));
    }

    Reading& reading_;
    System system_;
    std::optional<Structure> current_;
    std::size_t depth_ = 0;     // of the structure's fields
    bool is_indented_ = false;  // the structure's type and title, as dmidecode 2.2 prints them
    bool has_title_ = false;
    bool has_end_ = false;
};

}  // namespace

void read_dmidecode(CaptureLines& lines, Reading& reading) {
    Dmi dmi(reading);
    each_line(lines, reading, [&](const CaptureLine& line) { dmi.read(line); });
    dmi.end();
}

}  // namespace qvhost::inventory
