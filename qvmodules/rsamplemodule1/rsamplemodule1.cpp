// What the world sees of the module; its tables are declared beside their parsers.

#include "rsamplemodule1/rsamplemodule1.h"

#include "file/layout.h"
#include "file/registry.h"
#include "rsamplemodule1/captures.h"

namespace marlox::repository {

using capture::lay_out;

const std::string RSampleModule1::T_SAMPLE1_TABLE1(sample1::kTable1.id);
const std::string RSampleModule1::T_SAMPLE1_TABLE2(sample1::kTable2.id);
const std::string RSampleModule1::T_SAMPLE1_TABLE3(sample1::kPelAdd.id);
const std::string RSampleModule1::T_SAMPLE1_TABLE4(kRaidInfo.id);
const std::string RSampleModule1::T_CONTROLLER_TABLE4(sample1::kController.id);
const std::string RSampleModule1::T_PMCINFO_TABLE(kPmcInfo.id);
const std::string RSampleModule1::T_PMCVER_TABLE(kPmcVer.id);
const std::string RSampleModule1::T_PMCLINK_TABLE(kPmcLink.id);

RSampleModule1::RSampleModule1() = default;
RSampleModule1::~RSampleModule1() = default;

std::string RSampleModule1::GetName() { return std::string(sample1::kModule.name); }
std::string RSampleModule1::GetDisplay() { return std::string(sample1::kModule.display); }

void RSampleModule1::InitCallbacks() {
    capture::register_tables(this, &RSampleModule1::EnumQV1Instances, sample1::kModule);
}

// clang-format off
void RSampleModule1::WrapQV1T1Instances(RInstancesWrapper& wrapper)      { lay_out(wrapper, sample1::kTable1); }
void RSampleModule1::WrapQV1T2Instances(RInstancesWrapper& wrapper)      { lay_out(wrapper, sample1::kTable2); }
void RSampleModule1::WrapQV1T3Instances(RInstancesWrapper& wrapper)      { lay_out(wrapper, sample1::kPelAdd); }
void RSampleModule1::WrapRAIDInstances(RInstancesWrapper& wrapper)       { lay_out(wrapper, kRaidInfo); }
void RSampleModule1::WrapCONTROLLERInstances(RInstancesWrapper& wrapper) { lay_out(wrapper, sample1::kController); }
void RSampleModule1::WrapPMCINFOInstances(RInstancesWrapper& wrapper)    { lay_out(wrapper, kPmcInfo); }
void RSampleModule1::WrapPMCVERInstances(RInstancesWrapper& wrapper)     { lay_out(wrapper, kPmcVer); }
void RSampleModule1::WrapPMCLINKInstances(RInstancesWrapper& wrapper)    { lay_out(wrapper, kPmcLink); }
// clang-format on

}  // namespace marlox::repository
