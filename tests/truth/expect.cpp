#include "expect.h"

#include <algorithm>

namespace truth {

const char* word(Level level) {
    return level == Level::notice ? "notice" : level == Level::warning ? "warning" : "critical";
}

Left left_of(const Spot& spot, const Fates& fates) {
    const auto& fate = fates.of(spot.page);
    if (!fate.is_there || fate.where[static_cast<std::size_t>(spot.first)] == 0) return Left::gone;
    return fate.is_sure && fate.open_line != spot.last ? Left::sure : Left::shaky;
}

namespace {

struct Found {
    const Server& server;
    const Book& book;
    const Fates& fates;
    std::vector<Expected> all = {};

    std::vector<Spot> spots(const std::string& kind, const std::string& id,
                            std::initializer_list<const char*> fields) const {
        std::vector<Spot> found;
        const auto* subject = book.find(kind, id);
        for (const char* field : fields) {
            if (!subject) continue;
            for (const auto& spot : subject->spots_of(field)) found.push_back(spot);
        }
        return found;
    }

    // What no line tells any more is not expected; what a damaged one tells may be found.
    void add(Expected one) {
        Left best = Left::gone;
        for (const auto& spot : one.spots) best = std::max(best, left_of(spot, fates));
        if (best == Left::gone) return;
        if (best == Left::shaky) one.is_certain = false;
        all.push_back(std::move(one));
    }
    bool is_whole(const std::string& page) const {
        const auto found = fates.by_page.find(page);
        return found != fates.by_page.end() && found->second.is_sure &&
               found->second.trust == Trust::whole;
    }
};

// ---- Storage ----------------------------------------------------------------------------------------

const Group* group_of(const Controller& controller, const std::optional<int>& number) {
    for (const auto& group : controller.groups) {
        if (group.number == number) return &group;
    }
    return nullptr;
}

bool has_second_parity(const Group& group) {
    return group.raid == "RAID6" || group.raid == "RAID60";
}

void expect_volumes(Found& found, const Controller& controller) {
    const bool is_storcli = found.server.storage_tool == StorageTool::storcli;
    for (const auto& volume : controller.volumes) {
        if (volume.state == "Optl") continue;
        const auto* group = group_of(controller, volume.group);
        Expected one;
        one.about = "volume " + volume_id(controller, volume) + " is " + volume.state;
        one.subsystem = "storage";
        one.spots = found.spots("volumes", volume_id(controller, volume), {"state"});
        one.most = Level::critical;
        if (volume.state == "OfLn") {
            one.rules = {"volume_offline"};
            one.least = Level::critical;
        } else if (volume.state == "Pdgd") {
            one.rules = {"volume_degraded", "volume_state", "volume_no_redundancy"};
            if (is_storcli) one.most = Level::warning;
        } else {
            one.rules = {"volume_no_redundancy", "volume_degraded", "volume_state"};
            // "Degraded" of the other tools does not say how many drives are lost.
            if (is_storcli || !has_second_parity(*group)) one.least = Level::critical;
        }
        found.add(one);
    }
}

void expect_topology(Found& found, const Controller& controller) {
    for (const auto& group : controller.groups) {
        if (group.state == "Optl") continue;
        const bool is_told_elsewhere = std::any_of(
            controller.volumes.begin(), controller.volumes.end(), [&](const Volume& volume) {
                return volume.group == group.number && volume.state != "Optl";
            });
        Expected one;
        one.about = "topology of " + group_id(controller, group) + " is " + group.state;
        one.rules = {"topology_state", "topology_no_redundancy", "topology_offline"};
        one.most = Level::critical;
        one.subsystem = "storage";
        one.is_certain = !is_told_elsewhere;
        one.is_once = false;
        const auto* subject = found.book.find("_topology", group_id(controller, group));
        for (const auto& fact : subject ? subject->facts : std::vector<Fact>()) {
            if (fact.told.value != "Optl") one.spots.push_back(fact.spot);
        }
        found.add(one);
    }
}

// One finding a drive, however many things are wrong with it.
struct DriveTrouble {
    std::vector<const char*> rules;
    Level least, most;
    std::vector<const char*> fields;
};

std::vector<DriveTrouble> troubles_of(const Server& server, const Controller& controller,
                                      const Drive& drive) {
    const auto* group = group_of(controller, drive.group);
    const bool is_storcli = server.storage_tool == StorageTool::storcli;
    const std::string state = group ? group->state : "Optl";
    const bool says_so = is_storcli && !server.has_topology_fault;
    const auto least = says_so && state == "Dgrd" ? Level::critical : Level::warning;
    const auto most = says_so && (state == "Optl" || state == "Pdgd") ? Level::warning
                      : state == "Optl"                               ? Level::warning
                                                                      : Level::critical;
    std::vector<DriveTrouble> all;
    if (drive.state == "Offln")
        all.push_back({{"drive_failed", "drive_failed_no_redundancy"}, least, most, {"state"}});
    if (drive.state == "Rbld")
        all.push_back({{"drive_rebuild"}, Level::warning, Level::critical, {"state"}});
    if (drive.state == "UBad")
        all.push_back(
            {{"drive_unconfigured_bad", "drive_state"}, Level::warning, Level::warning, {"state"}});
    if (drive.is_foreign)
        all.push_back({{"drive_foreign"}, Level::warning, Level::warning, {"is_foreign"}});
    if (drive.smart_alert || drive.predicted_failures > 0) {
        // In an array with something left to lose, warning or critical may be meant.
        const auto worst = state == "Optl" ? Level::warning : Level::critical;
        DriveTrouble one{{"drive_predicted", "drive_predicted_no_redundancy"}, least, worst, {}};
        if (drive.smart_alert || !is_storcli) one.fields.push_back("smart_alert");
        if (drive.predicted_failures > 0 || !is_storcli) one.fields.push_back("predicted_failures");
        all.push_back(one);
    }
    if (drive.media_errors > 0)
        all.push_back({{"drive_media_errors"},
                       Level::warning,
                       state == "Optl" ? Level::warning : Level::critical,
                       {"media_errors"}});
    if (drive.other_errors > 0)
        all.push_back({{"drive_other_errors"}, Level::notice, Level::notice, {"other_errors"}});
    if (drive.shield_counter > 0)
        all.push_back({{"drive_shielded"}, Level::notice, Level::notice, {"shield_counter"}});
    return all;
}

void expect_drives(Found& found, const Controller& controller) {
    for (const auto& drive : controller.drives) {
        const auto in_topology = found.spots("_topology", drive.serial, {"state"});
        const auto name = (drive.enclosure ? std::to_string(*drive.enclosure) : "") + ":" +
                          std::to_string(drive.slot) + " of controller " +
                          std::to_string(controller.number);
        if (drive.is_missing) {
            Expected hole{"hole of drive " + name,
                          {},
                          Level::notice,
                          Level::critical,
                          "storage",
                          in_topology,
                          {},
                          false,
                          false};
            found.add(hole);
            continue;
        }
        auto troubles = troubles_of(found.server, controller, drive);
        if (troubles.empty()) continue;
        Expected one;
        one.about = "drive " + name;
        one.subsystem = "storage";
        one.holds = {std::to_string(drive.slot), drive.serial};
        one.least = one.most = Level::notice;
        Left best = Left::gone;
        for (const auto& trouble : troubles) {
            Left of_this = Left::gone;
            for (const char* field : trouble.fields) {
                for (const auto& spot : found.spots("drives", drive.serial, {field})) {
                    one.spots.push_back(spot);
                    of_this = std::max(of_this, left_of(spot, found.fates));
                }
            }
            for (const char* rule : trouble.rules) one.rules.emplace_back(rule);
            one.most = std::max(one.most, trouble.most);
            // What only a damaged line tells demands nothing.
            if (of_this == Left::sure) one.least = std::max(one.least, trouble.least);
            best = std::max(best, of_this);
        }
        one.is_certain = best == Left::sure;
        if (drive.state == "Offln" || drive.state == "Rbld")
            one.spots.insert(one.spots.end(), in_topology.begin(), in_topology.end());
        // How bad it is rests on the state of its volume.
        if (!found.is_whole("c" + std::to_string(controller.number) + "_showall.txt"))
            one.least = std::min(one.least, Level::warning);
        const bool was_certain = one.is_certain;
        found.add(one);
        if (!was_certain && !found.all.empty() && found.all.back().about == one.about)
            found.all.back().is_certain = false;
    }
}

void expect_storage(Found& found) {
    const int asked = asked_controllers(found.server);
    for (const auto& controller : found.server.controllers) {
        if (found.server.storage_tool == StorageTool::storcli && controller.number >= asked)
            continue;
        expect_volumes(found, controller);
        expect_topology(found, controller);
        expect_drives(found, controller);
        const auto digit = "c" + std::to_string(controller.number);
        if (controller.battery && controller.battery->state != "Optimal")
            found.add({"battery of " + digit,
                       {"battery"},
                       Level::warning,
                       Level::critical,
                       "storage",
                       found.spots("batteries", digit, {"state"})});
        for (const auto& enclosure : controller.enclosures) {
            if (enclosure.state == "OK") continue;
            found.add({"enclosure of " + digit,
                       {"enclosure_state"},
                       Level::warning,
                       Level::critical,
                       "storage",
                       found.spots("enclosures", digit + "/e" + std::to_string(enclosure.id),
                                   {"state"})});
        }
        if (controller.clock_off < 0 && controller.mode == Mode::raid)
            found.add({"clock of " + digit,
                       {"clock_wrong"},
                       Level::notice,
                       Level::warning,
                       "system",
                       found.spots("_clocks", digit, {"time", "system"})});
    }
    // Bad events of a controller's log may be told.
    for (const auto& controller : found.server.controllers) {
        for (const auto& event : controller.events) {
            if (event.level < 2) continue;
            for (const auto& [id, told] : found.book.events) {
                if (told.words != event.words || !told.source.starts_with("controller")) continue;
                found.add({"event " + id,
                           {"event_controller"},
                           Level::notice,
                           Level::critical,
                           "storage",
                           told.spots,
                           {},
                           false,
                           false});
            }
        }
    }
}

// ---- The BMC ----------------------------------------------------------------------------------------

bool has_good_fan_redundancy(const Found& found) {
    if (!found.server.asks_sdr() || !found.is_whole("sdrinfo.txt")) return false;
    return std::any_of(found.server.bmc.sensors.begin(), found.server.bmc.sensors.end(),
                       [](const Sensor& sensor) {
                           return sensor.role == "fan redundancy" &&
                                  sensor.states.front().second == "Fully Redundant";
                       });
}

void expect_status(Found& found, const Sensor& sensor) {
    if (sensor.kind == "discrete" || sensor.status == "ok" || sensor.status == "na") return;
    Expected one;
    one.about = "sensor " + sensor.name + " is " + sensor.status;
    one.spots = found.spots("sensors", std::to_string(sensor.number), {"status"});
    one.holds = {sensor.name};
    const bool is_nc = sensor.status == "nc";
    if (sensor.role == "clock battery") {
        one.subsystem = "system";
        one.rules = {"clock_battery"};
    } else if (sensor.kind == "temperature") {
        one.subsystem = "temperature";
        one.rules = {is_nc ? "temperature_warning" : "temperature_critical"};
        one.least = one.most = is_nc ? Level::warning : Level::critical;
    } else if (sensor.kind == "fan") {
        one.subsystem = "cooling";
        one.rules = {"fan_warning", "fan_critical"};
        one.most = is_nc || has_good_fan_redundancy(found) ? Level::warning : Level::critical;
    } else {
        one.subsystem = "power";
        one.rules = {"voltage_warning", "voltage_critical"};
        one.most = is_nc ? Level::warning : Level::critical;
    }
    found.add(one);
}

struct WordRow {
    const char* word;
    std::vector<std::string> rules;
    const char* subsystem;
    Level least, most;
};

const WordRow* row_of(const std::string& role, const std::string& word) {
    static const std::vector<WordRow> kFanRows = {
        {"Redundancy Lost", {"cooling_redundancy"}, "cooling", Level::warning, Level::critical}};
    static const std::vector<WordRow> kRows = {
        {"Power Supply AC lost",
         {"power_input", "power_supply"},
         "power",
         Level::warning,
         Level::warning},
        {"Failure detected", {"power_supply"}, "power", Level::warning, Level::critical},
        {"Predictive failure", {"power_supply"}, "power", Level::warning, Level::warning},
        {"Redundancy Lost", {"power_redundancy"}, "power", Level::warning, Level::warning},
        {"Non-Redundant: Insufficient Resources",
         {"power_insufficient"},
         "power",
         Level::critical,
         Level::critical},
        {"General Chassis intrusion", {"intrusion"}, "system", Level::warning, Level::warning},
        {"IERR", {"processor_error"}, "processor", Level::warning, Level::critical},
        {"Uncorrectable ECC", {"memory_error"}, "memory", Level::critical, Level::critical},
        {"Drive Fault", {"drive_bay_fault"}, "storage", Level::warning, Level::critical},
    };
    for (const auto& row : role == "fan redundancy" ? kFanRows : kRows) {
        if (word == row.word) return &row;
    }
    return nullptr;
}

void expect_words(Found& found, const Sensor& sensor) {
    for (const auto& [bit, state] : sensor.states) {
        const auto* row = row_of(sensor.role, state);
        if (!row) continue;
        Expected one{"sensor " + sensor.name + " says " + state,
                     row->rules,
                     row->least,
                     row->most,
                     row->subsystem,
                     found.spots("sensors", std::to_string(sensor.number), {"states"})};
        one.is_once = false;
        found.add(one);
    }
}

// What the makers' own answer says of a power supply may be a finding of its own, or the sensor's.
void expect_supplies(Found& found) {
    for (const auto& supply : found.server.bmc.supplies) {
        if (supply.has_input && !supply.has_failed) continue;
        Expected one;
        one.about = "power supply " + std::to_string(supply.number);
        one.rules = {"power_input", "power_supply"};
        one.most = Level::critical;
        one.subsystem = "power";
        one.spots =
            found.spots("power_supplies", std::to_string(supply.number), {"state", "input_state"});
        one.is_certain = false;
        one.is_once = false;
        found.add(one);
    }
}

// ---- Software arrays --------------------------------------------------------------------------------

// Whether one more drive may be lost.
bool has_redundancy(const Array& array) {
    const int lost = places_lost(array);
    if (array.raid == "raid1") return array.places - lost > 1;
    return array.raid == "raid6" && lost < 2;
}

void expect_array(Found& found, const Array& array) {
    const int lost = places_lost(array);
    Expected one;
    one.about = "array " + array.name;
    one.subsystem = "storage";
    one.holds = {array.name};
    one.spots = found.spots("volumes", array.name, {"state", "operation"});
    if (is_lost(array)) {
        one.rules = {"volume_offline", "volume_no_redundancy"};  // /proc/mdstat has no word for it
        one.least = one.most = Level::critical;
        const auto states = found.spots("volumes", array.name, {"state"});
        for (const auto& spot : states) {
            if (spot.page.starts_with("host_mdadm") && left_of(spot, found.fates) == Left::sure)
                one.rules = {"volume_offline"};
        }
    } else if (lost > 0) {
        one.rules = {"volume_degraded", "volume_rebuild"};
        if (!has_redundancy(array)) {
            one.rules = {"volume_no_redundancy"};
            one.least = one.most = Level::critical;
        }
    } else if (!array.operation.empty()) {
        one.rules = {"volume_maintenance"};
        one.least = one.most = Level::notice;
    }
    if (lost > 0 || !array.operation.empty()) found.add(one);
    const bool is_exposed = lost > 0 && !has_redundancy(array);
    for (const auto& member : array.members) {
        if (member.state != "faulty") continue;
        Expected drive;
        drive.about = "drive of " + member.device;
        drive.rules = {is_exposed ? "drive_failed_no_redundancy" : "drive_failed"};
        drive.least = drive.most = is_exposed ? Level::critical : Level::warning;
        drive.subsystem = "storage";
        drive.spots = found.spots("drives", member.device, {"state"});
        // One line of /proc/mdstat tells of all of them.
        for (const auto& other : array.members) {
            if (other.state == "faulty") drive.holds.push_back(other.device.substr(0, 3));
        }
        drive.is_once = false;
        found.add(drive);
        if (lost > 0) continue;
        // A spare that failed may be told of the array as well.
        one.rules = {"volume_state"};
        one.is_certain = false;
        found.add(one);
    }
}

// ---- Pools ------------------------------------------------------------------------------------------

void expect_pool(Found& found, const Pool& pool) {
    const int lost = members_lost(pool);
    const int most = can_lose(pool);
    Expected one;
    one.about = "pool " + pool.name;
    one.subsystem = "storage";
    one.holds = {pool.name};
    one.spots = found.spots("volumes", pool.name, {"state", "operation"});
    one.least = one.most = Level::notice;
    const auto add = [&](const char* rule, Level level) {
        one.rules.emplace_back(rule);
        one.least = one.most = std::max(one.most, level);
    };
    if (lost > most) {
        add("volume_offline", Level::critical);
    } else if (lost > 0) {
        if (lost == most)
            add("volume_no_redundancy", Level::critical);
        else
            add("volume_degraded", Level::warning);
    }
    if (pool.operation == "resilver") add("volume_rebuild", Level::warning);
    if (pool.operation == "scrub") add("volume_maintenance", Level::notice);
    if (pool.data_errors > 0) {
        // What the last line tells, a cut takes away; data is lost, whatever it is called.
        add("volume_state", Level::warning);
        one.most = Level::critical;
    }
    if (!one.rules.empty()) {
        if (!found.is_whole("host_zpool.txt")) one.least = Level::notice;
        found.add(one);
    }
    for (const auto& member : pool.members) {
        const bool has_failed = member.state != "ONLINE";
        const bool is_exposed = has_failed && lost >= most;
        if (!has_failed && member.reads + member.writes + member.checksums == 0) continue;
        Expected drive;
        drive.about = "drive " + member.device;
        drive.rules = {is_exposed   ? "drive_failed_no_redundancy"
                       : has_failed ? "drive_failed"
                                    : "drive_other_errors"};
        drive.least = drive.most = is_exposed   ? Level::critical
                                   : has_failed ? Level::warning
                                                : Level::notice;
        if (is_exposed && !found.is_whole("host_zpool.txt")) {
            drive.rules.emplace_back("drive_failed");
            drive.least = Level::warning;
        }
        drive.subsystem = "storage";
        drive.spots = found.spots("drives", member.device, {"state"});
        drive.holds = {member.device};
        found.add(drive);
    }
}

double days_ago(const Server& server, Seconds time) {
    return static_cast<double>(server.now - time) / 86400.0;
}

struct SelRow {
    SelKind kind;
    std::vector<std::string> rules;
    const char* subsystem;
    Level least_new, most_new;  // up to 7 days
    Level least_old, most_old;
};

void expect_sel(Found& found) {
    static const std::vector<SelRow> kRows = {
        {SelKind::uncorrectable,
         {"event_memory_error"},
         "memory",
         Level::critical,
         Level::critical,
         Level::warning,
         Level::warning},
        {SelKind::processor,
         {"event_processor"},
         "processor",
         Level::critical,
         Level::critical,
         Level::warning,
         Level::warning},
        {SelKind::thermal_trip,
         {"event_thermal_trip"},
         "processor",
         Level::critical,
         Level::critical,
         Level::notice,
         Level::warning},
        {SelKind::pci,
         {"event_pci"},
         "system",
         Level::warning,
         Level::critical,
         Level::notice,
         Level::warning},
    };
    const auto& sel = found.server.bmc.sel;
    const auto spots_of = [&](SelKind kind) {
        std::vector<Spot> spots;
        for (std::size_t at = 0; at < sel.size(); ++at) {
            if (sel[at].kind == kind)
                spots.push_back(
                    found.book.events.at("bmc " + std::to_string(10001 + at)).spots.front());
        }
        return spots;
    };
    for (const auto& row : kRows) {
        Expected one{"SEL entry",  row.rules,     row.least_old,
                     row.most_old, row.subsystem, spots_of(row.kind)};
        one.is_once = false;
        for (const auto& entry : sel) {
            if (entry.kind != row.kind) continue;
            one.about = "SEL entry " + entry.words;
            if (days_ago(found.server, *entry.time) > 7) continue;
            one.least = row.least_new;
            one.most = row.most_new;
        }
        if (!one.spots.empty()) found.add(one);
    }
    const auto corrected = spots_of(SelKind::correctable);
    if (!corrected.empty()) {
        const bool many = corrected.size() > 24;
        Expected one{"SEL entries Correctable ECC",
                     many ? std::vector<std::string>{"event_memory_many"}
                          : std::vector<std::string>{"event_memory_corrected"},
                     many ? Level::warning : Level::notice,
                     many ? Level::warning : Level::notice,
                     "memory",
                     corrected};
        one.is_once = false;
        if (many && found.fates.of("selinfo.txt").trust == Trust::broken) {
            one.least = Level::notice;  // too few may be left
            one.rules.emplace_back("event_memory_corrected");
        }
        found.add(one);
    }
    // A sensor that is well now: its old entries tell of the past. Which sensor it is, only the sensor
    // records tell.
    const bool is_known = found.server.asks_sdr() && found.is_whole("sdrinfo.txt") &&
                          found.is_whole("sensorinfo.txt");
    Expected past{"SEL entries of thresholds",
                  {"event_threshold", "event_threshold_past"},
                  Level::notice,
                  is_known ? Level::notice : Level::warning,
                  "system",
                  spots_of(SelKind::threshold)};
    past.is_certain = false;
    past.is_once = false;
    // Where the sensor is not well, the entry is about that.
    for (const auto& sensor : found.server.bmc.sensors) {
        if (sensor.kind == "temperature" && sensor.status != "ok") past.most = Level::warning;
    }
    if (!past.spots.empty()) found.add(past);
    if (found.server.faults.contains("sel_nearly_full"))
        found.add({"SEL nearly full",
                   {"sel_nearly_full"},
                   Level::warning,
                   Level::warning,
                   "bmc",
                   found.spots("_sel", "room", {"used"})});
}

void expect_kernel(Found& found) {
    struct Row {
        KernelKind kind;
        const char* rule;
        const char* subsystem;
        Level least, most;
    };
    static constexpr Row kRows[] = {
        {KernelKind::edac_corrected, "event_memory_corrected", "memory", Level::notice,
         Level::notice},
        {KernelKind::edac_uncorrected, "event_memory_error", "memory", Level::warning,
         Level::critical},
        {KernelKind::machine_check, "event_processor", "processor", Level::warning,
         Level::critical},
        {KernelKind::disk_error, "event_disk", "storage", Level::warning, Level::critical},
        {KernelKind::drive_lost, "event_drive_lost", "storage", Level::warning, Level::critical},
        {KernelKind::controller_lost, "event_controller_lost", "storage", Level::warning,
         Level::critical},
    };
    // Messages of one text are one finding, which names some of their lines.
    std::map<std::string, std::vector<Spot>> lines_of;
    std::map<std::string, const KernelLine*> messages;
    std::size_t at = 0;
    for (const auto& line : found.server.dmesg) {
        if (line.kind == KernelKind::quiet) continue;
        const auto& told = found.book.events.at("kernel " + std::to_string(1000 + at++));
        auto& lines = lines_of[line.text];
        lines.insert(lines.end(), told.spots.begin(), told.spots.end());
        messages.emplace(line.text, &line);
    }
    for (const auto& [text, line] : messages) {
        for (const auto& row : kRows) {
            if (row.kind != line->kind) continue;
            Expected one{"kernel: " + line->words,
                         {row.rule},
                         row.least,
                         row.most,
                         row.subsystem,
                         lines_of[text]};
            one.is_once = false;
            found.add(one);
        }
    }
}

}  // namespace

std::vector<Expected> expected_findings(const Server& server, const Book& book,
                                        const Fates& fates) {
    Found found{server, book, fates};
    expect_storage(found);
    for (const auto& array : server.arrays) expect_array(found, array);
    if (server.pool) expect_pool(found, *server.pool);
    if (server.has_bmc) {
        for (const auto& sensor : server.bmc.sensors) {
            expect_status(found, sensor);
            expect_words(found, sensor);
        }
        expect_supplies(found);
        if (server.bmc.self_test != "passed")
            found.add({"self test",
                       {"self_test"},
                       Level::warning,
                       Level::critical,
                       "bmc",
                       found.spots("bmcs", "bmc", {"self_test"})});
        expect_sel(found);
    }
    expect_kernel(found);
    return found.all;
}

// ---- Health -----------------------------------------------------------------------------------------

namespace {

constexpr const char* kSubsystems[] = {"temperature", "cooling", "power",  "memory",    "processor",
                                       "storage",     "bmc",     "system", "collection"};

Trust worst(Trust one, Trust other) { return std::max(one, other); }

// What the subsystem rests on, and whether `ok` may.
Trust trust_of(const std::string& subsystem, const Server& server, const Fates& fates) {
    const auto of = [&](const char* page) {
        const auto found = fates.by_page.find(page);
        return found == fates.by_page.end() ? Trust::whole : found->second.trust;
    };
    const auto at_most_unsure = [&](const char* page) {
        return of(page) == Trust::whole ? Trust::whole : Trust::unsure;
    };
    Trust trust = Trust::whole;
    if (subsystem == "temperature" || subsystem == "cooling" || subsystem == "power") {
        trust = worst(of("sensorinfo.txt"), of("sdrinfo.txt"));
        if (subsystem == "power") trust = worst(trust, at_most_unsure("psuinfo.txt"));
    } else if (subsystem == "memory" || subsystem == "processor") {
        // Without a BMC the firmware's tables must say that there is none.
        trust = worst(of("dmesg.log"),
                      server.has_bmc ? of("selinfo.txt") : at_most_unsure("dmidecode.log"));
    } else if (subsystem == "bmc") {
        trust = worst(of("selfinfo.txt"),
                      worst(at_most_unsure("mcinfo.txt"), at_most_unsure("selinfo.txt")));
    } else if (subsystem == "system") {
        for (const char* page :
             {"sensorinfo.txt", "sdrinfo.txt", "selinfo.txt", "dmesg.log", "dmidecode.log"})
            trust = worst(trust, at_most_unsure(page));
    }
    return trust;
}

Trust trust_of_storage(const Server& server, const Fates& fates) {
    Trust trust = Trust::whole;
    bool has_details = false;
    bool asked_details = false;
    for (const auto& [name, fate] : fates.by_page) {
        const bool is_of_tool = !fate.page->lines.empty();
        if (name.ends_with("_showall.txt") || name == "ctrlcount.txt" ||
            name.starts_with("Firmware") || name.starts_with("host_sas2ircu")) {
            if (is_of_tool) trust = worst(trust, fate.trust);
        } else if (name == "host_mdstat.txt" || name == "host_zpool.txt") {
            trust = worst(trust, fate.trust);
        } else if (name.starts_with("host_mdadm")) {
            if (fate.trust != Trust::whole) trust = worst(trust, Trust::unsure);
        } else if (name.ends_with("pdlist.txt") && is_of_tool) {
            asked_details = true;
            has_details = has_details || fate.trust == Trust::whole;
            if (fate.trust != Trust::whole) trust = worst(trust, Trust::unsure);
        } else if ((name.ends_with("raidevents.txt") || name == "host_lspci.txt" ||
                    name == "dmesg.log") &&
                   fate.trust != Trust::whole) {
            trust = worst(trust, Trust::unsure);
        }
    }
    if (asked_details && !has_details) {
        bool all_broken = true;
        for (const auto& [name, fate] : fates.by_page) {
            if (name.ends_with("pdlist.txt"))
                all_broken = all_broken && fate.trust == Trust::broken;
        }
        if (all_broken) trust = Trust::broken;
    }
    if (server.has_ahci) trust = worst(trust, Trust::unsure);  // what is behind it was not asked
    if (asked_controllers(server) < static_cast<int>(server.controllers.size()))
        trust = Trust::broken;
    return trust;
}

std::set<std::string> without_findings(const std::string& subsystem, const Server& server,
                                       const Fates& fates) {
    if (subsystem == "storage") {
        if (server.storage_tool == StorageTool::none && server.arrays.empty() && !server.pool) {
            const bool is_broken = fates.of("host_lspci.txt").trust == Trust::broken;
            if (server.has_ahci || is_broken) return {"unknown"};
            return {"absent", "unknown"};
        }
        const auto trust = trust_of_storage(server, fates);
        if (trust == Trust::broken) return {"unknown"};
        return trust == Trust::unsure ? std::set<std::string>{"ok", "unknown"}
                                      : std::set<std::string>{"ok"};
    }
    const bool rests_on_bmc = subsystem == "temperature" || subsystem == "cooling" ||
                              subsystem == "power" || subsystem == "bmc";
    if (rests_on_bmc && !server.has_bmc) {
        if (fates.of("dmidecode.log").trust == Trust::whole) return {"absent"};
        return {"absent", "unknown"};
    }
    switch (trust_of(subsystem, server, fates)) {
        case Trust::whole: return {"ok"};
        case Trust::unsure: return {"ok", "unknown"};
        case Trust::broken: return {"unknown"};
    }
    return {};
}

}  // namespace

std::map<std::string, std::set<std::string>> expected_health(const Server& server,
                                                             const std::vector<Expected>& findings,
                                                             const Fates& fates) {
    std::map<std::string, std::set<std::string>> health;
    for (const std::string subsystem : kSubsystems) {
        if (subsystem == "collection") continue;
        std::optional<Level> least;
        std::optional<Level> most;
        for (const auto& finding : findings) {
            if (finding.subsystem != subsystem) continue;
            if (finding.is_certain && finding.least > Level::notice)
                least = std::max(least, std::optional(finding.least));
            if (finding.most > Level::notice) most = std::max(most, std::optional(finding.most));
        }
        auto& words = health[subsystem];
        if (!least) words = without_findings(subsystem, server, fates);
        if (least == Level::critical) {
            words = {"critical"};
        } else if (most) {
            words.insert("warning");
            if (most == Level::critical) words.insert("critical");
        }
    }
    const bool died = std::any_of(fates.by_page.begin(), fates.by_page.end(),
                                  [](const auto& one) { return !one.second.ended_badly.empty(); });
    health["collection"] = {died ? "unknown" : "ok"};
    return health;
}

}  // namespace truth
