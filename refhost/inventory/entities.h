// What a server consists of, as its captures tell: one plain struct a kind of thing. Each entity names
// the capture and the line where it stands. A field that no capture tells is empty, never guessed;
// texts are trimmed; a number's unit ends its name. fields.h declares every field for the views.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvhost::inventory {

using Text = std::optional<std::string>;
using Integer = std::optional<std::int64_t>;
using Real = std::optional<double>;
using Flag = std::optional<bool>;
using Texts = std::vector<std::string>;

// Where something stands.
struct Place {
    std::string capture;    // the file's name in the log directory
    std::int64_t line = 0;  // counted from 1
    bool operator==(const Place&) const = default;
};

// A field that stands on another line than its entity, or one of the words that a state is made of.
struct FieldPlace {
    std::string field;  // its name in fields.h, or the word: "temperature: 110 C/ 230 F (Abnormal)"
    Place place;
};

// Where a field of an entity stands: mostly where the entity does.
template <class Entity>
Place place_of(const Entity& entity, std::string_view field) {
    for (const auto& at : entity.elsewhere) {
        if (at.field == field) return at.place;
    }
    return entity.place;
}

struct System {
    Place place;
    Text manufacturer, product, serial, uuid, asset_tag;
    Text firmware;  // the BIOS or UEFI
    Flag is_virtual;
};

struct Processor {
    Place place;
    Text socket, model;
    Integer cores, threads;
    Text state;
};

struct MemoryModule {
    Place place;
    Text slot;
    Integer capacity_bytes;
    Text type;
    Integer speed_mts;
    Text manufacturer, serial, part;
};

struct Bmc {
    Place place;
    Text firmware, ipmi, self_test, address, mac;
    std::vector<FieldPlace> elsewhere;  // a self test that stands in another capture
};

struct Sensor {
    Place place;
    Text name;
    Text number;   // as IPMI tools print it: "30h"
    Text kind;     // temperature, fan, voltage, current, power, discrete, ...
    Real reading;  // empty for discrete sensors
    Text unit;
    Text status;                        // as printed: ok, nc, cr, nr, na, ns
    Real lnr, lc, lnc, unc, uc, unr;    // thresholds, in the reading's unit
    Texts states;                       // the words of a discrete sensor
    std::vector<FieldPlace> elsewhere;  // states that stand in another capture
};

struct PowerSupply {
    Place place;
    Text slot;
    Flag present;
    Text state, input_state;
    Real input_watts;
    Text model, serial, part, firmware;
    std::vector<FieldPlace> elsewhere =
        {};  // states that stand below its heading or in another capture
};

struct Fru {
    Place place;
    Text device;  // "Builtin FRU Device (ID 0)"
    Text manufacturer, product, part, serial;
};

struct Controller {
    Place place;
    Integer number;
    Text model, serial, firmware;
    Text status;              // as printed
    Integer volumes, drives;  // how many it says it has
    std::string tool;         // whose numbers these are: "storcli", "arcconf", ...; no field
    std::vector<FieldPlace> elsewhere = {};  // words of the status that have lines of their own
};

struct Battery {  // a BBU, a CacheVault, a supercapacitor
    Place place;
    Integer controller;
    Text model, state;
    Integer charge_percent;
    Real temperature_celsius;
    std::string tool;  // whose numbers these are: "storcli", "arcconf", ...; no field
    std::vector<FieldPlace> elsewhere = {};  // words of the state that have lines of their own
};

struct Enclosure {
    Place place;
    Integer controller, number, slots;
    Text state, model, serial;
    std::string tool;  // whose numbers these are: "storcli", "arcconf", ...; no field
    std::vector<FieldPlace> elsewhere = {};  // words of the state that have lines of their own
};

struct Volume {  // a virtual drive, a logical device, an md array, a ZFS pool
    Place place;
    Integer controller, drive_group, number;
    Text raid, state, access;
    Flag consistent;
    Text cache;
    Integer capacity_bytes;
    Text name, device;
    Text operation;  // what runs on it: "Rebuild", "CC"
    Real progress_percent;
    std::vector<FieldPlace> elsewhere;  // a state that stands below its heading
    std::string tool;  // whose numbers these are: "storcli", "arcconf", ...; no field
};

struct Drive {
    Place place;
    Integer controller;  // empty: behind no RAID controller
    Integer enclosure;   // empty: in none
    Integer slot, device_id;
    Text state;  // as printed
    Integer drive_group;
    Flag is_foreign;
    Text spare;  // "global", "dedicated"
    Real rebuild_percent;
    Integer capacity_bytes;
    Text interface, media;
    Integer sector_bytes;
    Text model, serial, wwn, firmware, device;
    Real temperature_celsius;
    Integer media_errors, other_errors, predicted_failures, shield_counter;
    Flag smart_alert;
    Real percentage_used, available_spare_percent;
    Integer power_on_hours;
    std::vector<FieldPlace>
        elsewhere;  // counters, alerts and progress that stand in the drive's details
    // No fields: what drives say of themselves.
    Integer nvme_warnings;           // bits, NVM Express: Critical Warning
    Real available_spare_threshold;  // percent
    Integer smartctl_status;         // bits, smartctl(8): EXIT STATUS
    Integer reallocated_sectors;     // or a SAS drive's grown defects
    // No field: what is wrong with the temperature, "(Abnormal)".
    Text temperature_state;
    // No field: "cache" or "log" of a pool, where it holds nothing that is lost with it.
    std::string pool_part;
    std::string tool;  // whose numbers these are: "storcli", "arcconf", ...; no field
};

// A drive's place in a volume, or that of a hot spare. A volume has a member for each of its drives; of a
// drive group that several volumes lie on, each volume has its own.
struct VolumeMember {
    Place place;
    Integer controller;   // of the volume; empty: software storage
    Integer drive_group;  // empty: the tool counts none, or it is a global spare
    Integer volume;       // its number
    Text volume_name;
    Integer span, position;
    Flag is_spare;
    Text state;                // as printed
    Integer enclosure, slot;   // of the drive
    Integer device_id;         // of the drive
    Text device, serial, wwn;  // of the drive; the WWN is no field
    std::string tool;          // whose numbers these are: "storcli", "arcconf", ...; no field
    std::optional<std::size_t> drive;  // which of Inventory::drives it is; empty: none is listed
    std::string group = {};  // no field: of what kind its span of a pool is, "raidz2"; "log"
};

enum class Severity { info, warning, critical };

// "info", "warning", "critical"
constexpr const char* word(Severity severity) {
    switch (severity) {
        case Severity::info: return "info";
        case Severity::warning: return "warning";
        case Severity::critical: return "critical";
    }
    return "";
}

// An entry of a log: the SEL's, a controller's, the kernel's. Events are handed on one by one, since
// there may be a million.
struct Event {
    Place place;
    std::string source;  // "bmc", "controller 0", "kernel"
    Text time;           // ISO 8601 as the source's clock said it; empty if it had none
    Text time_utc;       // empty unless the clock's offset is known
    Severity severity = Severity::info;
    Text subject;
    std::string text;
};

}  // namespace qvhost::inventory
