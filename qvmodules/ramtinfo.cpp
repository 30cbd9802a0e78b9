#include "ramtinfo.h"

#include "file/layout.h"
#include "file/registry.h"
#include "log/unit_log.h"

namespace marlox::repository {

namespace {

constexpr capture::UnitLog unit{"qvmodules/ramtinfo"};

}  // namespace

const std::string RAMTInfo::AMTLOG = "AMTLOG";

RAMTInfo::RAMTInfo() = default;
RAMTInfo::~RAMTInfo() = default;

std::string RAMTInfo::GetName() { return "AMT_Info"; }
std::string RAMTInfo::GetDisplay() { return "AMT Log"; }

void RAMTInfo::InitCallbacks() {
    capture::register_tables<RAMTInfo>(this, &RAMTInfo::EnumAMTInstances,
                                       {
                                           {AMTLOG, &RAMTInfo::WrapAMTInstances}
    });
}

void RAMTInfo::EnumAMTInstances(RRepository&) {
    unit.progress("Enter EnumAMTInstances");
    unit.progress("Exit EnumAMTInstances");
}

void RAMTInfo::WrapAMTInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {
                                          {"AMTLOG", 100}
    });
}

}  // namespace marlox::repository
