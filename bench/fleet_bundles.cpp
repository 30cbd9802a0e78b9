// Bundles of hosts that do not exist: fleet_bundles DIR HOSTS RUNS PERCENT. From run to run so many percent of a host's
// drives, sensors and memory modules change; with each run comes an event.
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <string>

#include "fleet/times.h"
#include "reports.h"

namespace {

using namespace qvhost;

constexpr int kDrives = 24;
constexpr int kSensors = 80;
constexpr int kModules = 16;
constexpr int kEvents = 200;
constexpr fleet::Milliseconds kFirst = 1767225600000;  // 2026-01-01
constexpr fleet::Milliseconds kWeek = 604'800'000;

inventory::Event event(int number) {
    return {
        .place = {"bmc_sel.txt",         number},
        .source = "bmc",
        .time = "2026-01-01T00:00:00",
        .time_utc = {                     },
        .severity = inventory::Severity::info,
        .subject = "Fan 3",
        .text = "Lower non-critical going low, entry " + std::to_string(number)
    };
}

test::Report first_report(int host, std::mt19937& random) {
    auto report = test::healthy_report("host" + std::to_string(host), fleet::utc_text(kFirst));
    auto& inventory = report.inventory;
    const auto drive = inventory.drives[0];
    const auto sensor = inventory.sensors[0];
    const auto module = inventory.memory_modules[0];
    inventory.drives.assign(kDrives, drive);
    inventory.sensors.assign(kSensors, sensor);
    inventory.memory_modules.assign(kModules, module);
    for (int i = 0; i < kDrives; ++i) {
        auto& one = inventory.drives[static_cast<std::size_t>(i)];
        one.slot = i;
        one.serial = "DR" + std::to_string(host) + "-" + std::to_string(i);
        one.firmware = random() % 20 == 0 ? "0003" : "0004";
    }
    for (int i = 0; i < kSensors; ++i)
        inventory.sensors[static_cast<std::size_t>(i)].name = "Sensor " + std::to_string(i);
    for (int i = 0; i < kModules; ++i) {
        auto& one = inventory.memory_modules[static_cast<std::size_t>(i)];
        one.slot = "DIMM_" + std::to_string(i);
        one.serial = "MM" + std::to_string(host) + "-" + std::to_string(i);
    }
    report.events.clear();
    for (int i = 0; i < kEvents; ++i) report.events.push_back(event(i));
    return report;
}

void change(test::Report& report, unsigned percent, std::mt19937& random) {
    const auto changes = [&] { return random() % 100 < percent; };
    for (auto& drive : report.inventory.drives) {
        if (changes()) drive.media_errors = drive.media_errors.value_or(0) + 1;
    }
    for (auto& sensor : report.inventory.sensors) {
        if (changes()) sensor.reading = static_cast<double>(random() % 800) / 10;
    }
    for (auto& module : report.inventory.memory_modules) {
        if (changes()) module.serial = "MM" + std::to_string(random());
    }
    report.events.push_back(event(static_cast<int>(report.events.size())));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::cerr << "usage: fleet_bundles DIR HOSTS RUNS PERCENT\n";
        return 2;
    }
    const std::filesystem::path dir = argv[1];
    const int hosts = std::atoi(argv[2]);
    const int runs = std::atoi(argv[3]);
    const auto percent = static_cast<unsigned>(std::atoi(argv[4]));
    std::filesystem::create_directories(dir);
    for (int host = 0; host < hosts; ++host) {
        std::mt19937 random(static_cast<unsigned>(host));
        auto report = first_report(host, random);
        for (int run = 0; run < runs; ++run) {
            if (run > 0) change(report, percent, random);
            report.meta["started"] = report.meta["finished"] =
                fleet::utc_text(kFirst + run * kWeek);
            const auto name = "run" + std::to_string(1000 + run) + "-host" + std::to_string(host);
            if (!std::filesystem::exists(dir / (name + ".tar.zst")))
                test::bundle_of(report, dir, name);
        }
    }
    return 0;
}
