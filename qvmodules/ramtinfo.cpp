#include "ramtinfo.h"

#include <array>

#include "declared_modules.h"
#include "file/layout.h"
#include "file/registry.h"
#include "file/table.h"
#include "log/unit_log.h"

namespace marlox::repository {

namespace {

constexpr capture::UnitLog unit{"qvmodules/ramtinfo"};

constexpr auto kColumns = std::to_array<capture::Column>({
    {"AMTLOG", "AMT Log", "not collected"},
});

constexpr capture::Table kAmtLog = {
    .id = "AMTLOG",
    .title = "AMT Log",
    .row = "A place for the log of Intel AMT; no row is filed.",
    .filled = capture::Filled::never,
    .layout = capture::header_row(100),
    .columns = kColumns,
};
static_assert(capture::well_formed(kAmtLog));

constexpr const capture::Table* kTables[] = {&kAmtLog};

}  // namespace

constexpr capture::Module kAmtModule = {"AMT_Info", "AMT Log", kTables};

const std::string RAMTInfo::AMTLOG(kAmtLog.id);

RAMTInfo::RAMTInfo() = default;
RAMTInfo::~RAMTInfo() = default;

std::string RAMTInfo::GetName() { return std::string(kAmtModule.name); }
std::string RAMTInfo::GetDisplay() { return std::string(kAmtModule.display); }

void RAMTInfo::InitCallbacks() {
    capture::register_tables(this, &RAMTInfo::EnumAMTInstances, kAmtModule);
}

void RAMTInfo::EnumAMTInstances(RRepository&) {
    unit.progress("Enter EnumAMTInstances");
    unit.progress("Exit EnumAMTInstances");
}

void RAMTInfo::WrapAMTInstances(RInstancesWrapper& wrapper) { capture::lay_out(wrapper, kAmtLog); }

}  // namespace marlox::repository
