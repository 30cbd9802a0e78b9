// Two small reports, and all that is told of them.
#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include "compare/told.h"

namespace qvhost::compare {

namespace {

using findings::Finding;
using findings::HealthWord;
using findings::Severity;
using findings::Subsystem;
using inventory::Drive;
using inventory::Fru;
using inventory::MemoryModule;
using inventory::PowerSupply;
using inventory::Sensor;
using inventory::System;
using inventory::Volume;
using inventory::VolumeMember;

Drive drive(int slot, const char* serial) {
    Drive one;
    one.place = {"c0.txt", slot + 1};
    one.controller = 0;
    one.enclosure = 8;
    one.slot = slot;
    one.serial = serial;
    one.state = "Onln";
    one.model = "MODEL";
    one.firmware = "F1";
    one.media_errors = 3;
    one.temperature_celsius = 30;
    return one;
}

Sensor sensor(const char* name, double reading) {
    Sensor one;
    one.place = {"sensorinfo.txt", 1};
    one.name = name;
    one.kind = "temperature";
    one.reading = reading;
    one.unit = "degrees C";
    one.status = "ok";
    one.uc = 90;
    return one;
}

PowerSupply supply(const char* slot, const char* serial, bool present = true) {
    PowerSupply one;
    one.place = {"psuinfo.txt", 1};
    one.slot = slot;
    one.present = present;
    if (present) one.serial = serial;
    one.input_watts = 120;
    return one;
}

VolumeMember member(int row, const char* device, const char* serial) {
    VolumeMember one;
    one.place = {"host_mdadm_md0.txt", 9 + row};
    one.volume_name = "md0";
    one.is_spare = row < 0;
    if (row >= 0) one.position = row;
    one.state = row < 0 ? "spare" : "active sync";
    if (device) one.device = device;
    if (serial) one.serial = serial;
    return one;
}

// A server of everything, whose captures were read whole.
Side server() {
    Side side;
    side.collection = {"web1", "m1",    "Debian 12", "6.1.0-1",
                       "root", "1.0.0", "",          "2026-11-14T06:00:00Z"};
    auto& inventory = side.inventory;
    System system;
    system.place = {"dmidecode.log", 1};
    system.product = "KP1";
    system.serial = "SYS1";
    system.firmware = "B1";
    inventory.systems = {system};
    MemoryModule module;
    module.place = {"dmidecode.log", 9};
    module.slot = "A1";
    module.serial = "MEM1";
    module.capacity_bytes = 1024;
    inventory.memory_modules = {module};
    inventory.sensors = {sensor("CPU", 40), sensor("Inlet", 20)};
    inventory.power_supplies = {supply("1", "PSA"), supply("2", "PSB")};
    Fru fru;
    fru.place = {"fru.txt", 1};
    fru.device = "DIMM A1";
    fru.serial = "MEM1";
    inventory.frus = {fru};
    Volume volume;
    volume.place = {"c0.txt", 20};
    volume.controller = 0;
    volume.number = 0;
    volume.state = "Optl";
    volume.name = "data";
    inventory.volumes = {volume};
    inventory.drives = {drive(1, "D1"), drive(2, "D2"), drive(3, "D3")};
    for (const auto subsystem : findings::kSubsystems)
        side.verdict.health.push_back({subsystem, HealthWord::ok, {"c0.txt"}, {}});
    return side;
}

void judge(Side& side, const char* rule, Severity severity, const char* kind, int number) {
    Finding finding;
    finding.id = std::string(rule) + ":" + std::to_string(number);
    finding.rule = rule;
    finding.severity = severity;
    finding.entities = {{kind, number}};
    side.verdict.findings.push_back(finding);
}

findings::Health& health(Side& side, Subsystem subsystem) {
    return side.verdict.health[static_cast<std::size_t>(subsystem)];
}

struct Case {
    const char* name;
    std::function<void(Side& from, Side& to)> change;
    Lines told;
};

// clang-format off
const std::vector<Case> kCases = {
    {"nothing changed",
     [](Side&, Side&) {}, {}},
    {"readings move",
     [](Side&, Side& to) {
         to.inventory.sensors[0].reading = 43;
         to.inventory.drives[0].temperature_celsius = 35;
         to.inventory.drives[0].power_on_hours = 7;
         to.inventory.power_supplies[0].input_watts = 180;
         to.collection.finished = "2026-11-21T06:00:00Z";
     },
     {"not then power on hours of 1 drive: Drive 8:1 of controller 0, serial D1"}},
    {"things change places in the lists",
     [](Side&, Side& to) {
         std::swap(to.inventory.drives[0], to.inventory.drives[2]);
         std::swap(to.inventory.sensors[0], to.inventory.sensors[1]);
         std::swap(to.inventory.power_supplies[0], to.inventory.power_supplies[1]);
     }, {}},
    {"a drive is replaced: its counters are those of another one",
     [](Side&, Side& to) {
         auto& drive = to.inventory.drives[1];
         drive.serial = "NEW";
         drive.model = "OTHER";
         drive.media_errors = 0;
     },
     {"Drive 8:2 of controller 0: replaced: serial D2 -> NEW; model MODEL -> OTHER"}},
    {"a failed drive is replaced by one that is being rebuilt",
     [](Side& from, Side& to) {
         from.inventory.drives[1].state = "Offln";
         judge(from, "drive_failed", Severity::critical, "drives", 2);
         to.inventory.drives[1].serial = "NEW";
         to.inventory.drives[1].state = "Rbld";
         judge(to, "drive_rebuild", Severity::warning, "drives", 2);
     },
     {"better Drive 8:2 of controller 0: replaced: serial D2 -> NEW; state Offln -> Rbld",
      "new drive_rebuild:2", "gone drive_failed:2"}},
    {"a drive moves to another slot",
     [](Side&, Side& to) { to.inventory.drives[1].slot = 7; },
     {"Drive 8:7 of controller 0, serial D2: moved: slot 2 -> 7"}},
    {"two drives change places",
     [](Side&, Side& to) {
         to.inventory.drives[0].slot = 2;
         to.inventory.drives[1].slot = 1;
     },
     {"Drive 8:2 of controller 0, serial D1: moved: slot 1 -> 2",
      "Drive 8:1 of controller 0, serial D2: moved: slot 2 -> 1"}},
    {"a drive takes the place of another one that is gone",
     [](Side&, Side& to) {
         to.inventory.drives[2].slot = 2;
         to.inventory.drives.erase(to.inventory.drives.begin() + 1);
     },
     {"Drive 8:2 of controller 0, serial D3: moved: slot 3 -> 2",
      "Drive 8:2 of controller 0, serial D2: removed"}},
    {"a drive is pulled, another one plugged",
     [](Side&, Side& to) { to.inventory.drives[1] = drive(5, "D5"); },
     {"Drive 8:5 of controller 0, serial D5: added", "Drive 8:2 of controller 0, serial D2: removed"}},
    {"a drive fails",
     [](Side&, Side& to) {
         to.inventory.drives[1].state = "Offln";
         to.inventory.drives[1].media_errors = 218;
         judge(to, "drive_failed", Severity::warning, "drives", 2);
     },
     {"worse Drive 8:2 of controller 0, serial D2: failed: state Onln -> Offln; media errors 3 -> 218 (+215)",
      "new drive_failed:2"}},
    {"a drive recovers",
     [](Side& from, Side&) {
         from.inventory.drives[1].state = "Offln";
         judge(from, "drive_failed", Severity::warning, "drives", 2);
     },
     {"better Drive 8:2 of controller 0, serial D2: recovered: state Offln -> Onln", "gone drive_failed:2"}},
    {"a drive is rebuilt after it failed",
     [](Side& from, Side& to) {
         from.inventory.drives[1].state = "Offln";
         judge(from, "drive_failed_no_redundancy", Severity::critical, "drives", 2);
         to.inventory.drives[1].state = "Rbld";
         judge(to, "drive_rebuild", Severity::warning, "drives", 2);
     },
     {"better Drive 8:2 of controller 0, serial D2: better: state Offln -> Rbld",
      "new drive_rebuild:2", "gone drive_failed_no_redundancy:2"}},
    {"a rebuild begins",
     [](Side&, Side& to) {
         to.inventory.drives[1].state = "Rbld";
         judge(to, "drive_rebuild", Severity::warning, "drives", 2);
     },
     {"worse Drive 8:2 of controller 0, serial D2: rebuilding: state Onln -> Rbld", "new drive_rebuild:2"}},
    {"a volume without redundancy goes offline: both are critical",
     [](Side& from, Side& to) {
         from.inventory.volumes[0].state = "Dgrd";
         judge(from, "volume_no_redundancy", Severity::critical, "volumes", 1);
         to.inventory.volumes[0].state = "OfLn";
         judge(to, "volume_offline", Severity::critical, "volumes", 1);
     },
     {"worse Volume 0 of controller 0 \"data\": degraded: state Dgrd -> OfLn",
      "new volume_offline:1", "gone volume_no_redundancy:1"}},
    {"states that nobody judges",
     [](Side&, Side& to) { to.inventory.drives[1].state = "JBOD"; },
     {"Drive 8:2 of controller 0, serial D2: changed: state Onln -> JBOD"}},
    {"what was once logged of a drive says nothing of its state",
     [](Side& from, Side& to) {
         to.inventory.drives[1].state = "JBOD";
         judge(to, "event_drive", Severity::warning, "drives", 2);
         judge(from, "event_drive", Severity::warning, "drives", 2);
     },
     {"Drive 8:2 of controller 0, serial D2: changed: state Onln -> JBOD"}},
    {"counters grow and are reset",
     [](Side&, Side& to) {
         to.inventory.drives[0].media_errors = 218;
         to.inventory.drives[1].media_errors = 0;
     },
     {"worse Drive 8:1 of controller 0, serial D1: changed: media errors 3 -> 218 (+215)",
      "Drive 8:2 of controller 0, serial D2: changed: media errors 3 -> 0 (-3)"}},
    {"sizes are told as people read them, and in bytes where that is the same",
     [](Side& from, Side& to) {
         from.inventory.drives[0].capacity_bytes = 1'000'204'886'016;
         to.inventory.drives[0].capacity_bytes = 2'000'398'934'016;
         from.inventory.drives[1].capacity_bytes = 1'000'204'886'016;
         to.inventory.drives[1].capacity_bytes = 1'000'204'886'017;
     },
     {"Drive 8:1 of controller 0, serial D1: changed: capacity 931.5 GiB -> 1.8 TiB",
      "Drive 8:2 of controller 0, serial D2: changed: capacity 1000204886016 -> 1000204886017 bytes"}},
    {"firmware",
     [](Side&, Side& to) {
         to.inventory.drives[0].firmware = "F2";
         to.inventory.systems[0].firmware = "B2";
         to.collection.kernel = "6.1.0-2";
     },
     {"This machine: changed: kernel 6.1.0-1 -> 6.1.0-2", "System KP1: changed: firmware B1 -> B2",
      "Drive 8:1 of controller 0, serial D1: changed: firmware F1 -> F2"}},
    {"sensors cross a threshold and come back",
     [](Side& from, Side& to) {
         from.inventory.sensors[1].status = "nc";
         judge(from, "temperature_warning", Severity::warning, "sensors", 2);
         to.inventory.sensors[0].status = "cr";
         to.inventory.sensors[0].reading = 95;
         judge(to, "temperature_critical", Severity::critical, "sensors", 1);
     },
     {"worse Sensor CPU: crossed a threshold: status ok -> cr; reading 40 -> 95 degrees C",
      "better Sensor Inlet: recovered: status nc -> ok", "new temperature_critical:1", "gone temperature_warning:2"}},
    {"a threshold is set; one that is not known says nothing",
     [](Side&, Side& to) {
         to.inventory.sensors[0].uc = 80;
         to.inventory.sensors[1].uc.reset();
     },
     {"Sensor CPU: changed: uc 90 -> 80 degrees C"}},
    {"sensors of one name are paired in their order",
     [](Side& from, Side& to) {
         for (auto* side : {&from, &to}) side->inventory.sensors = {sensor("Fan", 1), sensor("Fan", 2)};
         to.inventory.sensors[1].status = "nr";
     },
     {"Sensor Fan: changed: status ok -> nr"}},
    {"a supply is taken out of its bay",
     [](Side&, Side& to) { to.inventory.power_supplies[1] = supply("2", "", false); },
     {"Power supply 2, serial PSB: removed"}},
    {"a supply is replaced",
     [](Side&, Side& to) { to.inventory.power_supplies[1].serial = "PSC"; },
     {"Power supply 2: replaced: serial PSB -> PSC"}},
    {"a memory module is replaced; its FRU says so again",
     [](Side&, Side& to) {
         to.inventory.memory_modules[0].serial = "MEM2";
         to.inventory.frus[0].serial = "MEM2";
     },
     {"Memory module A1: replaced: serial MEM1 -> MEM2"}},
    {"a FRU that is nothing else is replaced",
     [](Side& from, Side& to) {
         from.inventory.frus[0].serial = "F1";
         to.inventory.frus[0].serial = "F2";
     },
     {"FRU DIMM A1: replaced: serial F1 -> F2"}},
    {"a volume is degraded, renamed, worked on",
     [](Side&, Side& to) {
         auto& volume = to.inventory.volumes[0];
         volume.state = "Dgrd";
         volume.name = "old";
         volume.operation = "Rebuild";
         volume.progress_percent = 3;
         judge(to, "volume_degraded", Severity::warning, "volumes", 1);
     },
     {"worse Volume 0 of controller 0 \"old\": degraded: state Optl -> Dgrd; name data -> old; operation none -> Rebuild",
      "new volume_degraded:1"}},
    {"a tool is missing: nothing was removed",
     [](Side&, Side& to) {
         to.inventory.drives.clear();
         to.inventory.volumes.clear();
         for (auto& one : to.verdict.health) one.judged_by.clear();
         health(to, Subsystem::storage) = {Subsystem::storage, HealthWord::unknown, {}, {"storcli is not installed"}};
     },
     {"health storage ok -> unknown", "lacking now storage: storcli is not installed",
      "not now 1 volume: Volume 0 of controller 0 \"data\"",
      "not now 3 drives: Drive 8:1 of controller 0, serial D1, Drive 8:2 of controller 0, serial D2, Drive 8:3 of controller 0, serial D3"}},
    {"a capture is cut off: what is missing was not removed",
     [](Side&, Side& to) {
         to.inventory.drives.resize(1);
         health(to, Subsystem::storage) = {Subsystem::storage, HealthWord::unknown, {}, {"c0.txt: storcli: killed by signal 9"}};
     },
     {"health storage ok -> unknown", "lacking now storage: c0.txt: storcli: killed by signal 9",
      "not now 2 drives: Drive 8:2 of controller 0, serial D2, Drive 8:3 of controller 0, serial D3"}},
    {"it was cut off before, and is read now",
     [](Side& from, Side&) {
         from.inventory.drives.resize(1);
         health(from, Subsystem::storage) = {Subsystem::storage, HealthWord::unknown, {}, {"c0.txt: storcli: killed by signal 9"}};
     },
     {"health storage unknown -> ok", "lacking then storage: c0.txt: storcli: killed by signal 9",
      "not then 2 drives: Drive 8:2 of controller 0, serial D2, Drive 8:3 of controller 0, serial D3"}},
    {"something else is missing: a drive was removed",
     [](Side& from, Side& to) {
         for (auto* side : {&from, &to})
             health(*side, Subsystem::storage) = {Subsystem::storage, HealthWord::unknown, {}, {"smartctl is not installed"}};
         to.inventory.drives.pop_back();
     },
     {"Drive 8:3 of controller 0, serial D3: removed", "lacking both storage: smartctl is not installed"}},
    {"no machine is without memory",
     [](Side&, Side& to) {
         to.inventory.memory_modules.clear();
         to.inventory.systems.clear();
         to.collection.machine_id = "m1";
     },
     {"not now 1 system: System KP1", "not now 1 memory module: Memory module A1, serial MEM1"}},
    {"a field is not told any more",
     [](Side&, Side& to) {
         for (auto& drive : to.inventory.drives) drive.media_errors.reset();
         to.inventory.drives[0].drive_group = 1;
     },
     {"Drive 8:1 of controller 0, serial D1: changed: drive group none -> 1",
      "not now media errors of 3 drives: Drive 8:1 of controller 0, serial D1, Drive 8:2 of controller 0, serial D2, Drive 8:3 of controller 0, serial D3"}},
    {"a spare takes a drive's place in an array, and that drive is gone",
     [](Side& from, Side& to) {
         from.inventory.volume_members = {member(0, "/dev/sda", "A"), member(1, "/dev/sdb", "B"), member(-1, "/dev/sdc", "C")};
         to.inventory.volume_members = {member(0, "/dev/sdb", "A"), member(1, "/dev/sdc", "C")};
     },
     {"Drive /dev/sdc at row 1, volume \"md0\": changed: position none -> 1; is spare yes -> no",
      "Drive /dev/sdb at row 1, volume \"md0\": removed"}},
    {"a drive of a volume is replaced in its slot: that is told of the drive",
     [](Side& from, Side& to) {
         for (auto* side : {&from, &to}) {
             VolumeMember one;
             one.place = {"c0.txt", 30};
             one.controller = one.volume = 0;
             one.enclosure = 8;
             one.slot = 1;
             one.serial = side == &from ? "D1" : "NEW";
             one.volume_name = side == &from ? "data" : "named anew";
             side->inventory.volume_members = {one};
         }
     }, {}},
    {"a drive of a volume is missing",
     [](Side& from, Side& to) {
         for (auto* side : {&from, &to}) {
             VolumeMember one;
             one.place = {"c0.txt", 30};
             one.controller = one.volume = one.drive_group = one.position = 0;
             if (side == &from) one.slot = 1;
             one.state = side == &from ? "Onln" : "Msng";
             side->inventory.volume_members = {one};
         }
     },
     {"Drive at row 0 in volume 0 of controller 0: changed: slot 1 -> none"}},
    {"an earlier program did not read which drives make a volume",
     [](Side&, Side& to) { to.inventory.volume_members = {member(0, "/dev/sda", "A")}; },
     {"not then 1 volume member: Drive /dev/sda at row 0, volume \"md0\""}},
    {"findings become worse",
     [](Side& from, Side& to) {
         judge(from, "x", Severity::warning, "", 0);
         judge(to, "x", Severity::critical, "", 0);
     },
     {"x:0 warning -> critical"}},
    {"another machine",
     [](Side&, Side& to) {
         to.collection.machine_id = "m2";
         to.inventory.systems[0].serial = "SYS2";
     },
     {"two machines", "This machine: changed: machine id m1 -> m2", "System KP1: replaced: serial SYS1 -> SYS2"}},
    {"a system was installed anew: it is the same machine",
     [](Side&, Side& to) { to.collection.machine_id = "m2"; },
     {"This machine: changed: machine id m1 -> m2"}},
    {"a board was replaced: it is the same machine",
     [](Side&, Side& to) { to.inventory.systems[0].serial = "SYS2"; },
     {"System KP1: replaced: serial SYS1 -> SYS2"}},
    {"two names alone",
     [](Side& from, Side& to) {
         for (auto* side : {&from, &to}) {
             side->inventory.systems[0].serial.reset();
             side->collection.machine_id.clear();
         }
         to.collection.host = "web2";
     },
     {"two machines", "This machine: changed: host web1 -> web2"}},
    {"the old report is the later one",
     [](Side&, Side& to) { to.collection.finished = "2026-11-07T06:00:00Z"; },
     {"backwards"}},
};
// clang-format on

TEST(Compare, TellsWhatAPersonWould) {
    for (const auto& one : kCases) {
        auto from = server(), to = server();
        one.change(from, to);
        EXPECT_EQ(told(compare(from, to)), one.told) << one.name;
    }
}

TEST(Compare, IsEmptyExactlyWhereNothingIsTold) {
    for (const auto& one : kCases) {
        auto from = server(), to = server();
        one.change(from, to);
        const bool says_nothing = one.told.empty() || one.told == Lines{"backwards"};
        EXPECT_EQ(compare(from, to).is_empty(), says_nothing) << one.name;
    }
}

// Forged reports may hold any numbers and any number of things.
TEST(Compare, StandsWhatForgedReportsSay) {
    auto from = server(), to = server();
    from.inventory.drives[0].media_errors = std::numeric_limits<std::int64_t>::min();
    to.inventory.drives[0].media_errors = std::numeric_limits<std::int64_t>::max();
    judge(to, "drive_failed", Severity::critical, "drives", -5);
    judge(to, "drive_failed", Severity::critical, "drives", 2000000000);
    judge(to, "drive_failed", Severity::critical, "nothing", 1);
    EXPECT_EQ(told(compare(from, to)),
              (Lines{"Drive 8:1 of controller 0, serial D1: changed: media errors "
                     "-9223372036854775808 -> 9223372036854775807",
                     "new drive_failed:-5", "new drive_failed:2000000000", "new drive_failed:1"}));
    for (int i = 0; i < 5000; ++i) {
        from.inventory.drives.push_back(drive(i % 7, "SAME"));
        to.inventory.drives.push_back(drive(i % 5, "SAME"));
    }
    EXPECT_FALSE(compare(from, to).is_empty());
}

}  // namespace

}  // namespace qvhost::compare
