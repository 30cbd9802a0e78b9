// What the world sees of the module; its tables are declared beside their parsers.

#include "rsamplemodule2/rsamplemodule2.h"

#include "file/layout.h"
#include "file/registry.h"
#include "rsamplemodule2/captures.h"

namespace marlox::repository {

using capture::lay_out;

const std::string RSampleModule2::T_SAMPLE2_TABLE1(sample2::kTable1.id);
const std::string RSampleModule2::T_SAMPLE2_TABLE2(sample2::kTable2.id);
const std::string RSampleModule2::T_EVENTLOG1_TABLE2(kEventLog[0].id);
const std::string RSampleModule2::T_EVENTLOG2_TABLE2(kEventLog[1].id);
const std::string RSampleModule2::T_EVENTLOG3_TABLE2(kEventLog[2].id);
const std::string RSampleModule2::T_EVENTLOG4_TABLE2(kEventLog[3].id);
const std::string RSampleModule2::T_EVENTLOG5_TABLE2(kEventLog[4].id);
const std::string RSampleModule2::T_FWTERM_TABLE2(kFwTermLog.id);
const std::string RSampleModule2::T_PDLIST_TABLE2(kPdList.id);
const std::string RSampleModule2::T_TINFO_TABLE2(kTopology.id);
const std::string RSampleModule2::T_VINFO_TABLE2(kVirtualDrives.id);
const std::string RSampleModule2::T_PINFO_TABLE2(kPhysicalDrives.id);
const std::string RSampleModule2::T_IR_TABLE2(kSas2IrLog.id);
const std::string RSampleModule2::T_END_TABLE2(sample2::kEndDevices.id);
const std::string RSampleModule2::T_ARRAY_TABLE4(sample2::kArray.id);
const std::string RSampleModule2::T_VOLUME_TABLE4(sample2::kVolume.id);
const std::string RSampleModule2::T_LSILINK_TABLE4(kLsiLink.id);

RSampleModule2::RSampleModule2() = default;
RSampleModule2::~RSampleModule2() = default;

std::string RSampleModule2::GetName() { return std::string(sample2::kModule.name); }
std::string RSampleModule2::GetDisplay() { return std::string(sample2::kModule.display); }

void RSampleModule2::InitCallbacks() {
    capture::register_tables(this, &RSampleModule2::EnumQV2Instances, sample2::kModule);
}

// clang-format off
void RSampleModule2::WrapQV2T1Instances(RInstancesWrapper& wrapper)     { lay_out(wrapper, sample2::kTable1); }
void RSampleModule2::WrapQV2T2Instances(RInstancesWrapper& wrapper)     { lay_out(wrapper, sample2::kTable2); }
void RSampleModule2::WrapEventLog1Instances(RInstancesWrapper& wrapper) { lay_out(wrapper, kEventLog[0]); }
void RSampleModule2::WrapEventLog2Instances(RInstancesWrapper& wrapper) { lay_out(wrapper, kEventLog[1]); }
void RSampleModule2::WrapEventLog3Instances(RInstancesWrapper& wrapper) { lay_out(wrapper, kEventLog[2]); }
void RSampleModule2::WrapEventLog4Instances(RInstancesWrapper& wrapper) { lay_out(wrapper, kEventLog[3]); }
void RSampleModule2::WrapEventLog5Instances(RInstancesWrapper& wrapper) { lay_out(wrapper, kEventLog[4]); }
void RSampleModule2::WrapFWtermInstances(RInstancesWrapper& wrapper)    { lay_out(wrapper, kFwTermLog); }
void RSampleModule2::WrapPDListInstances(RInstancesWrapper& wrapper)    { lay_out(wrapper, kPdList); }
void RSampleModule2::WrapTINFOInstances(RInstancesWrapper& wrapper)     { lay_out(wrapper, kTopology); }
void RSampleModule2::WrapVINFOInstances(RInstancesWrapper& wrapper)     { lay_out(wrapper, kVirtualDrives); }
void RSampleModule2::WrapPINFOInstances(RInstancesWrapper& wrapper)     { lay_out(wrapper, kPhysicalDrives); }
void RSampleModule2::WrapIRInstances(RInstancesWrapper& wrapper)        { lay_out(wrapper, kSas2IrLog); }
void RSampleModule2::WrapENDInstances(RInstancesWrapper& wrapper)       { lay_out(wrapper, sample2::kEndDevices); }
void RSampleModule2::WrapARRAYInstances(RInstancesWrapper& wrapper)     { lay_out(wrapper, sample2::kArray); }
void RSampleModule2::WrapVOLUMEInstances(RInstancesWrapper& wrapper)    { lay_out(wrapper, sample2::kVolume); }
void RSampleModule2::WrapLSILINKInstances(RInstancesWrapper& wrapper)   { lay_out(wrapper, kLsiLink); }
// clang-format on

}  // namespace marlox::repository
