// Healthy random servers.
#include <algorithm>
#include <array>

#include "server.h"

namespace truth {

namespace {

// ---- The machine ------------------------------------------------------------------------------------

constexpr const char* kMakers[] = {"Example Systems", "Exemplar Computing, Inc.", "EXC",
                                   "Northwind  Servers", "EXA (Example Arrays)"};

struct Product {
    const char* name;
    Platform platform;
};
constexpr Product kProducts[] = {
    {"KP220 Rack Server", Platform::full},
    {"Model KP120-2", Platform::full},
    {"KV900  4U (8S)", Platform::full},
    {"KN100 Storage Server", Platform::without_leds},
    {"Converged HX-7520", Platform::without_leds},
    {"KL010 Rack Server", Platform::reduced},
    {"kp310", Platform::reduced},
};
constexpr const char* kUnknownProducts[] = {"RX-2540 M4", "R 640", "ProBox SL4540 Gen9"};
constexpr const char* kPlaceholders[] = {"To Be Filled By O.E.M.",
                                         "To be filled by O.E.M.",
                                         "Not Specified",
                                         "Default string",
                                         "System Serial Number",
                                         "None",
                                         "0123456789"};
constexpr const char* kCpus[] = {"Example CPU E5-2630 v3 @ 2.40GHz",
                                 "Example(R) Gold 6130 CPU @ 2.10GHz", "EXC 7451 24-Core Processor",
                                 "Genuine Example 8352Y"};

std::string uuid(Random& random) {
    return upper(random.hex(8) + "-" + random.hex(4) + "-4" + random.hex(3) + "-8" + random.hex(3) +
                 "-" + random.hex(12));
}

void invent_machine(Server& server, Random& random) {
    server.is_virtual = random.chance(8);
    server.has_bmc = !server.is_virtual && random.chance(95);
    if (server.is_virtual) {
        server.platform = Platform::unknown;
        const bool is_qemu = random.chance(60);
        server.manufacturer = is_qemu ? "QEMU" : "VMware, Inc.";
        server.product = is_qemu ? "Standard PC (Q35 + ICH9, 2009)" : "VMware Virtual Platform";
        server.version = is_qemu ? "pc-q35-6.2" : "None";
        server.firmware = is_qemu ? "rel-1.14.0-0-g155821a1990b" : "6.00";
    } else {
        server.manufacturer = random.pick(kMakers);
        const auto& product = random.pick(kProducts);
        server.product = product.name;
        server.platform = product.platform;
        // Where there is no BMC, the plug-in may ask for one all the same.
        if (!server.has_bmc && random.chance(60)) {
            server.product = random.pick(kUnknownProducts);
            server.platform = Platform::unknown;
        }
        server.version = random.digits(2);
        server.firmware = random.capitals(4) + " " + random.digits(1) + "." + random.digits(2);
    }
    server.serial = random.chance(15) ? random.pick(kPlaceholders) : "EX" + random.capitals(8);
    server.asset_tag = random.chance(50) ? random.pick(kPlaceholders) : "rack " + random.digits(3);
    server.uuid = random.chance(8) ? "00000000-0000-0000-0000-000000000000" : uuid(random);
    server.release_date = "05/18/2024";
    server.board = "EX-MB-" + random.capitals(3);
    server.chassis_type = "Rack Mount Chassis";
    server.kernel = random.chance(50) ? "5.14.21-150500.55-default" : "5.10.0-28-amd64";

    const int sockets = server.is_virtual ? random.between(1, 4) : random.between(1, 2);
    const std::string model = random.pick(kCpus);
    const int cores = server.is_virtual ? 1 : random.between(2, 12) * 2;
    const bool is_threaded = !server.is_virtual && random.chance(70);
    for (int at = 0; at < sockets; ++at)
        server.processors.push_back({(random.chance(50) ? "CPU " : "Proc") + std::to_string(at + 1),
                                     model, cores, is_threaded ? cores * 2 : cores});
    if (!server.is_virtual && random.chance(20))
        server.processors.push_back({"CPU " + std::to_string(sockets + 1), "", 0, 0, false});

    const int slots = server.is_virtual ? 1 : random.between(2, 12);
    const bool is_ddr4 = random.chance(70);
    const int megabytes = 4096 << random.below(4);
    const bool has_names = random.chance(60);
    for (int at = 0; at < slots; ++at) {
        MemoryModule one;
        one.slot =
            has_names ? "PROC " + std::to_string(at / 6 + 1) + " DIMM " + std::to_string(at % 6 + 1)
                      : "DIMM_" + std::string(1, static_cast<char>('A' + at)) + "1";
        one.bank = has_names ? "Not Specified" : "NODE " + std::to_string(at / 6 + 1);
        one.is_there = at == 0 || random.chance(70);
        one.megabytes = megabytes;
        one.type = is_ddr4 ? "DDR4" : "DDR3";
        one.rated_speed = is_ddr4 ? 2666 : 1600;
        one.speed = random.chance(50) ? one.rated_speed : (is_ddr4 ? 2400 : 1333);
        one.manufacturer = "Example Memory";
        one.serial = upper(random.hex(8));
        one.part = "EXM" + random.capitals(6) + "-" + random.capitals(4);
        server.memory.push_back(one);
    }
}

// ---- The BMC ----------------------------------------------------------------------------------------

// A reading of IPMI has a few significant digits, and its thresholds the same.
struct Range {
    double least, most, step;
    int decimals;
};

double reading_in(const Range& range, Random& random) {
    const int steps = static_cast<int>((range.most - range.least) / range.step);
    return range.least + range.step * random.between(0, steps);
}

Sensor temperature(Random& random, const std::string& name, const std::string& entity) {
    Sensor one;
    one.name = name;
    one.kind = "temperature";
    one.unit = "degrees C";
    one.entity = entity;
    one.reading = reading_in({20, 60, 1, 0}, random);
    if (random.chance(5)) *one.reading += 0.5;
    one.unc = 80 + random.below(10);
    one.uc = *one.unc + 5;
    if (random.chance(60)) one.unr = *one.uc + 5;
    if (random.chance(30)) {
        one.lc = 0;
        one.lnc = 5;
    }
    return one;
}

Sensor fan(Random& random, const std::string& name, int at) {
    Sensor one;
    one.name = name;
    one.kind = "fan";
    one.unit = "RPM";
    one.entity = "29." + std::to_string(at);
    one.reading = random.between(30, 90) * 120;
    one.lnc = 960;
    one.lc = 720;
    if (random.chance(50)) one.lnr = 480;
    one.is_high = false;
    one.role = "fan";
    return one;
}

Sensor voltage(Random& random, const std::string& name, double nominal) {
    Sensor one;
    one.name = name;
    one.kind = "voltage";
    one.unit = "Volts";
    one.decimals = 3;
    const auto round = [](double value) {
        return static_cast<double>(static_cast<int>(value * 1000 + 0.5)) / 1000;
    };
    one.reading = round(nominal * (0.98 + 0.001 * random.below(40)));
    one.lc = round(nominal * 0.9);
    one.lnc = round(nominal * 0.94);
    one.unc = round(nominal * 1.06);
    one.uc = round(nominal * 1.1);
    if (random.chance(20)) {
        one.lnr = round(nominal * 0.85);
        one.unr = round(nominal * 1.15);
    }
    return one;
}

Sensor discrete(const std::string& name, const std::string& entity, const std::string& role,
                std::vector<std::pair<int, std::string>> states) {
    Sensor one;
    one.name = name;
    one.kind = "discrete";
    one.unit = "discrete";
    one.entity = entity;
    one.role = role;
    one.states = std::move(states);
    return one;
}

void invent_sensors(Server& server, Random& random) {
    auto& sensors = server.bmc.sensors;
    const bool repeats = random.chance(30);  // some makers call every one of them "Temp"
    for (int cpu = 1; cpu <= static_cast<int>(server.processors.size()); ++cpu)
        sensors.push_back(temperature(random,
                                      repeats ? "Temp" : "CPU" + std::to_string(cpu) + " Temp",
                                      "3." + std::to_string(cpu)));
    for (const char* name :
         {"Inlet Temp", "Exhaust Temp", "PCH Temp", "NVMe BP Temp", "P1-DIMM1A"}) {
        if (random.chance(70)) sensors.push_back(temperature(random, name, "7.1"));
    }
    const int fans = random.between(2, 8);
    for (int at = 1; at <= fans; ++at)
        sensors.push_back(
            fan(random,
                (repeats ? "Fan" + std::to_string(at) + "A RPM" : "FAN" + std::to_string(at)), at));
    for (const auto& [name, nominal] : {std::pair("12V", 12.0), std::pair("5VCC", 5.0),
                                        std::pair("3.3VCC", 3.3), std::pair("Vcpu 1", 1.8)}) {
        if (random.chance(80)) sensors.push_back(voltage(random, name, nominal));
    }
    if (random.chance(60)) {
        auto battery = voltage(random, random.chance(50) ? "VBAT" : "CMOS Battery", 3.0);
        battery.role = "clock battery";
        battery.entity = "40.1";
        sensors.push_back(battery);
    }
    for (const auto& supply : server.bmc.supplies) {
        const auto digit = std::to_string(supply.number);
        const auto entity = "10." + digit;
        if (random.chance(60)) {
            Sensor watts;
            watts.name = "PSU" + digit + " Input";
            watts.kind = "power";
            watts.unit = "Watts";
            watts.entity = entity;
            watts.reading = supply.watts;
            sensors.push_back(watts);
        }
        if (random.chance(30)) {
            Sensor amperes;
            amperes.name = "PSU" + digit + " Iout";
            amperes.kind = "current";
            amperes.unit = "Amps";
            amperes.entity = entity;
            amperes.reading = 0.5 * random.between(2, 60);
            amperes.decimals = 3;
            sensors.push_back(amperes);
        }
        std::vector<std::pair<int, std::string>> states;
        if (supply.is_present) states.emplace_back(0, "Presence detected");
        sensors.push_back(
            discrete((repeats ? "PS" : "PSU") + digit + " Status", entity, "psu" + digit, states));
    }
    if (server.bmc.supplies.size() > 1 && random.chance(80))
        sensors.push_back(discrete(random.chance(50) ? "PSU Redundancy" : "PS Redundancy", "19.1",
                                   "psu redundancy", {{0, "Fully Redundant"}}));
    if (random.chance(60))
        sensors.push_back(
            discrete("Fan Redundancy", "29.1", "fan redundancy", {{0, "Fully Redundant"}}));
    if (random.chance(60)) sensors.push_back(discrete("Chassis Intru", "23.1", "intrusion", {}));
    for (int cpu = 1; cpu <= static_cast<int>(server.processors.size()); ++cpu) {
        std::vector<std::pair<int, std::string>> states;
        if (server.processors[static_cast<std::size_t>(cpu - 1)].is_there)
            states.emplace_back(7, "Presence detected");
        sensors.push_back(discrete("CPU" + std::to_string(cpu) + " Status",
                                   "3." + std::to_string(cpu), "cpu" + std::to_string(cpu),
                                   states));
    }
    if (random.chance(70)) sensors.push_back(discrete("Memory ECC", "8.1", "memory", {}));
    if (random.chance(50))
        sensors.push_back(discrete("ACPI State", "7.1", "", {{0, "S0/G0: working"}}));
    if (random.chance(50)) {
        for (int bay = 0; bay < random.between(2, 8); ++bay) {
            std::vector<std::pair<int, std::string>> states;
            if (random.chance(80)) states.emplace_back(0, "Drive Present");
            sensors.push_back(discrete("Drive Bay " + std::to_string(bay),
                                       "15." + std::to_string(bay + 1), "bay", states));
        }
    }
    int number = random.between(1, 16);
    for (auto& sensor : sensors) {
        sensor.number = number++;
        if (sensor.kind != "discrete" && sensor.role.empty() && random.chance(6)) {
            sensor.reading.reset();
            sensor.status = "na";
        }
    }
    // A server has one sensor of each kind at least that tells something.
    for (auto& sensor : sensors) {
        if (sensor.status == "na") {
            const bool is_alone =
                std::none_of(sensors.begin(), sensors.end(), [&](const Sensor& other) {
                    return other.kind == sensor.kind && other.status != "na";
                });
            if (is_alone) {
                sensor.reading = 30;
                sensor.status = "ok";
            }
        }
    }
}

void invent_frus(Server& server, Random& random) {
    auto& frus = server.bmc.frus;
    Fru builtin;
    builtin.device = "Builtin FRU Device (ID 0)";
    builtin.has_chassis = random.chance(70);
    builtin.has_board = true;
    builtin.has_product = random.chance(85);
    builtin.manufacturer = server.manufacturer;
    builtin.product = server.product;
    builtin.part = "EX" + random.digits(4) + "-R";
    builtin.serial = "EX" + random.capitals(8);
    builtin.board_manufacturer = "Example Boards";
    builtin.board_product = server.board;
    builtin.board_part = server.board + "-01";
    builtin.board_serial = "EXB" + random.capitals(7);
    frus.push_back(builtin);
    int id = 1;
    for (const auto& supply : server.bmc.supplies) {
        if (!supply.is_present) continue;
        Fru one;
        one.device =
            "PSU" + std::to_string(supply.number) + " FRU (ID " + std::to_string(id++) + ")";
        one.has_product = true;
        one.manufacturer = "Example Power";
        one.product = supply.model;
        one.part = "EX-PS800";
        one.serial = supply.serial;
        frus.push_back(one);
    }
    if (random.chance(40)) {
        Fru empty;
        empty.device = "Riser1 FRU (ID " + std::to_string(id++) + ")";
        frus.push_back(empty);
    }
    if (random.chance(50)) {
        Fru backplane;
        backplane.device = "Backplane FRU (ID " + std::to_string(id++) + ")";
        backplane.has_board = true;
        backplane.board_manufacturer = "Example Systems";
        backplane.board_product = "EX-BP-12";
        backplane.board_part = "EX-BP-12-SAS3";
        backplane.board_serial = "BP" + random.digits(6);
        frus.push_back(backplane);
    }
}

SelEntry sel(SelKind kind, const char* severity, const char* source, const std::string& type,
             const std::string& sensor, const std::string& detail, const std::string& rest,
             const std::string& words) {
    return {kind, {}, severity, source, type, sensor, detail, rest, words};
}

void invent_sel(Server& server, Random& random) {
    auto& log = server.bmc.sel;
    const int entries = random.between(0, 40);
    std::vector<const Sensor*> analog;
    for (const auto& sensor : server.bmc.sensors) {
        if (sensor.kind == "temperature" && sensor.status == "ok" && sensor.unc)
            analog.push_back(&sensor);
    }
    for (int at = 0; at < entries; ++at) {
        switch (random.below(6)) {
            case 0:
                log.push_back(sel(SelKind::quiet, "INF", "BMC ", "ACPI Power State", "32",
                                  "S0/G0 Working", "6f [00 ff ff]", "S0/G0"));
                break;
            case 1:
                log.push_back(sel(SelKind::quiet, "INF", "Sms ", "System Event", "83",
                                  "OEM System Booted", "6f [01 ff ff]", "OEM System"));
                break;
            case 2:
                log.push_back(sel(SelKind::quiet, "INF", "EFI ", "System Firmware", "06",
                                  "prog, Starting OS boot", "6f [c2 13 ff]", "boot"));
                break;
            case 3:
                log.push_back(sel(SelKind::quiet, "MIN", "BMC ", "Button", "fe",
                                  "Power Button pressed", "6f [00 ff ff]", "Power Button"));
                break;
            case 4:
                log.push_back(sel(SelKind::quiet, "INF", "BMC ", "Event Log", "fd", "Log Cleared",
                                  "6f [02 ff ff]", "Log"));
                break;
            default:
                if (analog.empty() || !random.chance(40)) break;
                const auto* sensor = random.pick(analog);
                const bool is_critical = random.chance(40);
                const auto raw = random.between(80, 110);
                log.push_back(sel(SelKind::threshold, is_critical ? "MAJ" : "MIN", "BMC ",
                                  "Temperature", hex(static_cast<std::uint64_t>(sensor->number), 2),
                                  is_critical ? "Hi Crit thresh" : "Hi Noncrit thresh",
                                  "act=" + hex(static_cast<std::uint64_t>(raw), 2) +
                                      " thr=" + hex(static_cast<std::uint64_t>(raw - 2), 2),
                                  "Crit"));
        }
    }
    Seconds time = server.now - Seconds{86400} * random.between(60, 400);
    const auto step = (server.now - time) / (static_cast<Seconds>(log.size()) + 1);
    for (auto& entry : log) {
        if (entry.words == "Crit" && entry.severity == "MIN") entry.words = "Noncrit";
        time += step - random.between(0, static_cast<int>(step / 2));
        if (!random.chance(4)) entry.time = time;
    }
}

void invent_bmc(Server& server, Random& random) {
    auto& bmc = server.bmc;
    bmc.firmware = random.digits(1) + "." + random.digits(2);
    bmc.address = "192.0.2." + std::to_string(random.between(2, 250));
    bmc.mac = "02:00:00:" + random.hex(2) + ":" + random.hex(2) + ":" + random.hex(2);
    const int supplies = random.between(1, 2);
    const std::string model = random.chance(50) ? "EX-PS800" : "EX PS800 Platinum";
    for (int at = 1; at <= supplies; ++at) {
        PowerSupply one;
        one.number = at;
        one.model = model;
        one.serial = "PS" + random.capitals(7);
        one.firmware = random.digits(1) + "." + random.digits(2);
        one.watts = random.between(80, 400);
        bmc.supplies.push_back(one);
    }
    invent_sensors(server, random);
    invent_frus(server, random);
    invent_sel(server, random);
}

// ---- Storage ----------------------------------------------------------------------------------------

struct DriveModel {
    const char* vendor;
    const char* model;
    const char* interface;
    bool is_ssd;
    int sector;
    std::int64_t sectors;
};

constexpr DriveModel kDriveModels[] = {
    {"ATA", "EXM SSDA480G2", "SATA", true, 512, 935544832},
    {"ATA", "Example SSD 850 PRO 512GB", "SATA", true, 512, 999079936},
    {"EXAMPLE", "EX1200MM0129", "SAS", false, 512, 2339061760},
    {"EXAMPLE", "EX2400MM0129", "SAS", false, 4096, 4684001280},
    {"EXAMPLE", "EX300MM0048", "SAS", false, 512, 584843264},
    {"EXCHIP", "PX05SVB040", "SAS", true, 512, 779296768},
    {"EXCHIP", "X371_S163A960ATE", "SAS", true, 4096, 1875374080},
    {"ATA", "EX4000NM0033-9ZM170", "SATA", false, 512, 7812939776},
    {"HGST-EX", "HUH 72  1008AL4200", "SAS", false, 4096, 15626928128},
    {"ATA", "EX2TB  N/A - 4 KB (U) N", "SATA", false, 512, 3905945600},
};
constexpr const char* kVolumeNames[] = {
    "",   "system", "data pool", "VD_0",     "Virtual Disk0", "R5 - 4 TB",
    "OS", "",       "a b  c",    "100.0 GB", "Optl",          "scratch_1"};

Drive invent_drive(Random& random, const DriveModel& model) {
    Drive drive;
    drive.vendor = model.vendor;
    drive.model = model.model;
    drive.interface = model.interface;
    drive.is_ssd = model.is_ssd;
    drive.sector = model.sector;
    drive.sectors = model.sectors;
    drive.serial = random.capitals(8);
    drive.wwn = "5000" + upper(random.hex(12));
    drive.firmware = "EX" + random.digits(2);
    drive.temperature = random.between(22, 45);
    drive.state = "UGood";
    return drive;
}

struct RaidLevel {
    const char* name;
    int spans, least, most;  // drives of a span
    int parity;              // drives of a span that hold no data; -1: mirrored
};
constexpr RaidLevel kLevels[] = {
    {"RAID0", 1, 1, 4, 0},  {"RAID1", 1, 2, 2, -1},  {"RAID5", 1, 3, 6, 1},
    {"RAID6", 1, 4, 8, 2},  {"RAID10", 2, 2, 2, -1}, {"RAID10", 4, 2, 2, -1},
    {"RAID50", 2, 3, 3, 1}, {"RAID60", 2, 4, 4, 2},
};

std::int64_t data_sectors(const RaidLevel& level, int of_span, std::int64_t drive) {
    const int with_data = level.parity < 0 ? 1 : of_span - level.parity;
    return level.spans * with_data * drive;
}

// Integrated RAID knows stripes and mirrors alone.
bool knows(StorageTool tool, const RaidLevel& level) {
    return tool != StorageTool::sas2ircu || level.parity <= 0;
}

void invent_groups(Controller& controller, Random& random, StorageTool tool) {
    const int most_groups = tool == StorageTool::storcli ? 3 : 2;
    int volume = 0;
    const int groups = random.between(0, most_groups);
    for (int number = 0; number < groups; ++number) {
        const auto& level = random.pick(kLevels);
        if (!knows(tool, level)) continue;
        const auto& model = random.pick(kDriveModels);
        const int of_span = random.between(level.least, level.most);
        Group group;
        group.number = number;
        group.raid = level.name;
        group.sectors = data_sectors(level, of_span, model.sectors);
        group.spans.assign(static_cast<std::size_t>(level.spans), "Optl");
        for (int span = 0; span < level.spans; ++span) {
            for (int row = 0; row < of_span; ++row) {
                auto drive = invent_drive(random, model);
                drive.state = "Onln";
                drive.group = number;
                drive.span = span;
                drive.row = row;
                controller.drives.push_back(drive);
            }
        }
        if (random.chance(15) && level.parity != 0) {
            auto spare = invent_drive(random, model);
            spare.state = "DHS";
            spare.group = number;
            spare.span = -1;
            controller.drives.push_back(spare);
        }
        controller.groups.push_back(group);
        const int volumes = random.chance(25) ? 2 : 1;
        for (int at = 0; at < volumes; ++at) {
            Volume one;
            one.group = number;
            one.number = volume++;
            one.sectors = volumes == 1 ? group.sectors : group.sectors / (at == 0 ? 4 : 2);
            one.name = random.pick(kVolumeNames);
            static constexpr const char* kCaches[] = {"RWBD", "NRWTD", "RWTC", "NRWBD", "RaWTD"};
            one.cache = random.pick(kCaches);
            one.is_consistent = random.chance(60);
            controller.volumes.push_back(one);
        }
    }
}

void invent_loose_drives(Controller& controller, Random& random) {
    const bool is_hba = controller.mode == Mode::hba;
    const int most = is_hba ? 12 : 3;
    const int count = random.between(controller.drives.empty() ? 1 : 0, most);
    for (int at = 0; at < count; ++at) {
        auto drive = invent_drive(random, random.pick(kDriveModels));
        drive.state = is_hba ? "JBOD" : "UGood";
        if (!is_hba && random.chance(20)) drive.state = "JBOD";
        if (!is_hba && drive.state == "UGood") {
            if (random.chance(40)) drive.state = "GHS";
            drive.is_spun_up = random.chance(40);
        }
        controller.drives.push_back(drive);
    }
}

// Slots and device ids, in enclosures and outside of them.
void place_drives(Controller& controller, Random& random, StorageTool tool) {
    const int drives = static_cast<int>(controller.drives.size());
    const bool can_be_outside = tool == StorageTool::storcli;
    const bool all_outside = can_be_outside && random.chance(6);
    const int outside = all_outside                           ? drives
                        : can_be_outside && random.chance(12) ? std::min(2, drives)
                                                              : 0;
    int device_id = random.between(0, 12);
    static constexpr int kIds[] = {252, 32, 134, 8, 10, 0, 64};
    const int first_id = random.pick(kIds);
    int enclosure = -1;
    int slot = 0;
    const int slots = random.chance(50) ? 8 : 24;
    for (int at = 0; at < drives; ++at) {
        auto& drive = controller.drives[static_cast<std::size_t>(at)];
        drive.device_id = device_id++;
        if (at >= drives - outside) {
            drive.slot = at + 5;
            continue;
        }
        if (enclosure < 0 || slot >= slots) {
            ++enclosure;
            Enclosure one;
            one.id = first_id + enclosure;
            one.slots = slots;
            static constexpr const char* kShelves[] = {"virtualSES", "EX12BAY6", "BP13G+",
                                                       "DS22412IOM12A"};
            one.product = random.pick(kShelves);
            if (random.chance(30)) one.vendor_words = "x48-0.10." + random.digits(2);
            if (random.chance(30)) one.port = "Port 0-3";
            one.supplies = random.chance(30) ? 2 : 0;
            one.fans = random.chance(30) ? 4 : 0;
            one.sensors = random.chance(30) ? 3 : 0;
            controller.enclosures.push_back(one);
            slot = random.chance(70) ? 0 : 1;
        }
        drive.enclosure = controller.enclosures.back().id;
        drive.slot = slot++;
        if (random.chance(10)) ++slot;
    }
    for (auto& one : controller.enclosures) {
        for (const auto& drive : controller.drives) {
            if (drive.enclosure == one.id) one.slots = std::max(one.slots, drive.slot + 1);
        }
    }
}

void invent_controller_events(Controller& controller, Random& random, Seconds now) {
    const int count = random.between(0, 25);
    Seconds time = now - Seconds{86400} * random.between(40, 300);
    const auto room = (now - time) / (count + 1);
    int since = 0;
    for (int at = 0; at < count; ++at) {
        ControllerEvent event;
        if (at < 3) {
            event.since_reboot = since;
            since += random.between(1, 9);
        } else {
            event.time = time;
        }
        time += room > 3600 ? room - random.between(0, 3000) : 60;
        struct Words {
            int code, level, locale;
            const char* words;
        };
        static constexpr Words kEventWords[] = {
            {0x93, 0, 0x08, "Battery started charging"},
            {0x92, 0, 0x08, "Battery charge complete"},
            {0x27, 0, 0x20, "Patrol Read started"},
            {0x23, 0, 0x20, "Patrol Read complete"},
            {0x41, -1, 0x01, "Consistency Check progress on VD 02/2 is 3.13%(109s)"},
            {0x1e, 0, 0x20, "Firmware version 4.680.00-8465"},
            {0x44, 0, 0x20, "Time established as 11/12/25 12:55:47; (31 seconds since power on)"},
        };
        const auto& words = random.pick(kEventWords);
        event.code = words.code;
        event.level = words.level;
        event.locale = words.locale;
        event.words = words.words;
        if (event.level == -1)
            event.data = {"Target Id: 2", "Progress: 8%", "Elapsed seconds: 6511"};
        controller.events.push_back(event);
    }
}

Controller invent_controller(Random& random, int number, StorageTool tool, Mode mode, Seconds now) {
    static constexpr const char* kRaidModels[] = {
        "AVAGO MegaRAID SAS 9361-8i", "LSI MegaRAID SAS 9266-8i", "PERC H730 Mini",
        "Cisco 12G Modular Raid Controller with 2GB cache (max 16 drives)"};
    static constexpr const char* kHbaModels[] = {"HBA 9500-16e", "HBA 9400-16i", "UCSC-SAS-M5HD"};
    Controller one;
    one.number = number;
    one.mode = mode;
    one.model = mode == Mode::raid ? random.pick(kRaidModels) : random.pick(kHbaModels);
    if (tool == StorageTool::arcconf) one.model = "Adaptec ASR" + random.digits(4);
    if (tool == StorageTool::sas2ircu) one.model = "SAS2308_2";
    one.serial = "S" + random.capitals(2) + random.digits(7);
    one.package = mode == Mode::raid ? "24.21.0-0" + random.digits(3) : "36.00.00.00";
    one.firmware =
        mode == Mode::raid ? "4.680.00-8" + random.digits(3) : "36.00.00.0" + random.digits(1);
    one.bios = "6.36.00.3_4.19.08.00_0x06180203";
    one.driver = mode == Mode::raid ? "megaraid_sas" : "mpt3sas";
    one.driver_version = "07.725.01.00-rc1";
    one.pci_address = "00:" + hex(static_cast<std::uint64_t>(0x03 + number * 0x11), 2) + ":00:00";
    if (random.chance(10)) one.clock_off = 9 * 3600;  // another zone is no wrong clock
    if (tool == StorageTool::arcconf) one.firmware = "7.5-0 (32" + random.digits(3) + ")";
    if (tool == StorageTool::sas2ircu) one.firmware = "20.00.0" + random.digits(1) + ".00";
    if (mode == Mode::raid) invent_groups(one, random, tool);
    if (tool == StorageTool::storcli || one.drives.empty()) invent_loose_drives(one, random);
    if (tool != StorageTool::storcli) {
        for (auto& drive : one.drives) {
            if (drive.state == "UGood" || drive.state == "JBOD") drive.state = "UGood";
        }
    }
    place_drives(one, random, tool);
    if (mode == Mode::raid && random.chance(60)) {
        Battery battery;
        battery.is_cachevault = random.chance(60);
        battery.model = battery.is_cachevault ? "CVPM05" : "iBBU-09";
        battery.temperature = random.between(24, 42);
        one.battery = battery;
    }
    if (tool == StorageTool::storcli && mode == Mode::raid)
        invent_controller_events(one, random, now);
    settle(one);
    return one;
}

void invent_storage(Server& server, Random& random) {
    if (server.is_virtual) return;
    const int kind = random.below(100);
    server.storage_tool = kind < 75   ? StorageTool::storcli
                          : kind < 87 ? StorageTool::arcconf
                          : kind < 95 ? StorageTool::sas2ircu
                                      : StorageTool::none;
    static constexpr StorcliForm kForms[] = {StorcliForm::v1_03, StorcliForm::v1_2x,
                                             StorcliForm::v7_06, StorcliForm::v7_12,
                                             StorcliForm::v7_12};
    server.form = random.pick(kForms);
    // A random number of its own, so that the rest of each server stays as it was.
    if (Random odd(server.seed ^ 0xc01); odd.chance(10)) server.odd_column = odd.between(1, 20);
    server.has_ahci = random.chance(30);
    if (server.storage_tool == StorageTool::none) return;
    int count = 1;
    if (server.storage_tool == StorageTool::storcli) {
        const int roll = random.below(100);
        count = roll < 55 ? 1 : roll < 85 ? 2 : random.between(3, 12);
    }
    for (int number = 0; number < count; ++number) {
        const bool is_hba = server.storage_tool == StorageTool::storcli &&
                            server.form == StorcliForm::v7_12 && random.chance(25);
        const int shown = server.storage_tool == StorageTool::arcconf ? number + 1 : number;
        server.controllers.push_back(invent_controller(
            random, shown, server.storage_tool, is_hba ? Mode::hba : Mode::raid, server.now));
    }
}

// Arrays on drives of their own, or on further partitions of the first array's.
void invent_arrays(Server& server) {
    Random random(server.seed ^
                  0x3d);  // of its own, so that the rest of each server stays as it was
    if (server.is_virtual || !random.chance(25)) return;
    struct Shape {
        const char* raid;
        int least, most;
    };
    static constexpr Shape kShapes[] = {{"raid0", 2, 3}, {"raid1", 2, 2}, {"raid1", 3, 3},
                                        {"raid5", 3, 5}, {"raid6", 4, 6}, {"raid10", 4, 4}};
    char letter = 'k';
    const int count = random.between(1, 2);
    for (int at = 0; at < count; ++at) {
        const auto& shape = random.pick(kShapes);
        Array array;
        array.name = "md" + std::to_string(at == 0 ? 0 : random.pick(std::vector{1, 127}));
        array.raid = shape.raid;
        array.places = random.between(shape.least, shape.most);
        array.blocks = std::int64_t{1046528} * random.between(1, 900);
        array.is_written_to = random.chance(30);
        const int spares = array.raid != "raid0" && random.chance(40) ? 1 : 0;
        const bool shares = at > 0 && random.chance(50);
        char next = shares ? 'k' : letter;
        for (int place = 0; place < array.places + spares; ++place) {
            ArrayMember member;
            member.device = std::string("sd") + next++ + (shares ? "2" : "1");
            member.number = place;
            member.place = place < array.places ? place : -1;
            member.state = place < array.places ? "active sync" : "spare";
            array.members.push_back(member);
        }
        letter = std::max(letter, next);
        server.arrays.push_back(array);
    }
}

void invent_pool(Server& server) {
    Random random(server.seed ^ 0x2f5);  // of its own as well
    if (server.is_virtual || !random.chance(15)) return;
    static constexpr const char* kRaids[] = {"mirror", "raidz1", "raidz2"};
    Pool pool;
    pool.name = random.chance(50) ? "tank" : "rpool";
    pool.raid = random.pick(kRaids);
    const int least = pool.raid == "mirror" ? 2 : pool.raid == "raidz1" ? 3 : 4;
    const int count = random.between(least, pool.raid == "mirror" ? 3 : 6);
    for (int at = 0; at < count; ++at) {
        PoolMember member;
        member.device = std::string("sdb") + static_cast<char>('a' + at);
        pool.members.push_back(member);
    }
    if (random.chance(30)) pool.spare = "sdbz";
    server.pool = pool;
}

// ---- The kernel -------------------------------------------------------------------------------------

void invent_dmesg(Server& server, Random& random) {
    auto& lines = server.dmesg;
    const auto add = [&](std::string text) {
        lines.push_back({KernelKind::quiet, std::move(text)});
    };
    add("Linux version " + server.kernel +
        " (geeko@buildhost) (gcc (SUSE Linux) 7.5.0) #1 SMP PREEMPT_DYNAMIC");
    add("Command line: BOOT_IMAGE=/boot/vmlinuz-" + server.kernel + " quiet");
    add("DMI: " + server.manufacturer + " " + server.product + "/" + server.board + ", BIOS " +
        server.firmware + " " + server.release_date);
    add("smpboot: CPU0: " + server.processors.front().model +
        " (family: 0x6, model: 0x3f, stepping: 0x2)");
    add("ACPI: bus type PCI registered");
    if (random.chance(50)) add("EDAC MC: Ver: 3.0.0");
    if (random.chance(50)) add("mce: CPU0: Thermal monitoring enabled (TM1)");
    if (server.has_bmc)
        add("ipmi_si dmi-ipmi-si.0: Found new BMC (man_id: 0x004f4d, prod_id: 0x00dc, dev_id: 0x20)");
    for (const auto& controller : server.controllers) {
        if (controller.mode == Mode::raid && server.storage_tool == StorageTool::storcli)
            add("megaraid_sas 0000:" + controller.pci_address.substr(3, 2) +
                ":00.0: FW now in Ready state");
    }
    add("sd 0:2:0:0: [sda] 1951170560 512-byte logical blocks: (999 GB/930 GiB)");
    add("sd 0:2:0:0: [sda] Attached SCSI disk");
    add("EXT4-fs (sda2): mounted filesystem with ordered data mode");
    add("igb 0000:07:00.0 eth0: NIC Link is Up 1000 Mbps Full Duplex");
    if (random.chance(30))
        add("ERST: Error Record Serialization Table (ERST) support is initialized.");
    if (random.chance(30)) add("systemd[1]: Reached target Local File Systems.");
}

}  // namespace

Server invent(std::uint64_t seed, Seconds now) {
    Random random(seed);
    Server server;
    server.seed = seed;
    server.now = now;
    invent_machine(server, random);
    if (server.has_bmc) invent_bmc(server, random);
    invent_storage(server, random);
    invent_arrays(server);
    invent_pool(server);
    invent_dmesg(server, random);
    return server;
}

// ---- States -----------------------------------------------------------------------------------------

namespace {

int rank(const std::string& state) {
    return state == "Optl" ? 0 : state == "Pdgd" ? 1 : state == "Dgrd" ? 2 : 3;
}

std::string state_of_span(const std::string& raid, int lost) {
    if (lost == 0) return "Optl";
    if (raid == "RAID0") return "OfLn";
    const bool has_two = raid == "RAID6" || raid == "RAID60";
    if (lost == 1) return has_two ? "Pdgd" : "Dgrd";
    return has_two && lost == 2 ? "Dgrd" : "OfLn";
}

}  // namespace

void settle(Controller& controller) {
    for (auto& group : controller.groups) {
        group.state = "Optl";
        for (std::size_t span = 0; span < group.spans.size(); ++span) {
            int lost = 0;
            for (const auto& drive : controller.drives) {
                const bool is_of_it =
                    drive.group == group.number && drive.span == static_cast<int>(span);
                if (is_of_it && (drive.is_missing || drive.state != "Onln")) ++lost;
            }
            group.spans[span] = state_of_span(group.raid, lost);
            if (rank(group.spans[span]) > rank(group.state)) group.state = group.spans[span];
        }
        for (auto& volume : controller.volumes) {
            if (volume.group == group.number) volume.state = group.state;
        }
    }
}

}  // namespace truth
