#include <array>
#include <span>
#include <string_view>

#include "file/fields.h"
#include "file/record.h"
#include "read/lines.h"
#include "read/text.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/command.h"
#include "rsamplemodule2/unit.h"
#include "run/command.h"
#include "runner/process.h"

namespace marlox::repository {

namespace {

using capture::Field;
using sample2::unit;

// storcli /c0 show lists the topology, the virtual drives and the physical drives. Values are
// found by position alone: if a version of storcli adds a column, all later values shift.

// clang-format off
// DG Arr Row EID:Slot DID Type  State BT       Size PDC  PI SED DS3  FSpace
//  0 -   -   -        -   RAID1 Optl  N  930.390 GB dflt N  N   dflt N
constexpr auto kTopologyFields = std::to_array<Field>({
    {{1},     {"DG",     "Disk Group Index",       "number of the drive group"}},
    {{2},     {"Arr",    "Array Index",            "number of the array in the group"}},
    {{3},     {"Row",    "Row Index",              "number of the row in the array"}},
    {{4},     {"EID",    "EID:Slot",               "enclosure and slot of the drive"}},
    {{5},     {"DID",    "Device ID",              "number of the drive as a device"}},
    {{6},     {"Type",   "Type",                   "RAID level, or DRIVE"}},
    {{7},     {"State",  "State",                  "state: Optl, Dgrd, Onln, Rbld, ..."}},
    {{8},     {"BT",     "Background Task Active", "whether a background task runs: Y or N"}},
    {{9, 10}, {"Size",   "Size",                   "size, with its unit"}},
    {{11},    {"PDC",    "PD Cache",               "whether the drive's own cache is used"}},
    {{12},    {"PI",     "Protection Info",        "whether protection information is used: Y or N"}},
    {{13},    {"SED",    "Self Encrypting Drive",  "whether the drives encrypt themselves: Y or N"}},
    {{14},    {"DS3",    "Dimmer Switch 3",        "power saving of the drives"}},
    {{15},    {"FSpace", "Free Space Present",     "whether space is free: Y or N"}},
});

// DG/VD TYPE  State Access Consist Cache sCC       Size Name
// 0/0   RAID1 Optl  RW     Yes     RWTD  -   930.390 GB system
constexpr auto kVirtualDriveFields = std::to_array<Field>({
    {{1},    {"DG",      "DG/VD",   "numbers of the drive group and of the virtual drive"}},
    {{2},    {"TYPE",    "TYPE",    "RAID level"}},
    {{3},    {"State",   "State",   "state: Optl, Dgrd, Pdgd, OfLn, ..."}},
    {{4},    {"Access",  "Access",  "access: RW, RO, Blocked, ..."}},
    {{5},    {"Consist", "Consist", "whether it is consistent: Yes or No"}},
    {{6},    {"Cache",   "Cache",   "cache policy: read ahead, write back or through, cached or direct"}},
    {{7},    {"sCC",     "sCC",     "whether it is a CacheCade drive"}},
    {{8, 9}, {"Size",    "Size",    "size, with its unit"}},
    {{10},   {"Name",    "Name",    "name"}},
});

// EID:Slt DID State DG       Size Intf Med SED PI SeSz Model            Sp
// 252:0     8 Onln   0 930.390 GB SATA HDD N   N  512B ST1000NM0033-9ZM173 U
constexpr auto kPhysicalDriveFields = std::to_array<Field>({
    {{1},    {"EID",   "EID:Slt",    "enclosure and slot"}},
    {{2},    {"DID",   "Device ID",  "number as a device"}},
    {{3},    {"State", "State",      "state: Onln, Offln, UGood, UBad, Rbld, GHS, ..."}},
    {{4},    {"DG",    "DriveGroup", "number of the drive group"}},
    {{5, 6}, {"Size",  "Size",       "size, with its unit"}},
    {{7},    {"Intf",  "Intf",       "interface: SAS, SATA, NVMe"}},
    {{8},    {"Med",   "Med",        "medium: HDD or SSD"}},
    {{9},    {"SED",   "SED",        "whether it encrypts itself: Y or N"}},
    {{10},   {"PI",    "PI",         "whether protection information is used: Y or N"}},
    {{11},   {"SeSz",  "SeSz",       "size of a sector, with its unit"}},
    {{12},   {"Model", "Model",      "the first word of the model"}},
    {{13},   {"Sp",    "Spun",       "whether it spins: U up, D down; of a model of two words, the second"}},
});
// clang-format on
static_assert(capture::well_formed(kTopologyFields));
static_assert(capture::well_formed(kVirtualDriveFields));
static_assert(capture::well_formed(kPhysicalDriveFields));

constexpr auto kTopologyColumns = capture::columns_of(kTopologyFields);
constexpr auto kVirtualDriveColumns = capture::columns_of(kVirtualDriveFields);
constexpr auto kPhysicalDriveColumns = capture::columns_of(kPhysicalDriveFields);

constexpr capture::Source kSource = {
    .tool = "storcli",
    .command = "'{P}qv_tools/storcli_{x}' /c0 show > '{L}c0_showall.txt'",
    .capture = "c0_showall.txt",
};

}  // namespace

constexpr capture::Table kTopology = {
    .id = "TINFO",
    .title = "Controller 0 TOPOLOGY INFO",
    .row = "A row is a drive group, an array or a drive in the topology of MegaRAID controller 0.",
    .source = kSource,
    .layout = capture::header_row(5),
    .columns = kTopologyColumns,
};
static_assert(capture::well_formed(kTopology));

constexpr capture::Table kVirtualDrives = {
    .id = "VINFO",
    .title = "Controller 0 Virtual Drive List",
    .row = "A row is a virtual drive of MegaRAID controller 0.",
    .source = kSource,
    .layout = capture::header_row(5),
    .columns = kVirtualDriveColumns,
};
static_assert(capture::well_formed(kVirtualDrives));

constexpr capture::Table kPhysicalDrives = {
    .id = "PINFO",
    .title = "Controller 0 Physical Drive List",
    .row = "A row is a physical drive of MegaRAID controller 0.",
    .source = kSource,
    .layout = capture::header_row(5),
    .columns = kPhysicalDriveColumns,
};
static_assert(capture::well_formed(kPhysicalDrives));

namespace {

// A table of the report: the line with the marker, five lines of heading, rows, and a rule of at
// least as many dashes as `closing_rule`. storcli's own rules are longer than all three.
struct Section {
    std::string_view marker;
    std::string_view closing_rule;
    std::span<const Field> fields;
    capture::Record record;
    bool open = false;
};

constexpr int kHeadingLines = 5;

// A line goes to every open table, unless an earlier open table takes it as part of its heading. All
// tables share one count of heading lines: after a table that never closes, the next one skips fewer
// lines.
template <std::size_t n>
void read_sections(capture::Lines& lines, std::array<Section, n>& sections) {
    int counted = 0;
    while (const auto line = lines.next()) {
        for (Section& section : sections) {
            if (capture::contains(*line, section.marker)) section.open = true;
        }
        for (Section& section : sections) {
            if (!section.open) continue;
            if (counted <= kHeadingLines) {
                ++counted;
                break;
            }
            if (capture::contains(*line, section.closing_rule)) {
                section.open = false;
                counted = 0;
            } else {
                capture::read_fields(*line, section.fields, section.record);
            }
        }
    }
}

}  // namespace

void lsi_list(RRepository& repo) {
    const auto command = sample2::tool_command(kSource.command);
    unit.progress("raid raw path:", command);
    runner::run(command);

    auto lines = capture::Lines::open(capture::log_path(kSource.capture));
    if (!lines) {
        unit.detail("Failed to open raid log file");
        return;
    }
    // clang-format off
    std::array<Section, 3> sections = {{
        {"TOPOLOGY :", "--------------------------",   kTopologyFields,      {repo, kTopology}},
        {"VD LIST :",  "---------------------------",  kVirtualDriveFields,  {repo, kVirtualDrives}},
        {"PD LIST :",  "----------------------------", kPhysicalDriveFields, {repo, kPhysicalDrives}},
    }};
    // clang-format on
    read_sections(*lines, sections);
}

}  // namespace marlox::repository
