#include "rsamplemodule1/rsamplemodule1.h"

#include <iterator>

#include "file/layout.h"
#include "file/registry.h"

namespace marlox::repository {

const char* const ptn[4] = {"peladd1", "peladd2", "peladd3", "peladd4"};

const std::string RSampleModule1::T_SAMPLE1_TABLE1 = "S1TABLE1";
const std::string RSampleModule1::T_SAMPLE1_TABLE2 = "S1TABLE2";
const std::string RSampleModule1::T_SAMPLE1_TABLE3 = "PELADDTABLE";
const std::string RSampleModule1::T_SAMPLE1_TABLE4 = "RAIDINFO";
const std::string RSampleModule1::T_CONTROLLER_TABLE4 = "CONTROLLER";
const std::string RSampleModule1::T_PMCINFO_TABLE = "PMCINFO";
const std::string RSampleModule1::T_PMCVER_TABLE = "PMCVER";
const std::string RSampleModule1::T_PMCLINK_TABLE = "PMCLINK";

RSampleModule1::RSampleModule1() = default;
RSampleModule1::~RSampleModule1() = default;

std::string RSampleModule1::GetName() { return "sampleModule1"; }
std::string RSampleModule1::GetDisplay() { return "Sample Module 1"; }

void RSampleModule1::InitCallbacks() {
    capture::register_tables<RSampleModule1>(
        this, &RSampleModule1::EnumQV1Instances,
        {
            {T_SAMPLE1_TABLE1,    &RSampleModule1::WrapQV1T1Instances     },
            {T_SAMPLE1_TABLE2,    &RSampleModule1::WrapQV1T2Instances     },
            {T_SAMPLE1_TABLE3,    &RSampleModule1::WrapQV1T3Instances     },
            {T_SAMPLE1_TABLE4,    &RSampleModule1::WrapRAIDInstances      },
            {T_CONTROLLER_TABLE4, &RSampleModule1::WrapCONTROLLERInstances},
            {T_PMCINFO_TABLE,     &RSampleModule1::WrapPMCINFOInstances   },
            {T_PMCVER_TABLE,      &RSampleModule1::WrapPMCVERInstances    },
            {T_PMCLINK_TABLE,     &RSampleModule1::WrapPMCLINKInstances   }
    });
}

// The first two tables show two records side by side.
void RSampleModule1::WrapQV1T1Instances(RInstancesWrapper& wrapper) {
    wrapper.SetColumnHeaders(capture::numbered("S1T1PRO", 4), 30, 2);
}

void RSampleModule1::WrapQV1T2Instances(RInstancesWrapper& wrapper) {
    wrapper.SetColumnHeaders(capture::numbered("S1T2PRO", 4), 30, 2);
}

void RSampleModule1::WrapQV1T3Instances(RInstancesWrapper& wrapper) {
    wrapper.SetColumnHeaders({std::begin(ptn), std::end(ptn)}, 30, 1);
}

void RSampleModule1::WrapRAIDInstances(RInstancesWrapper& wrapper) {
    wrapper.SetColumnHeaders(
        {"ProductName", "SerialNumber", "SASAddress", "MfgDate", "SystemTime", "ControllerTime",
         "FWPackageBuild", "BIOSVersion", "FWVersion", "DriverName", "DriverVersion", "BusNumber",
         "DeviceNumber", "FunctionNumber"},
        10, 1);
}

void RSampleModule1::WrapCONTROLLERInstances(RInstancesWrapper& wrapper) {
    wrapper.SetColumnHeaders({"Name", "Type", "SupportedRAID", "Max", "HWInformation", "VendorID",
                              "DeviceID", "HWRevision"},
                             10, 1);
}

void RSampleModule1::WrapPMCINFOInstances(RInstancesWrapper& wrapper) {
    wrapper.SetColumnHeaders(
        {"Status",     "Mode",        "description", "Model",    "SerialNumber", "WorldWideName",
         "Alarm",      "Temperature", "memory",      "priority", "type",         "speed",
         "width",      "period",      "internal",    "external", "Logical",      "NCQ",
         "Statistics", "Policy",      "Level",       "Rate"},
        20, 1);
}

void RSampleModule1::WrapPMCVERInstances(RInstancesWrapper& wrapper) {
    wrapper.SetColumnHeaders({"BIOS", "Firmware", "Driver", "BootFlash"}, 10, 1);
}

void RSampleModule1::WrapPMCLINKInstances(RInstancesWrapper& wrapper) {
    wrapper.SetColumnHeaders({"Link"}, 10, 1);
}

}  // namespace marlox::repository
