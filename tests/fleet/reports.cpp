#include "reports.h"

#include "bundle/write_bundle.h"
#include "files/new_file.h"
#include "files/temporary_directory.h"
#include "store/store.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace test {

namespace fs = std::filesystem;
using namespace qvhost;

Report healthy_report(const std::string& name, const std::string& started) {
    Report report;
    report.meta = {
        {"host", name},
        {"machine_id", "id-" + name},
        {"started", started},
        {"finished", started},
        {"status", "complete"},
        {"qvhost", "1.0.0"},
        {"os", "Debian GNU/Linux 12"},
        {"uptime_seconds", "86400"},
    };
    auto& inventory = report.inventory;
    inventory::System system;
    system.place = {"dmidecode.txt", 3};
    system.manufacturer = "Example";
    system.product = "EX100";
    system.serial = "SN-" + name;
    system.firmware = "2.1";
    system.is_virtual = false;
    inventory.systems.push_back(system);
    inventory::Bmc bmc;
    bmc.place = {"bmc_mc.txt", 1};
    bmc.firmware = "4.10";
    bmc.ipmi = "2.0";
    inventory.bmcs.push_back(bmc);
    for (int slot = 0; slot < 2; ++slot) {
        const auto number = std::to_string(slot);
        inventory::MemoryModule module;
        module.place = {"dmidecode.txt", 10 + slot};
        module.slot = "DIMM_A" + number;
        module.capacity_bytes = std::int64_t{16} << 30;
        module.type = "DDR4";
        module.speed_mts = 3200;
        module.manufacturer = "Example";
        module.serial = "MM-" + name + "-" + number;
        module.part = "EXM16";
        inventory.memory_modules.push_back(module);
        inventory::Drive drive;
        drive.place = {"c0_drives.txt", 5 + slot};
        drive.controller = 0;
        drive.enclosure = 252;
        drive.slot = slot;
        drive.state = "Onln";
        drive.model = "EX4000";
        drive.serial = "DR-" + name + "-" + number;
        drive.firmware = "0004";
        drive.media_errors = 0;
        drive.is_foreign = false;
        inventory.drives.push_back(drive);
        inventory::Sensor sensor;
        sensor.place = {"bmc_sensor.txt", 1 + slot};
        sensor.name = "Temp " + number;
        sensor.kind = "temperature";
        sensor.reading = 40.5 + slot;
        sensor.unit = "degrees C";
        sensor.status = "ok";
        inventory.sensors.push_back(sensor);
    }
    inventory::Event event;
    event.place = {"bmc_sel.txt", 1};
    event.source = "bmc";
    event.time = "2026-01-01T00:00:00";
    event.severity = inventory::Severity::info;
    event.text = "Log area reset";
    report.events.push_back(event);
    report.verdict.health = {
        {findings::Subsystem::storage, findings::HealthWord::ok, {"c0_drives.txt"}, {}},
        {findings::Subsystem::memory, findings::HealthWord::ok, {"dmidecode.txt"}, {}},
    };
    report.captures = {{"dmidecode.txt", "of " + name + "\n"}, {"lspci.txt", "the same\n"}};
    return report;
}

namespace {

fs::path write_bundle(const Report& report, const fs::path& dir, const std::string& name,
                      const std::vector<std::string>& beside_captures) {
    const TemporaryDirectory place("qvfleet-report");
    fs::create_directory(place.path() / "report");
    const auto file = place.path() / "report" / "report.sqlite";
    {
        Store store(file, Store::Mode::create);
        for (const auto& [key, value] : report.meta) store.set_meta(key, value);
        write_inventory(store, report.inventory);
        EventWriter events(store);
        for (const auto& event : report.events) events.add(event);
        write_verdict(store, report.verdict);
        store.commit();
    }
    bundle::Order order;
    order.log_dir = place.path();
    order.names = beside_captures;
    for (const auto& [capture, text] : report.captures) {
        write_new_file(place.path() / capture, text);
        order.names.push_back(capture);
    }
    order.output = dir / (name + ".tar.zst");
    bundle::write_bundle(Store(file, Store::Mode::read), "test", order);
    return order.output;
}

}  // namespace

fs::path bundle_of(const Report& report, const fs::path& dir, const std::string& name) {
    return write_bundle(report, dir, name, {"report"});
}

fs::path bare_bundle(const Report& report, const fs::path& dir, const std::string& name) {
    return write_bundle(report, dir, name, {});
}

}  // namespace test
