// Reports of hosts that do not exist, as bundles.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "findings/finding.h"
#include "inventory/inventory.h"

namespace test {

struct Report {
    std::map<std::string, std::string> meta;  // host, machine_id, started, ...
    qvhost::inventory::Inventory inventory;
    std::vector<qvhost::inventory::Event> events;
    qvhost::findings::Verdict verdict;
    std::map<std::string, std::string> captures;  // name: text
};

// A host with two drives, memory, a BMC and sensors, all well.
Report healthy_report(const std::string& name, const std::string& started);

// Writes the report as a bundle and returns its path, DIR/NAME.tar.zst.
std::filesystem::path bundle_of(const Report& report, const std::filesystem::path& dir,
                                const std::string& name);

// The same without the report: its captures alone.
std::filesystem::path bare_bundle(const Report& report, const std::filesystem::path& dir,
                                  const std::string& name);

}  // namespace test
