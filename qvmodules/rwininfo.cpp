#include "rwininfo.h"

#include <array>
#include <utility>

#include "declared_modules.h"
#include "file/layout.h"
#include "file/registry.h"
#include "file/table.h"
#include "log/unit_log.h"

namespace marlox::repository {

namespace {

constexpr capture::UnitLog unit{"qvmodules/rwininfo"};

constexpr auto kArpColumns = std::to_array<capture::Column>({
    {"item1", "Internet Address", "not collected", 40},
    {"item2", "Physical Address", "not collected", 40},
    {"item3", "Type",             "not collected", 20},
});

constexpr capture::Table kArpInfo = {
    .id = "ARPINFO",
    .title = "ARP table",
    .row = "A place for the entries of the ARP table on Windows; no row is filed.",
    .filled = capture::Filled::not_on_linux,
    .layout = capture::header_row(40),
    .columns = kArpColumns,
};
static_assert(capture::well_formed(kArpInfo));

constexpr auto kNetstatColumns = std::to_array<capture::Column>({
    {"item1", "Proto",           "not collected", 10},
    {"item2", "Local Address",   "not collected", 30},
    {"item3", "Foreign Address", "not collected", 30},
    {"item4", "State",           "not collected", 30},
});

constexpr capture::Table kNetstatInfo = {
    .id = "NETSTATINFO",
    .title = "Network connections",
    .row = "A place for the network connections on Windows; no row is filed.",
    .filled = capture::Filled::not_on_linux,
    .layout = capture::header_row(30),
    .columns = kNetstatColumns,
};
static_assert(capture::well_formed(kNetstatInfo));

constexpr const capture::Table* kTables[] = {&kArpInfo, &kNetstatInfo};

}  // namespace

constexpr capture::Module kWindowsModule = {"Windows_Related_Info", "Windows related information",
                                            kTables};

const std::string RWINInfo::ARPINFO(kArpInfo.id);
const std::string RWINInfo::NETSTATINFO(kNetstatInfo.id);

RWINInfo::RWINInfo() = default;
RWINInfo::~RWINInfo() = default;

std::string RWINInfo::GetName() { return std::string(kWindowsModule.name); }
std::string RWINInfo::GetDisplay() { return std::string(kWindowsModule.display); }

void RWINInfo::InitCallbacks() {
    capture::register_tables(this, &RWINInfo::EnumWINInstances, kWindowsModule);
}

void RWINInfo::EnumWINInstances(RRepository&) {
    unit.progress("Enter EnumWINInstances");
    if (!std::exchange(collected, true)) {
        unit.progress("Enter CollectData-Windows related info");
        unit.progress("Exit CollectData-Windows related info");
    }
    unit.progress("Exit EnumWINInstances");
}

void RWINInfo::WrapARPInstances(RInstancesWrapper& wrapper) { capture::lay_out(wrapper, kArpInfo); }

void RWINInfo::WrapNETSTATInstances(RInstancesWrapper& wrapper) {
    capture::lay_out(wrapper, kNetstatInfo);
}

}  // namespace marlox::repository
