#include "rwininfo.h"

#include <utility>

#include "file/layout.h"
#include "file/registry.h"
#include "log/unit_log.h"

namespace marlox::repository {

namespace {

constexpr capture::UnitLog unit{"qvmodules/rwininfo"};

}  // namespace

const std::string RWINInfo::ARPINFO = "ARPINFO";
const std::string RWINInfo::NETSTATINFO = "NETSTATINFO";

RWINInfo::RWINInfo() = default;
RWINInfo::~RWINInfo() = default;

std::string RWINInfo::GetName() { return "Windows_Related_Info"; }
std::string RWINInfo::GetDisplay() { return "Windows related information"; }

void RWINInfo::InitCallbacks() {
    capture::register_tables<RWINInfo>(this, &RWINInfo::EnumWINInstances,
                                       {
                                           {ARPINFO,     &RWINInfo::WrapARPInstances    },
                                           {NETSTATINFO, &RWINInfo::WrapNETSTATInstances}
    });
}

void RWINInfo::EnumWINInstances(RRepository&) {
    unit.progress("Enter EnumWINInstances");
    if (!std::exchange(collected, true)) {
        unit.progress("Enter CollectData-Windows related info");
        unit.progress("Exit CollectData-Windows related info");
    }
    unit.progress("Exit EnumWINInstances");
}

void RWINInfo::WrapARPInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {
                                          {"item1", 40},
                                          {"item2", 40},
                                          {"item3", 20}
    });
}

void RWINInfo::WrapNETSTATInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper,
                             {
                                 {"item1", 10},
                                 {"item2", 30},
                                 {"item3", 30},
                                 {"item4", 30}
    });
}

}  // namespace marlox::repository
