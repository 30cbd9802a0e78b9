// What the world sees of the module; its tables are declared beside their parsers.

#include "rbmcinfo/rbmcinfo.h"

#include "file/layout.h"
#include "file/registry.h"
#include "rbmcinfo/captures.h"

namespace marlox::repository {

using capture::lay_out;

const std::string RBMCInfo::LEDINFO(kLedInfo.id);
const std::string RBMCInfo::PSUINFO(kPsuInfo.id);
const std::string RBMCInfo::SENSORINFO(kSensorInfo.id);
const std::string RBMCInfo::FRUINFO(kFruInfo.id);
const std::string RBMCInfo::SDRINFO(kSdrInfo.id);
const std::string RBMCInfo::MCINFO(kMcInfo.id);
const std::string RBMCInfo::SELFINFO(kSelfInfo.id);
const std::string RBMCInfo::VERINFO(kVerInfo.id);
const std::string RBMCInfo::LANINFO(kLanInfo.id);
const std::string RBMCInfo::SELINFO(kSelInfo.id);

RBMCInfo::RBMCInfo() = default;
RBMCInfo::~RBMCInfo() = default;

std::string RBMCInfo::GetName() { return std::string(bmc::kModule.name); }
std::string RBMCInfo::GetDisplay() { return std::string(bmc::kModule.display); }

void RBMCInfo::InitCallbacks() {
    capture::register_tables(this, &RBMCInfo::EnumBMCInstances, bmc::kModule);
}

// clang-format off
void RBMCInfo::WrapMCInstances(RInstancesWrapper& wrapper)     { lay_out(wrapper, kMcInfo); }
void RBMCInfo::WrapSELFInstances(RInstancesWrapper& wrapper)   { lay_out(wrapper, kSelfInfo); }
void RBMCInfo::WrapVERInstances(RInstancesWrapper& wrapper)    { lay_out(wrapper, kVerInfo); }
void RBMCInfo::WrapLANInstances(RInstancesWrapper& wrapper)    { lay_out(wrapper, kLanInfo); }
void RBMCInfo::WrapLEDInstances(RInstancesWrapper& wrapper)    { lay_out(wrapper, kLedInfo); }
void RBMCInfo::WrapPSUInstances(RInstancesWrapper& wrapper)    { lay_out(wrapper, kPsuInfo); }
void RBMCInfo::WrapSENSORInstances(RInstancesWrapper& wrapper) { lay_out(wrapper, kSensorInfo); }
void RBMCInfo::WrapFRUInstances(RInstancesWrapper& wrapper)    { lay_out(wrapper, kFruInfo); }
void RBMCInfo::WrapSDRInstances(RInstancesWrapper& wrapper)    { lay_out(wrapper, kSdrInfo); }
void RBMCInfo::WrapSELInstances(RInstancesWrapper& wrapper)    { lay_out(wrapper, kSelInfo); }
// clang-format on

}  // namespace marlox::repository
