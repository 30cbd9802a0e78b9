// What can be wrong with a server. Each fault is a row: its name, and what it does to the server.
#include <algorithm>

#include "print.h"
#include "server.h"

namespace truth {

namespace {

// ---- Storage ----------------------------------------------------------------------------------------

Controller* any_controller(Server& server, Random& random) {
    if (server.controllers.empty()) return nullptr;
    return &server.controllers[static_cast<std::size_t>(random.below(asked_controllers(server)))];
}

std::vector<Drive*> members(Controller& controller, int group, int span = -1) {
    std::vector<Drive*> found;
    for (auto& drive : controller.drives) {
        if (drive.group == group && drive.state == "Onln" && (span < 0 || drive.span == span))
            found.push_back(&drive);
    }
    return found;
}

bool is_redundant(const Group& group) { return group.raid != "RAID0"; }

// A whole group, which nothing has happened to yet.
Group* whole_group(Controller& controller, Random& random, bool redundant) {
    std::vector<Group*> fit;
    for (auto& group : controller.groups) {
        if (group.state == "Optl" && is_redundant(group) == redundant) fit.push_back(&group);
    }
    return fit.empty() ? nullptr : random.pick(fit);
}

bool lose_drive(Server& server, Random& random, const char* state, bool leaves_hole) {
    auto* controller = any_controller(server, random);
    if (!controller) return false;
    auto* group = whole_group(*controller, random, true);
    if (!group) return false;
    auto* drive = random.pick(members(*controller, group->number));
    drive->state = state;
    drive->is_missing = leaves_hole;
    settle(*controller);
    return true;
}

bool drive_failed(Server& server, Random& random) {
    return lose_drive(server, random, "Offln", false);
}
bool drive_missing(Server& server, Random& random) {
    return server.storage_tool == StorageTool::storcli && lose_drive(server, random, "Msng", true);
}
bool drive_rebuilding(Server& server, Random& random) {
    return lose_drive(server, random, "Rbld", false);
}

bool two_drives_failed(Server& server, Random& random) {
    auto* controller = any_controller(server, random);
    if (!controller) return false;
    for (auto& group : controller->groups) {
        if (group.state != "Optl" || !group.raid.starts_with("RAID6")) continue;
        auto first = members(*controller, group.number, 0);
        first[0]->state = "Offln";
        first[1]->state = "Offln";
        settle(*controller);
        return true;
    }
    return false;
}

bool volume_offline(Server& server, Random& random) {
    auto* controller = any_controller(server, random);
    if (!controller) return false;
    auto* group = whole_group(*controller, random, random.chance(50));
    if (!group) return false;
    auto drives = members(*controller, group->number, 0);
    const std::size_t lost = group->raid == "RAID0" ? 1 : group->raid.starts_with("RAID6") ? 3 : 2;
    for (std::size_t at = 0; at < lost; ++at) drives[at]->state = "Offln";
    settle(*controller);
    return true;
}

// The volumes still say Optl; the group and its array do not.
bool topology_alone(Server& server, Random& random) {
    if (server.storage_tool != StorageTool::storcli) return false;
    auto* controller = any_controller(server, random);
    if (!controller) return false;
    auto* group = whole_group(*controller, random, true);
    if (!group) return false;
    auto* drive = random.pick(members(*controller, group->number));
    drive->state = "Msng";
    drive->is_missing = true;
    settle(*controller);
    for (auto& volume : controller->volumes) {
        if (volume.group == group->number) volume.state = "Optl";
    }
    server.has_topology_fault = true;
    return true;
}

Drive* loose_drive(Server& server, Random& random) {
    if (server.storage_tool != StorageTool::storcli) return nullptr;
    auto* controller = any_controller(server, random);
    if (!controller) return nullptr;
    for (auto& drive : controller->drives) {
        if (drive.state == "UGood" && !drive.is_foreign) return &drive;
    }
    return nullptr;
}

bool drive_bad(Server& server, Random& random) {
    auto* drive = loose_drive(server, random);
    if (drive) drive->state = "UBad";
    return drive != nullptr;
}
bool drive_foreign(Server& server, Random& random) {
    auto* drive = loose_drive(server, random);
    if (drive) drive->is_foreign = true;
    return drive != nullptr;
}

// Details are asked of the first controller alone, and of its drives in enclosures.
Drive* detailed_drive(Server& server, Random& random) {
    if (server.controllers.empty() || server.storage_tool == StorageTool::sas2ircu) return nullptr;
    auto& controller = server.controllers.front();
    if (controller.mode == Mode::hba) return nullptr;
    std::vector<Drive*> fit;
    for (auto& drive : controller.drives) {
        const bool is_shown = drive.enclosure || controller.enclosures.empty();
        if (is_shown && !drive.is_missing) fit.push_back(&drive);
    }
    return fit.empty() ? nullptr : random.pick(fit);
}

bool media_errors(Server& server, Random& random) {
    auto* drive = detailed_drive(server, random);
    if (drive) drive->media_errors = random.between(1, 300);
    return drive != nullptr;
}
bool other_errors(Server& server, Random& random) {
    auto* drive = detailed_drive(server, random);
    if (!drive || server.storage_tool != StorageTool::storcli) return false;
    drive->other_errors = random.between(1, 300);
    return true;
}
bool shielded(Server& server, Random& random) {
    auto* drive = detailed_drive(server, random);
    if (!drive || server.storage_tool != StorageTool::storcli) return false;
    drive->shield_counter = random.between(1, 30);
    return true;
}
bool predicted_failure(Server& server, Random& random) {
    auto* drive = detailed_drive(server, random);
    if (drive) drive->predicted_failures = random.between(1, 30);
    return drive != nullptr;
}
bool smart_alert(Server& server, Random& random) {
    auto* drive = detailed_drive(server, random);
    if (drive) drive->smart_alert = true;
    return drive != nullptr;
}

bool battery_failed(Server& server, Random& random) {
    auto* controller = any_controller(server, random);
    if (!controller || !controller->battery || server.storage_tool == StorageTool::sas2ircu)
        return false;
    static constexpr const char* kStates[] = {"Failed", "Degraded", "Dgd(Needs Attention)"};
    controller->battery->state = random.pick(kStates);
    return true;
}

bool enclosure_failed(Server& server, Random& random) {
    auto* controller = any_controller(server, random);
    if (!controller || server.storage_tool != StorageTool::storcli) return false;
    // Older versions do not list enclosures, and neither does the form for host bus adapters.
    const bool lists_them =
        (server.form == StorcliForm::v7_06 || server.form == StorcliForm::v7_12) &&
        controller->mode == Mode::raid;
    if (controller->enclosures.empty() || !lists_them) return false;
    controller->enclosures.front().state = random.chance(50) ? "Fault" : "Critical";
    return true;
}

bool controller_clock_wrong(Server& server, Random& random) {
    auto* controller = any_controller(server, random);
    if (!controller || server.storage_tool != StorageTool::storcli || controller->mode == Mode::hba)
        return false;
    controller->clock_off = -random.between(500, 3000) * 86400 - 1234;
    return true;
}

bool controller_event(Server& server, Random& random) {
    auto* controller = any_controller(server, random);
    if (!controller || server.storage_tool != StorageTool::storcli || controller->mode == Mode::hba)
        return false;
    ControllerEvent event;
    event.time = server.now - Seconds{86400} * random.between(1, 5);
    event.code = 0xfb;
    event.level = random.chance(50) ? 2 : 3;
    event.locale = 1;
    event.words = event.level == 2 ? "VD 00/0 is now DEGRADED" : "VD 00/0 is now OFFLINE";
    event.data = {"Target Id: 0"};
    controller->events.push_back(event);
    return true;
}

// ---- Sensors ----------------------------------------------------------------------------------------

Sensor* sensor_of(Server& server, Random& random, const std::string& kind) {
    std::vector<Sensor*> fit;
    for (auto& sensor : server.bmc.sensors) {
        if (sensor.kind == kind && sensor.status == "ok" && sensor.role != "clock battery")
            fit.push_back(&sensor);
    }
    return fit.empty() ? nullptr : random.pick(fit);
}

Sensor* sensor_with(Server& server, const std::string& role) {
    for (auto& sensor : server.bmc.sensors) {
        if (sensor.role == role) return &sensor;
    }
    return nullptr;
}

bool set_status(Sensor* sensor, const char* status) {
    if (!sensor) return false;
    const std::string to = status;
    const auto& bound = sensor->is_high ? (to == "nc"   ? sensor->unc
                                           : to == "cr" ? sensor->uc
                                                        : sensor->unr)
                                        : (to == "nc"   ? sensor->lnc
                                           : to == "cr" ? sensor->lc
                                                        : sensor->lnr);
    if (!bound) return false;
    sensor->reading = sensor->is_high ? *bound + (sensor->kind == "voltage" ? 0.004 : 1)
                                      : *bound - (sensor->kind == "voltage" ? 0.004 : 120);
    sensor->status = status;
    return true;
}

bool temperature_nc(Server& server, Random& random) {
    return set_status(sensor_of(server, random, "temperature"), "nc");
}
bool temperature_cr(Server& server, Random& random) {
    return set_status(sensor_of(server, random, "temperature"), "cr");
}
bool temperature_nr(Server& server, Random& random) {
    return set_status(sensor_of(server, random, "temperature"), "nr");
}
bool fan_cr(Server& server, Random& random) {
    return set_status(sensor_of(server, random, "fan"), "cr");
}
bool fan_nc(Server& server, Random& random) {
    return set_status(sensor_of(server, random, "fan"), "nc");
}
bool voltage_nc(Server& server, Random& random) {
    return set_status(sensor_of(server, random, "voltage"), "nc");
}
bool voltage_cr(Server& server, Random& random) {
    auto* sensor = sensor_of(server, random, "voltage");
    if (sensor) sensor->is_high = random.chance(50);
    return set_status(sensor, "cr");
}
bool clock_battery(Server& server, Random& random) {
    auto* sensor = sensor_with(server, "clock battery");
    if (!sensor || sensor->status != "ok") return false;
    sensor->is_high = false;
    return set_status(sensor, random.chance(50) ? "cr" : "nc");
}

void forget_thresholds(Sensor& sensor) {
    for (auto* bound : {&sensor.lnr, &sensor.lc, &sensor.lnc, &sensor.unc, &sensor.uc, &sensor.unr})
        *bound = 0.0;
}

// Some BMCs print 0.000 for each threshold that is not set. No fault: the status is what counts.
bool zero_thresholds(Server& server, Random& random) {
    if (server.bmc.sensors.empty()) return false;
    for (auto& sensor : server.bmc.sensors) {
        if (sensor.kind != "discrete" && sensor.reading && random.chance(60))
            forget_thresholds(sensor);
    }
    return true;
}

bool zero_thresholds_nc(Server& server, Random& random) {
    auto* sensor = sensor_of(server, random, "temperature");
    if (!sensor) return false;
    forget_thresholds(*sensor);
    sensor->status = "nc";
    return true;
}

bool add_state(Server& server, const std::string& role, int bit, const char* word) {
    auto* sensor = server.asks_sdr() ? sensor_with(server, role) : nullptr;
    if (!sensor) return false;
    sensor->states.emplace_back(bit, word);
    return true;
}

bool replace_states(Server& server, const std::string& role, int bit, const char* word) {
    auto* sensor = server.asks_sdr() ? sensor_with(server, role) : nullptr;
    if (!sensor || (sensor->states.size() == 1 && sensor->states.front().first != 0)) return false;
    sensor->states = {{bit, word}};
    return true;
}

bool ac_lost(Server& server, Random&) {
    if (!server.asks_sdr() || server.bmc.supplies.size() < 2) return false;
    auto& supply = server.bmc.supplies.back();
    if (!supply.has_input || supply.has_failed) return false;
    supply.has_input = false;
    return add_state(server, "psu" + std::to_string(supply.number), 3, "Power Supply AC lost");
}
bool supply_failed(Server& server, Random& random) {
    if (!server.asks_sdr() || server.bmc.supplies.empty()) return false;
    auto& supply = server.bmc.supplies.front();
    if (!supply.has_input || supply.has_failed) return false;
    supply.has_failed = true;
    const bool has_gone = random.chance(50);
    return add_state(server, "psu" + std::to_string(supply.number), has_gone ? 1 : 2,
                     has_gone ? "Failure detected" : "Predictive failure");
}
bool redundancy_lost(Server& server, Random&) {
    return replace_states(server, "psu redundancy", 1, "Redundancy Lost");
}
bool power_insufficient(Server& server, Random&) {
    return replace_states(server, "psu redundancy", 5, "Non-Redundant: Insufficient Resources");
}
bool fan_redundancy_lost(Server& server, Random&) {
    return replace_states(server, "fan redundancy", 1, "Redundancy Lost");
}
bool intrusion(Server& server, Random&) {
    return add_state(server, "intrusion", 0, "General Chassis intrusion");
}
bool processor_ierr(Server& server, Random&) { return add_state(server, "cpu1", 0, "IERR"); }
bool memory_uncorrectable(Server& server, Random&) {
    return add_state(server, "memory", 1, "Uncorrectable ECC");
}
bool bay_fault(Server& server, Random&) { return add_state(server, "bay", 1, "Drive Fault"); }

bool self_test(Server& server, Random& random) {
    if (!server.has_bmc) return false;
    server.bmc.self_test = random.chance(50) ? "device corrupted" : "fatal error";
    return true;
}

// ---- The SEL ----------------------------------------------------------------------------------------

// Entries stand in the order of their times; those without one stay where they are.
void log(Server& server, Random& random, SelEntry entry, int days) {
    entry.time = server.now - Seconds{86400} * days - random.between(60, 40000);
    auto& entries = server.bmc.sel;
    const auto later = std::find_if(entries.begin(), entries.end(), [&](const SelEntry& one) {
        return one.time && *one.time > *entry.time;
    });
    entries.insert(later, std::move(entry));
}

SelEntry uncorrectable() {
    return {SelKind::uncorrectable,
            {},
            "MAJ",
            "BMC ",
            "Memory",
            "31",
            "Uncorrectable ECC, DIMM(11)",
            "6f [a1 00 0b]",
            "Uncorrectable ECC"};
}
SelEntry correctable() {
    return {SelKind::correctable,
            {},
            "MIN",
            "BMC ",
            "Memory",
            "31",
            "Correctable ECC, DIMM(5)",
            "6f [a0 00 05]",
            "Correctable ECC"};
}
SelEntry processor() {
    return {SelKind::processor, {},    "CRT", "BMC ", "Processor", "fc", "IERR",
            "6f [00 ff ff]",    "IERR"};
}
SelEntry thermal_trip() {
    return {SelKind::thermal_trip, {},   "CRT",          "BMC ",
            "Processor",           "fb", "Thermal Trip", "6f [01 ff ff]",
            "Thermal Trip"};
}
SelEntry pci() {
    return {SelKind::pci, {},          "CRT",           "BMC ",    "Critical Interrupt",
            "77",         "PCI SERR ", "6f [05 ff ff]", "PCI SERR"};
}

bool log_one(Server& server, Random& random, const SelEntry& entry, int least, int most) {
    if (!server.has_bmc) return false;
    const bool is_there = std::any_of(server.bmc.sel.begin(), server.bmc.sel.end(),
                                      [&](const SelEntry& one) { return one.kind == entry.kind; });
    if (is_there) return false;
    const int days = random.between(least, most);
    for (int times = random.between(1, 3); times > 0; --times) log(server, random, entry, days);
    return true;
}

constexpr int kNew = 5, kWeek = 9, kMonth = 27, kOld = 33, kOldest = 300;  // days

bool sel_uncorrectable_new(Server& s, Random& r) { return log_one(s, r, uncorrectable(), 0, kNew); }
bool sel_uncorrectable_weeks(Server& s, Random& r) {
    return log_one(s, r, uncorrectable(), kWeek, kMonth);
}
bool sel_uncorrectable_old(Server& s, Random& r) {
    return log_one(s, r, uncorrectable(), kOld, kOldest);
}
bool sel_processor_new(Server& s, Random& r) { return log_one(s, r, processor(), 0, kNew); }
bool sel_processor_old(Server& s, Random& r) { return log_one(s, r, processor(), kOld, kOldest); }
bool sel_thermal_new(Server& s, Random& r) { return log_one(s, r, thermal_trip(), 0, kNew); }
bool sel_thermal_old(Server& s, Random& r) { return log_one(s, r, thermal_trip(), kOld, kOldest); }
bool sel_pci_new(Server& s, Random& r) { return log_one(s, r, pci(), 0, kNew); }
bool sel_pci_old(Server& s, Random& r) { return log_one(s, r, pci(), kOld, kOldest); }
bool sel_corrected_few(Server& s, Random& r) { return log_one(s, r, correctable(), 0, kOldest); }

bool sel_corrected_many(Server& server, Random& random) {
    if (!server.has_bmc) return false;
    for (const auto& entry : server.bmc.sel) {
        if (entry.kind == SelKind::correctable) return false;
    }
    // All on one day of the calendar.
    const auto noon = server.now / 86400 * 86400 - Seconds{86400} * random.between(1, 20) + 43200;
    auto entry = correctable();
    for (int at = 0; at < 30; ++at) {
        entry.time = noon + at * 60;
        const auto later =
            std::find_if(server.bmc.sel.begin(), server.bmc.sel.end(),
                         [&](const SelEntry& one) { return one.time && *one.time > *entry.time; });
        server.bmc.sel.insert(later, entry);
    }
    return true;
}

bool sel_nearly_full(Server& server, Random& random) {
    if (!server.has_bmc || server.bmc.sel.size() < 15) return false;
    server.bmc.sel_room = static_cast<int>(server.bmc.sel.size()) + random.between(0, 1);
    return true;
}

// ---- The kernel -------------------------------------------------------------------------------------

bool kernel_line(Server& server, Random& random, KernelLine line) {
    const auto at = random.between(6, static_cast<int>(server.dmesg.size()));
    server.dmesg.insert(server.dmesg.begin() + at, std::move(line));
    return true;
}

bool edac_corrected(Server& server, Random& random) {
    return kernel_line(
        server, random,
        {KernelKind::edac_corrected,
         "EDAC MC1: 1 CE memory read error on CPU_SrcID#1_Ha#0_Chan#0_DIMM#0 (channel:0 "
         "slot:0 page:0x12a4 offset:0x40 grain:32 syndrome:0x0)",
         "CE memory read error"});
}
bool edac_uncorrected(Server& server, Random& random) {
    return kernel_line(
        server, random,
        {KernelKind::edac_uncorrected,
         "EDAC MC0: 1 UE memory read error on CPU_SrcID#0_Ha#0_Chan#1_DIMM#0 (channel:1 "
         "slot:0 page:0x77 offset:0x0 grain:32)",
         "UE memory read error"});
}
bool machine_check(Server& server, Random& random) {
    return kernel_line(
        server, random,
        {KernelKind::machine_check,
         "mce: [Hardware Error]: CPU 3: Machine Check Exception: 4 Bank 5: be00000000800400",
         "Machine Check Exception"});
}
bool disk_error(Server& server, Random& random) {
    static constexpr const char* kTexts[] = {
        "blk_update_request: I/O error, dev sdb, sector 567760 op 0x0:(READ) flags 0x80700 phys_seg 1 prio class 0",
        "Buffer I/O error on dev sdc1, logical block 1234, async page read",
        "print_req_error: I/O error, dev sdb, sector 2719104"};
    return kernel_line(server, random, {KernelKind::disk_error, random.pick(kTexts), "I/O error"});
}
bool drive_lost(Server& server, Random& random) {
    static constexpr std::pair<const char*, const char*> kTexts[] = {
        {"sd 2:0:0:0: rejecting I/O to offline device", "rejecting I/O to offline device"},
        {"sd 4:0:1:0: Device offlined - not ready after error recovery", "Device offlined"},
        {"nvme nvme3: Removing after probe failure status: -19", "Removing after probe failure"},
        {"ata7.00: reset failed, giving up", "giving up"}};
    const auto& [text, words] = random.pick(kTexts);
    return kernel_line(server, random, {KernelKind::drive_lost, text, words});
}
bool controller_lost(Server& server, Random& random) {
    static constexpr std::pair<const char*, const char*> kTexts[] = {
        {"megaraid_sas 0000:03:00.0: FW in FAULT state!!", "FW in FAULT state"},
        {"aacraid 0000:82:00.0: Host adapter dead -1", "Host adapter dead"},
        {"hpsa 0000:03:00.0: Controller lockup detected: 0x00130000 after 30", "lockup detected"},
        {"smartpqi 0000:5c:00.0: controller is offline: status code 0x6100c", "is offline"},
        {"mpt3sas_cm0: fault_state(0x5862)!", "fault_state(0x5862)"}};
    const auto& [text, words] = random.pick(kTexts);
    return kernel_line(server, random, {KernelKind::controller_lost, text, words});
}

// ---- Software arrays --------------------------------------------------------------------------------

// An array that nothing has happened to yet, of which each of so many places may be lost.
Array* whole_array(Server& server, Random& random, int lost, bool stays) {
    std::vector<Array*> fit;
    for (auto& array : server.arrays) {
        if (array.raid == "raid0" || places_lost(array) > 0 || !array.operation.empty()) continue;
        if (lost > array.places) continue;
        auto after = array;
        for (int place = 0; place < lost; ++place)
            after.members[static_cast<std::size_t>(place)].state = "faulty";
        if (is_lost(after) != stays) fit.push_back(&array);
    }
    return fit.empty() ? nullptr : random.pick(fit);
}

// The first places fail; a member that was taken out leaves none behind.
bool lose_places(Server& server, Random& random, int lost, bool stays) {
    auto* array = whole_array(server, random, lost, stays);
    if (!array) return false;
    for (int place = 0; place < lost; ++place) {
        auto& member = array->members[static_cast<std::size_t>(place)];
        member.state = "faulty";
        member.place = -1;
    }
    if (random.chance(30)) array->members.erase(array->members.begin());
    return true;
}

bool md_failed(Server& server, Random& random) { return lose_places(server, random, 1, true); }
bool md_two_failed(Server& server, Random& random) { return lose_places(server, random, 2, true); }
bool md_lost(Server& server, Random& random) {
    return lose_places(server, random, random.between(2, 3), false);
}

bool md_rebuild(Server& server, Random& random) {
    auto* array = whole_array(server, random, 1, true);
    if (!array || array->members.back().state != "spare") return false;
    auto& failed = array->members.front();
    auto& spare = array->members.back();
    spare.place = failed.place;
    spare.state = "spare rebuilding";
    failed.state = "faulty";
    failed.place = -1;
    array->operation = "rebuild";
    array->progress = random.between(0, 999) / 10.0;
    return true;
}

bool md_runs(Server& server, Random& random, const char* operation) {
    auto* array = whole_array(server, random, 0, true);
    if (!array) return false;
    array->operation = operation;
    array->progress = random.between(0, 999) / 10.0;
    return true;
}
bool md_check(Server& server, Random& random) { return md_runs(server, random, "check"); }
bool md_resync(Server& server, Random& random) { return md_runs(server, random, "resync"); }

bool md_spare_failed(Server& server, Random& random) {
    auto* array = whole_array(server, random, 0, true);
    if (!array || array->members.back().state != "spare") return false;
    array->members.back().state = "faulty";
    return true;
}

// ---- Pools ------------------------------------------------------------------------------------------

bool lose_members(Server& server, Random& random, int lost) {
    if (!server.pool || members_lost(*server.pool) > 0) return false;
    static constexpr const char* kStates[] = {"UNAVAIL", "FAULTED", "REMOVED", "OFFLINE"};
    for (int at = 0; at < lost; ++at)
        server.pool->members[static_cast<std::size_t>(at)].state = random.pick(kStates);
    return true;
}

bool zpool_failed(Server& server, Random& random) { return lose_members(server, random, 1); }
bool zpool_two_failed(Server& server, Random& random) {
    return server.pool && can_lose(*server.pool) == 2 && lose_members(server, random, 2);
}
bool zpool_lost(Server& server, Random& random) {
    return server.pool && lose_members(server, random, can_lose(*server.pool) + 1);
}

bool zpool_checksums(Server& server, Random& random) {
    if (!server.pool) return false;
    auto& member = server.pool->members.back();
    member.checksums = random.between(1, 900);
    if (random.chance(30)) member.reads = random.between(1, 20);
    return true;
}

bool zpool_data_errors(Server& server, Random& random) {
    if (!server.pool) return false;
    server.pool->data_errors = random.between(2, 90);
    return true;
}

bool zpool_runs(Server& server, Random& random, const char* operation) {
    if (!server.pool || !server.pool->operation.empty()) return false;
    server.pool->operation = operation;
    server.pool->progress = random.between(0, 9999) / 100.0;
    return true;
}
bool zpool_resilver(Server& server, Random& random) {
    return zpool_runs(server, random, "resilver");
}
bool zpool_scrub(Server& server, Random& random) { return zpool_runs(server, random, "scrub"); }

struct Fault {
    const char* name;
    bool (*happen)(Server&, Random&);
};

constexpr Fault kFaults[] = {
    {"drive_failed", drive_failed},
    {"drive_missing", drive_missing},
    {"drive_rebuilding", drive_rebuilding},
    {"two_drives_failed", two_drives_failed},
    {"volume_offline", volume_offline},
    {"topology_alone", topology_alone},
    {"drive_bad", drive_bad},
    {"drive_foreign", drive_foreign},
    {"media_errors", media_errors},
    {"other_errors", other_errors},
    {"shielded", shielded},
    {"predicted_failure", predicted_failure},
    {"smart_alert", smart_alert},
    {"battery_failed", battery_failed},
    {"enclosure_failed", enclosure_failed},
    {"controller_clock_wrong", controller_clock_wrong},
    {"controller_event", controller_event},
    {"temperature_nc", temperature_nc},
    {"temperature_cr", temperature_cr},
    {"temperature_nr", temperature_nr},
    {"fan_cr", fan_cr},
    {"fan_nc", fan_nc},
    {"voltage_nc", voltage_nc},
    {"voltage_cr", voltage_cr},
    {"clock_battery", clock_battery},
    {"zero_thresholds", zero_thresholds},
    {"zero_thresholds_nc", zero_thresholds_nc},
    {"ac_lost", ac_lost},
    {"supply_failed", supply_failed},
    {"redundancy_lost", redundancy_lost},
    {"power_insufficient", power_insufficient},
    {"fan_redundancy_lost", fan_redundancy_lost},
    {"intrusion", intrusion},
    {"processor_ierr", processor_ierr},
    {"memory_uncorrectable", memory_uncorrectable},
    {"bay_fault", bay_fault},
    {"self_test", self_test},
    {"sel_uncorrectable_new", sel_uncorrectable_new},
    {"sel_uncorrectable_weeks", sel_uncorrectable_weeks},
    {"sel_uncorrectable_old", sel_uncorrectable_old},
    {"sel_processor_new", sel_processor_new},
    {"sel_processor_old", sel_processor_old},
    {"sel_thermal_new", sel_thermal_new},
    {"sel_thermal_old", sel_thermal_old},
    {"sel_pci_new", sel_pci_new},
    {"sel_pci_old", sel_pci_old},
    {"sel_corrected_few", sel_corrected_few},
    {"sel_corrected_many", sel_corrected_many},
    {"sel_nearly_full", sel_nearly_full},
    {"edac_corrected", edac_corrected},
    {"edac_uncorrected", edac_uncorrected},
    {"machine_check", machine_check},
    {"disk_error", disk_error},
    {"drive_lost", drive_lost},
    {"controller_lost", controller_lost},
    {"md_failed", md_failed},
    {"md_two_failed", md_two_failed},
    {"md_lost", md_lost},
    {"md_rebuild", md_rebuild},
    {"md_check", md_check},
    {"md_resync", md_resync},
    {"md_spare_failed", md_spare_failed},
    {"zpool_failed", zpool_failed},
    {"zpool_two_failed", zpool_two_failed},
    {"zpool_lost", zpool_lost},
    {"zpool_checksums", zpool_checksums},
    {"zpool_data_errors", zpool_data_errors},
    {"zpool_resilver", zpool_resilver},
    {"zpool_scrub", zpool_scrub},
};

}  // namespace

std::vector<std::string> fault_names() {
    std::vector<std::string> names;
    for (const auto& fault : kFaults) names.emplace_back(fault.name);
    return names;
}

bool add_fault(Server& server, Random& random, const std::string& name) {
    for (const auto& fault : kFaults) {
        if (name != fault.name || !fault.happen(server, random)) continue;
        server.faults.insert(name);
        return true;
    }
    return false;
}

void add_faults(Server& server, Random& random) {
    if (random.chance(35)) return;
    int left = random.between(1, 3);
    for (int tries = 0; tries < 20 && left > 0; ++tries) {
        if (add_fault(server, random, random.pick(kFaults).name)) --left;
    }
}

}  // namespace truth
