#include "inventory/storage/storcli_tables.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>

#include "inventory/text.h"
#include "text/case.h"

namespace qvhost::inventory::storcli {

namespace {

using enum Shape;
constexpr auto kRight = Align::right;

// Empty for "-"; false if the cell is no number.
bool read_number(std::string_view cell, Integer& number) {
    if (cell.empty() || cell == "-") return true;
    number = integer(cell);
    return number.has_value();
}

// storcli2 has a state in two columns. "Conf" says no more than that the other one tells; good words there add
// nothing.
std::string state_of(std::string_view state, std::string_view status) {
    if (status.empty() || status == "-") return std::string(state);
    if (state == "Conf") return std::string(status);
    if (status == "Online" || status == "Good") return std::string(state);
    return std::string(state) + " " + std::string(status);
}

// DG Arr Row EID:Slot DID Type  State BT       Size PDC  PI SED DS3  FSpace TR
// -----------------------------------------------------------------------------
//  0 -   -   -        -   RAID5 Dgrd  N    1.633 TB dflt N  N   dflt N      N
//  0 0   -   -        -   RAID5 Dgrd  N    1.633 TB dflt N  N   dflt N      N
//  0 0   0   252:0    8   DRIVE Onln  N  558.375 GB dflt N  N   dflt -      N
//  0 0   1   -        -   DRIVE Msng  -  558.375 GB -    -  -   -    N      N
//  0 0   2    :26     26  DRIVE Onln  N  476.437 GB dflt N  N   dflt -      N
//  - -   -   10:7     18  DRIVE GHS   -  278.875 GB -    -  -   -    N      N
constexpr auto kTopology = std::to_array<Column>({
    {"DG",       code,   kRight,      true },
    {"Arr",      number, Align::left, false},
    {"Span",     number, Align::left, false},
    {"Row",      number, Align::left, false},
    {"EID:Slot", code,   Align::left, true },
    {"DID",      number, Align::left, false},
    {"PID",      number, Align::left, false},
    {"Type",     word,   Align::left, true },
    {"State",    word,   Align::left, true },
    {"Status",   word,   Align::left, false},
    {"BT",       word,   Align::left, false},
    {"Size",     size,   kRight,      false},
    {"PDC",      code,   Align::left, false},
    {"PI",       code,   Align::left, false},
    {"SED",      code,   Align::left, false},
    {"DS3",      code,   Align::left, false},
    {"FSpace",   code,   Align::left, false},
    {"TR",       code,   Align::left, false},
});

bool read_topology(const Row& row, const Where& where, std::int64_t line, Reading& reading) {
    auto member = reading.entity_at<VolumeMember>(line);
    member.controller = where.controller;
    member.state = told(row["State"]);
    member.is_spare = row["State"] == "GHS" || row["State"] == "DHS";
    const auto device = row.has("DID") ? row["DID"] : row["PID"];
    // A foreign group has no number yet: "F".
    if (row["DG"] != "F" && !read_number(row["DG"], member.drive_group)) return false;
    if (!read_number(row.has("Arr") ? row["Arr"] : row["Span"], member.span) ||
        !read_number(row["Row"], member.position) || !read_number(device, member.device_id) ||
        !read_place(row["EID:Slot"], member.enclosure, member.slot))
        return false;
    if (same_word(row["Type"], "DRIVE")) {
        member.state = told(state_of(row["State"], row["Status"]));
        reading.found.volume_members.push_back(std::move(member));
        return true;
    }
    auto group = reading.entity_at<TopologyRow>(line);
    group.controller = member.controller;
    group.drive_group = member.drive_group;
    group.array = member.span;
    group.type = told(row["Type"]);
    group.state = member.state;
    reading.found.topology.push_back(std::move(group));
    return true;
}

// DG/VD TYPE  State Access Consist Cache Cac sCC       Size Name
// ---------------------------------------------------------------
// 3/0   RAID0 Optl  RW     Yes     NRWTD -   OFF 371.597 GB VD 02
// 0/1   RAID5 Optl  RW     No      RaWTD -   -   246.125 GB
constexpr auto kVolumes = std::to_array<Column>({
    {"DG/VD",        code, Align::left, true },
    {"TYPE",         word, Align::left, true },
    {"State",        word, Align::left, true },
    {"Access",       word, Align::left, false},
    {"Consist",      word, Align::left, false},
    {"Cache",        word, Align::left, false},
    {"CurrentCache", word, Align::left, false},
    {"DefaultCache", word, Align::left, false},
    {"Cac",          code, Align::left, false},
    {"sCC",          code, Align::left, false},
    {"Size",         size, kRight,      false},
    {"Name",         text, Align::left, false},
});

bool read_volume(const Row& row, const Where& where, std::int64_t line, Reading& reading) {
    auto volume = reading.entity_at<Volume>(line);
    volume.controller = where.controller;
    const auto numbers = fields_between(row["DG/VD"], '/');
    if (numbers.size() != 2 || !read_number(numbers[1], volume.number) || !volume.number)
        return false;
    // A cache device's volume is in no group: "-/5".
    if (numbers[0] != "F" && !read_number(numbers[0], volume.drive_group)) return false;
    volume.raid = told(row["TYPE"]);
    volume.state = told(row["State"]);
    if (!volume.state) return false;
    volume.access = told(row["Access"]);
    if (row["Consist"] == "Yes" || row["Consist"] == "No")
        volume.consistent = row["Consist"] == "Yes";
    volume.cache = told(row.has("Cache") ? row["Cache"] : row["CurrentCache"]);
    volume.capacity_bytes = binary_bytes(row["Size"]);
    // A name is what people gave; "None" is one as well.
    if (const auto name = row["Name"]; !name.empty()) volume.name = std::string(name);
    reading.found.volumes.push_back(std::move(volume));
    return true;
}

// EID:Slt DID State DG       Size Intf Med SED PI SeSz Model            Sp Type
// ------------------------------------------------------------------------------
// 134:2     0 Onln   3 371.597 GB SAS  SSD N   N  512B PX05SVB040       U  -
//  :26     26 UGood  F   2.181 TB SATA HDD N   N  4 KB Samsung SSD 850  U  -
//
// storcli2 has a state in two columns:
// EID:Slt PID State Status DG     Size Intf Med SED_Type SeSz Model        Sp LU/NS Count Alt-EID
// -----------------------------------------------------------------------------------------------
// 306:1   320 Conf  Online  0 3.637 TB SAS  HDD -        512B ST4000NM0023 U            1 -
constexpr auto kDrives = std::to_array<Column>({
    {"EID:Slt",     code,   Align::left, true },
    {"DID",         number, kRight,      false},
    {"PID",         number, kRight,      false},
    {"State",       word,   Align::left, true },
    {"Status",      word,   Align::left, false},
    {"DG",          code,   kRight,      false},
    {"Size",        size,   kRight,      false},
    {"Intf",        word,   Align::left, false},
    {"Med",         word,   Align::left, false},
    {"SED",         code,   Align::left, false},
    {"SED_Type",    code,   Align::left, false},
    {"PI",          code,   Align::left, false},
    {"SeSz",        size,   Align::left, false},
    {"Model",       text,   Align::left, false},
    {"Sp",          word,   Align::left, false},
    {"LU/NS Count", number, kRight,      false},
    {"Alt-EID",     code,   Align::left, false},
    {"Type",        word,   Align::left, false},
});

bool read_drive(const Row& row, const Where& where, std::int64_t line, Reading& reading) {
    auto drive = reading.entity_at<Drive>(line);
    drive.controller = where.controller;
    if (!read_place(row["EID:Slt"], drive.enclosure, drive.slot)) return false;
    if (!read_number(row.has("DID") ? row["DID"] : row["PID"], drive.device_id)) return false;
    if (!drive.slot && !drive.device_id) return false;
    if (row["State"] == "-") return false;
    drive.state = state_of(row["State"], row["Status"]);
    const auto group = row["DG"];
    if (group != "F" && !read_number(group, drive.drive_group)) return false;
    if (!group.empty()) drive.is_foreign = group == "F";
    if (row["State"] == "GHS") drive.spare = "global";
    if (row["State"] == "DHS") drive.spare = "dedicated";
    drive.capacity_bytes = binary_bytes(row["Size"]);
    drive.interface = told(row["Intf"]);
    drive.media = told(row["Med"]);
    drive.sector_bytes = binary_bytes(row["SeSz"]);
    drive.model = told(row["Model"]);
    reading.found.drives.push_back(std::move(drive));
    return true;
}

// ID EID:Slt DID State Intf Med     Size SeSz Model        Vendor  Port
// ------------------------------------------------------------------------
//  0 252:0     4 Onln  SAS  HDD 7.276 TB 512B ST8000NM0075 SEAGATE 0 - 3 x1
constexpr auto kJbods = std::to_array<Column>({
    {"ID",      number, kRight,      true },
    {"EID:Slt", code,   Align::left, true },
    {"DID",     number, kRight,      false},
    {"State",   word,   Align::left, true },
    {"Intf",    word,   Align::left, false},
    {"Med",     word,   Align::left, false},
    {"Size",    size,   kRight,      false},
    {"SeSz",    size,   Align::left, false},
    {"Model",   text,   Align::left, false},
    {"Vendor",  text,   Align::left, true },
    {"Port",    text,   Align::left, false},
});

// EID State Slots PD PS Fans TSs Alms SIM Port#    ProdID   VendorSpecific
// -------------------------------------------------------------------------
//  10 OK       12 12  2    4   3    0   0 Port 0-3 EX12BAY6 x48-0.10.10.0
constexpr auto kEnclosures = std::to_array<Column>({
    {"EID",            number, kRight,      true },
    {"State",          word,   Align::left, true },
    {"DeviceType",     text,   Align::left, false},
    {"Slots",          number, kRight,      true },
    {"PD",             number, kRight,      false},
    {"PS",             number, kRight,      false},
    {"Fans",           number, kRight,      false},
    {"TSs",            number, kRight,      false},
    {"Alms",           number, kRight,      false},
    {"SIM",            number, kRight,      false},
    {"Port#",          text,   Align::left, false},
    {"ProdID",         text,   Align::left, false},
    {"VendorSpecific", text,   Align::left, false},
});

bool read_enclosure(const Row& row, const Where& where, std::int64_t line, Reading& reading) {
    auto enclosure = reading.entity_at<Enclosure>(line);
    enclosure.controller = where.controller;
    if (!read_number(row["EID"], enclosure.number) || !read_number(row["Slots"], enclosure.slots))
        return false;
    enclosure.state = told(row["State"]);
    enclosure.model = told(row["ProdID"]);
    reading.found.enclosures.push_back(std::move(enclosure));
    return true;
}

// Model   State   RetentionTime Temp Mode MfgDate    Next Learn
// ------------------------------------------------------------------------
// iBBU-09 Optimal 48 hours +    37C  5    2012/12/20 2015/06/10  21:01:26
//
// Model  State                   Temp Mode MfgDate
// ----------------------------------------------------
// CVPM05 Dgd (Needs Attention)   34C  -    2018/10/16
constexpr auto kBatteries = std::to_array<Column>({
    {"Model",         code, Align::left, true },
    {"State",         text, Align::left, true },
    {"RetentionTime", text, Align::left, false},
    {"Temp",          code, Align::left, true },
    {"Mode",          text, Align::left, false},
    {"MfgDate",       code, Align::left, false},
    {"Next Learn",    text, Align::left, false},
});

bool read_battery(const Row& row, const Where& where, std::int64_t line, Reading& reading) {
    auto battery = reading.entity_at<Battery>(line);
    battery.controller = where.controller;
    battery.model = told(row["Model"]);
    battery.state = told(row["State"]);
    battery.temperature_celsius = leading_real(row["Temp"]);
    if (!battery.state) return false;
    reading.found.batteries.push_back(std::move(battery));
    return true;
}

// storcli2, below "Energy Pack Info":
// Type     SubType Voltage(mV) Temperature(C) Status
// ----------------------------------------------------
// Supercap FBU345         9384             24 Optimal
constexpr auto kEnergyPacks = std::to_array<Column>({
    {"Type",           word,   Align::left, true },
    {"SubType",        code,   Align::left, false},
    {"Voltage(mV)",    number, kRight,      false},
    {"Temperature(C)", number, kRight,      true },
    {"Status",         text,   Align::left, true },
});

bool read_energy_pack(const Row& row, const Where& where, std::int64_t line, Reading& reading) {
    auto battery = reading.entity_at<Battery>(line);
    battery.controller = where.controller;
    battery.model = told(row["SubType"]);
    if (!battery.model) battery.model = told(row["Type"]);
    battery.state = told(row["Status"]);
    battery.temperature_celsius = leading_real(row["Temperature(C)"]);
    if (!battery.state) return false;
    reading.found.batteries.push_back(std::move(battery));
    return true;
}

// storcli show:
// Ctl Model        Ports PDs DGs DNOpt VDs VNOpt BBU sPR DS  EHS ASOs Hlth
// -------------------------------------------------------------------------
//   0 AVAGO 9361-8i    8  12   2     1   3     1 Opt On  1&2 Y       4 NdAtn
constexpr auto kControllers = std::to_array<Column>({
    {"Ctl",   number, kRight,      true },
    {"Model", text,   Align::left, true },
    {"Ports", number, kRight,      true },
    {"PDs",   number, kRight,      false},
    {"DGs",   number, kRight,      false},
    {"DNOpt", number, kRight,      false},
    {"VDs",   number, kRight,      false},
    {"VNOpt", number, kRight,      false},
    {"BBU",   word,   Align::left, false},
    {"sPR",   code,   Align::left, false},
    {"DS",    code,   Align::left, false},
    {"EHS",   code,   Align::left, false},
    {"ASOs",  number, kRight,      false},
    {"Hlth",  word,   Align::left, true },
});

// Ctl Model        AdapterType VendId DevId SubVendId SubDevId PCI Address
// -------------------------------------------------------------------------
//   0 HBA 9500-16e SAS3816(A0) 0x1000  0xE6    0x1000   0x4070 00:01:00:00
constexpr auto kHostAdapters = std::to_array<Column>({
    {"Ctl",         number, kRight,      true },
    {"Model",       text,   Align::left, true },
    {"AdapterType", code,   kRight,      true },
    {"VendId",      code,   kRight,      false},
    {"DevId",       code,   kRight,      false},
    {"SubVendId",   code,   kRight,      false},
    {"SubDevId",    code,   kRight,      false},
    {"PCI Address", code,   Align::left, false},
});

bool read_controller(const Row& row, const Where&, std::int64_t line, Reading& reading) {
    auto controller = reading.entity_at<Controller>(line);
    if (!read_number(row["Ctl"], controller.number) || !controller.number) return false;
    controller.model = told(row["Model"]);
    controller.status = told(row["Hlth"]);
    if (!read_number(row["VDs"], controller.volumes) || !read_number(row["PDs"], controller.drives))
        return false;
    reading.found.controllers.push_back(std::move(controller));
    return true;
}

// storcli /c0/eall/sall show rebuild, show copyback:
// Drive-ID    Progress% Status          Estimated Time Left
// ----------------------------------------------------------
// /c0/e252/s6 -         Not in progress -
// /c0/e252/s7 9         In progress     49 Minutes
constexpr auto kDriveProgress = std::to_array<Column>({
    {"Drive-ID",            code, Align::left, true },
    {"Progress%",           code, Align::left, true },
    {"Status",              text, Align::left, true },
    {"Estimated Time Left", text, Align::left, false},
});

bool read_drive_progress(const Row& row, const Where&, std::int64_t line, Reading& reading) {
    const auto path = path_in(row["Drive-ID"]);
    if (!path || !path->slot) return false;
    const auto percent = real(row["Progress%"]);
    if (!percent) return row["Progress%"] == "-";
    auto drive = reading.entity_at<Drive>(line);
    drive.controller = path->controller;
    drive.enclosure = path->enclosure;
    drive.slot = path->slot;
    drive.rebuild_percent = percent;
    drive.elsewhere.push_back({"rebuild_percent", drive.place});
    reading.found.drives.push_back(std::move(drive));
    return true;
}

// storcli /c0/vall show all of what runs on volumes (cc, init, bgi, migrate):
// VD Operation Progress% Status          Estimated Time Left
// -----------------------------------------------------------
//  0 CC        -         Not in progress -
//  1 BGI       34        In progress     2 Hours 3 Minutes
constexpr auto kVolumeProgress = std::to_array<Column>({
    {"VD",                  number, kRight,      true },
    {"Operation",           code,   Align::left, true },
    {"Progress%",           code,   Align::left, true },
    {"Status",              text,   Align::left, true },
    {"Estimated Time Left", text,   Align::left, false},
});

bool read_volume_progress(const Row& row, const Where& where, std::int64_t line, Reading& reading) {
    const auto percent = real(row["Progress%"]);
    if (!percent) return row["Progress%"] == "-";
    auto volume = reading.entity_at<Volume>(line);
    volume.controller = where.controller;
    if (!read_number(row["VD"], volume.number) || !volume.number) return false;
    volume.operation = told(row["Operation"]);
    volume.progress_percent = percent;
    reading.found.volumes.push_back(std::move(volume));
    return true;
}

// storcli /c0/bbu show all, /c0/cv show all: below BBU_Info, Cachevault_Info and others
// Property      Value
// ----------------------
// Type          CVPM02
// Temperature   28 C
// Battery State Optimal
constexpr auto kProperties = std::to_array<Column>({
    {"Property", text, Align::left, true},
    {"Value",    text, Align::left, true},
});

// Further properties that say "Yes" of one that is not well, whatever its state is.
constexpr auto kBatteryTroubles = std::to_array<std::string_view>({
    "Replacement required",
    "Battery Replacement required",
    "Battery Pack Missing",
    "Pack is about to fail",
});

bool is_battery_trouble(std::string_view property) {
    return std::any_of(kBatteryTroubles.begin(), kBatteryTroubles.end(),
                       [&](std::string_view one) { return property.starts_with(one); });
}

bool read_property(const Row& row, const Where& where, std::int64_t line, Reading& reading) {
    const auto property = row["Property"];
    const auto value = row["Value"];
    const auto& section = where.section;
    auto& batteries = reading.found.batteries;
    if (section == "BBU_Info" || section == "Cachevault_Info") {
        if (property == "Type") {
            auto battery = reading.entity_at<Battery>(line);
            battery.controller = where.controller;
            battery.model = told(value);
            batteries.push_back(std::move(battery));
        }
    } else if (!section.starts_with("BBU_") && section != "Firmware_Status" &&
               section != "GasGaugeStatus") {
        return true;
    }
    if (batteries.empty() || batteries.back().place.capture != reading.capture) return true;
    Battery& battery = batteries.back();
    if (property == "Temperature" && !battery.temperature_celsius) {
        battery.temperature_celsius = leading_real(value);
    } else if (property == "State" || property == "Battery State") {
        battery.state = told(value);
        battery.place = reading.at(line);
    } else if (property == "Relative State of Charge") {
        if (const auto percent = leading_real(value))
            battery.charge_percent = std::llround(*percent);
    } else if (value == "Yes" && is_battery_trouble(property)) {
        battery.state = (battery.state ? *battery.state + ", " : "") + std::string(property);
        battery.elsewhere.push_back({std::string(property), reading.at(line)});
    }
    return true;
}

// Below "Detailed Status", what failed and why:
// Ctrl Status Property ErrMsg                ErrCd
// -------------------------------------------------
//    0 Failed -        Cachevault is absent!    34
constexpr auto kStatuses = std::to_array<Column>({
    {"Status", text, Align::left, true},
    {"ErrMsg", text, Align::left, true},
    {"ErrCd",  code, kRight,      true},
});

bool read_status(const Row& row, const Where&, std::int64_t line, Reading& reading) {
    if (row["Status"].find("Fail") != std::string_view::npos)
        reading.how.errors.push_back({line, std::string(row["ErrMsg"])});
    return true;
}

constexpr auto kTables = std::to_array<Table>({
    {kTopology,       Counted::topology,    read_topology       },
    {kVolumes,        Counted::volumes,     read_volume         },
    {kJbods,          Counted::jbods,       read_drive          },
    {kDrives,         Counted::drives,      read_drive          },
    {kEnclosures,     Counted::enclosures,  read_enclosure      },
    {kBatteries,      Counted::batteries,   read_battery        },
    {kEnergyPacks,    Counted::batteries,   read_energy_pack    },
    {kControllers,    Counted::controllers, read_controller     },
    {kHostAdapters,   Counted::controllers, read_controller     },
    {kDriveProgress,  Counted::no,          read_drive_progress },
    {kVolumeProgress, Counted::no,          read_volume_progress},
    {kProperties,     Counted::batteries,   read_property       },
    {kStatuses,       Counted::no,          read_status         },
});

}  // namespace

std::span<const Table> tables() { return kTables; }

bool read_place(std::string_view cell, Integer& enclosure, Integer& slot) {
    if (cell.empty() || cell == "-") return true;
    const auto numbers = fields_between(cell, ':');
    if (numbers.size() != 2) return false;
    if (!numbers[0].empty() && numbers[0] != "-") {
        enclosure = integer(numbers[0]);
        if (!enclosure) return false;
    }
    slot = integer(numbers[1]);
    return slot.has_value();
}

std::optional<Path> path_in(std::string_view text) {
    const auto at = text.find("/c");
    if (at == std::string_view::npos) return std::nullopt;
    text.remove_prefix(at);
    Path path;
    while (text.size() > 2 && text[0] == '/' && text[2] >= '0' && text[2] <= '9') {
        Integer* const part = text[1] == 'c'   ? &path.controller
                              : text[1] == 'e' ? &path.enclosure
                              : text[1] == 's' ? &path.slot
                              : text[1] == 'v' ? &path.volume
                                               : nullptr;
        const auto end = std::min(text.find_first_not_of("0123456789", 2), text.size());
        if (!part || *part) return std::nullopt;
        *part = integer(text.substr(2, end - 2));
        if (!*part) return std::nullopt;
        text.remove_prefix(end);
    }
    if (!path.controller) return std::nullopt;
    path.rest = text;
    return path;
}

}  // namespace qvhost::inventory::storcli
