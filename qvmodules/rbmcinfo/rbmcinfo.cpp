#include "rbmcinfo/rbmcinfo.h"

#include "file/layout.h"
#include "file/registry.h"

namespace marlox::repository {

const std::string RBMCInfo::LEDINFO = "LEDINFO";
const std::string RBMCInfo::PSUINFO = "PSUINFO";
const std::string RBMCInfo::SENSORINFO = "SENSORINFO";
const std::string RBMCInfo::FRUINFO = "FRUINFO";
const std::string RBMCInfo::SDRINFO = "SDRINFO";
const std::string RBMCInfo::MCINFO = "MCINFO";
const std::string RBMCInfo::SELFINFO = "SELFINFO";
const std::string RBMCInfo::VERINFO = "VERINFO";
const std::string RBMCInfo::LANINFO = "LANINFO";
const std::string RBMCInfo::SELINFO = "SELINFO";

RBMCInfo::RBMCInfo() = default;
RBMCInfo::~RBMCInfo() = default;

std::string RBMCInfo::GetName() { return "BMC_Info"; }
std::string RBMCInfo::GetDisplay() { return "BMC information"; }

void RBMCInfo::InitCallbacks() {
    capture::register_tables<RBMCInfo>(this, &RBMCInfo::EnumBMCInstances,
                                       {
                                           {MCINFO,     &RBMCInfo::WrapMCInstances    },
                                           {SELFINFO,   &RBMCInfo::WrapSELFInstances  },
                                           {VERINFO,    &RBMCInfo::WrapVERInstances   },
                                           {LANINFO,    &RBMCInfo::WrapLANInstances   },
                                           {LEDINFO,    &RBMCInfo::WrapLEDInstances   },
                                           {PSUINFO,    &RBMCInfo::WrapPSUInstances   },
                                           {SENSORINFO, &RBMCInfo::WrapSENSORInstances},
                                           {FRUINFO,    &RBMCInfo::WrapFRUInstances   },
                                           {SDRINFO,    &RBMCInfo::WrapSDRInstances   },
                                           {SELINFO,    &RBMCInfo::WrapSELInstances   }
    });
}

// The four label/value views show fewer rows than an answer can have, on purpose.
void RBMCInfo::WrapMCInstances(RInstancesWrapper& wrapper) {
    wrapper.SetColumnHeaders(capture::numbered("MC", 9), 30, 1);
}

void RBMCInfo::WrapSELFInstances(RInstancesWrapper& wrapper) {
    wrapper.SetColumnHeaders({"self1"}, 30, 1);
}

void RBMCInfo::WrapVERInstances(RInstancesWrapper& wrapper) {
    wrapper.SetColumnHeaders(capture::numbered("VER", 15), 30, 1);
}

void RBMCInfo::WrapLANInstances(RInstancesWrapper& wrapper) {
    wrapper.SetColumnHeaders(capture::numbered("LAN", 6), 30, 1);
}

void RBMCInfo::WrapLEDInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {
                                          {"LEDINFO", 100}
    });
}

void RBMCInfo::WrapPSUInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {
                                          {"PSUINFO", 100}
    });
}

void RBMCInfo::WrapSENSORInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {
                                          {"item1",  19},
                                          {"item2",  9 },
                                          {"item3",  9 },
                                          {"item4",  9 },
                                          {"item5",  9 },
                                          {"item6",  9 },
                                          {"item7",  9 },
                                          {"item8",  9 },
                                          {"item9",  9 },
                                          {"item10", 9 }
    });
}

void RBMCInfo::WrapFRUInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {
                                          {"FRUINFO", 100}
    });
}

void RBMCInfo::WrapSDRInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {
                                          {"SDRINFO", 100}
    });
}

void RBMCInfo::WrapSELInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {
                                          {"SELINFO", 100}
    });
}

}  // namespace marlox::repository
