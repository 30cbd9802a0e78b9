#include "rsamplemodule2/rsamplemodule2.h"

#include "file/layout.h"
#include "file/registry.h"

namespace marlox::repository {

const std::string RSampleModule2::T_SAMPLE2_TABLE1 = "S2TABLE1";
const std::string RSampleModule2::T_SAMPLE2_TABLE2 = "S2TABLE2";
const std::string RSampleModule2::T_EVENTLOG1_TABLE2 = "EVENTLOG1";
const std::string RSampleModule2::T_EVENTLOG2_TABLE2 = "EVENTLOG2";
const std::string RSampleModule2::T_EVENTLOG3_TABLE2 = "EVENTLOG3";
const std::string RSampleModule2::T_EVENTLOG4_TABLE2 = "EVENTLOG4";
const std::string RSampleModule2::T_EVENTLOG5_TABLE2 = "EVENTLOG5";
const std::string RSampleModule2::T_FWTERM_TABLE2 = "FWTERMLOG";
const std::string RSampleModule2::T_PDLIST_TABLE2 = "PDLIST";
const std::string RSampleModule2::T_TINFO_TABLE2 = "TINFO";
const std::string RSampleModule2::T_VINFO_TABLE2 = "VINFO";
const std::string RSampleModule2::T_PINFO_TABLE2 = "PINFO";
const std::string RSampleModule2::T_IR_TABLE2 = "SAS2IRLOG";
const std::string RSampleModule2::T_END_TABLE2 = "ENDDEVICEINFO";
const std::string RSampleModule2::T_ARRAY_TABLE4 = "ARRAY";
const std::string RSampleModule2::T_VOLUME_TABLE4 = "VOLUME";
const std::string RSampleModule2::T_LSILINK_TABLE4 = "LSILINK";

RSampleModule2::RSampleModule2() = default;
RSampleModule2::~RSampleModule2() = default;

std::string RSampleModule2::GetName() { return "sampleModule2"; }
std::string RSampleModule2::GetDisplay() { return "Sample Module 2"; }

void RSampleModule2::InitCallbacks() {
    capture::register_tables<RSampleModule2>(
        this, &RSampleModule2::EnumQV2Instances,
        {
            {T_SAMPLE2_TABLE1,   &RSampleModule2::WrapQV2T1Instances    },
            {T_SAMPLE2_TABLE2,   &RSampleModule2::WrapQV2T2Instances    },
            {T_EVENTLOG1_TABLE2, &RSampleModule2::WrapEventLog1Instances},
            {T_EVENTLOG2_TABLE2, &RSampleModule2::WrapEventLog2Instances},
            {T_EVENTLOG3_TABLE2, &RSampleModule2::WrapEventLog3Instances},
            {T_EVENTLOG4_TABLE2, &RSampleModule2::WrapEventLog4Instances},
            {T_EVENTLOG5_TABLE2, &RSampleModule2::WrapEventLog5Instances},
            {T_FWTERM_TABLE2,    &RSampleModule2::WrapFWtermInstances   },
            {T_PDLIST_TABLE2,    &RSampleModule2::WrapPDListInstances   },
            {T_TINFO_TABLE2,     &RSampleModule2::WrapTINFOInstances    },
            {T_VINFO_TABLE2,     &RSampleModule2::WrapVINFOInstances    },
            {T_PINFO_TABLE2,     &RSampleModule2::WrapPINFOInstances    },
            {T_IR_TABLE2,        &RSampleModule2::WrapIRInstances       },
            {T_END_TABLE2,       &RSampleModule2::WrapENDInstances      },
            {T_ARRAY_TABLE4,     &RSampleModule2::WrapARRAYInstances    },
            {T_VOLUME_TABLE4,    &RSampleModule2::WrapVOLUMEInstances   },
            {T_LSILINK_TABLE4,   &RSampleModule2::WrapLSILINKInstances  }
    });
}

void RSampleModule2::WrapQV2T1Instances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {
                                          {"item1", 20},
                                          {"item2", 16},
                                          {"item3", 16},
                                          {"item4", 16},
                                          {"item5", 16},
                                          {"item6", 16}
    });
}

void RSampleModule2::WrapQV2T2Instances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(
        wrapper, {
                     {"S2T2PRO1", 20},
                     {"S2T2PRO2", 30},
                     {"S2T2PRO3", 30},
                     {"S2T2PRO4", 20}
    });
}

namespace {

// All five pages of the event log look alike.
void set_event_headers(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {
                                          {"seqNum",           4 },
                                          {"Time",             5 },
                                          {"Code",             5 },
                                          {"Class",            4 },
                                          {"Locale",           4 },
                                          {"EventDescription", 12},
                                          {"EventData",        12}
    });
}

}  // namespace

void RSampleModule2::WrapEventLog1Instances(RInstancesWrapper& wrapper) {
    set_event_headers(wrapper);
}

void RSampleModule2::WrapEventLog2Instances(RInstancesWrapper& wrapper) {
    set_event_headers(wrapper);
}

void RSampleModule2::WrapEventLog3Instances(RInstancesWrapper& wrapper) {
    set_event_headers(wrapper);
}

void RSampleModule2::WrapEventLog4Instances(RInstancesWrapper& wrapper) {
    set_event_headers(wrapper);
}

void RSampleModule2::WrapEventLog5Instances(RInstancesWrapper& wrapper) {
    set_event_headers(wrapper);
}

void RSampleModule2::WrapFWtermInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {
                                          {"FWTERMLOG", 100}
    });
}

// The widths of the following tables do not add up to 100.
void RSampleModule2::WrapPDListInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper,
                             {"ShieldCounter",
                              "MediaErrorCount",
                              "OtherErrorCount",
                              "DriveTemperature",
                              "PredictiveFail",
                              "SMARTflag",
                              "SN",
                              "WWN",
                              "FirmwareRevision",
                              "Rawsize",
                              "Coercedsize",
                              "NonCoercedsize",
                              "DeviceSpeed",
                              "LinkSpeed",
                              "LogicalSectorSize",
                              "Enclosureposition",
                              "ConnectedPortNumber",
                              "CommissionedSpare",
                              "EmergencySpare",
                              "NeedsEKMAttention"},
                             5);
}

void RSampleModule2::WrapTINFOInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper,
                             {"DG", "Arr", "Row", "EID", "DID", "Type", "State", "BT", "Size",
                              "PDC", "PI", "SED", "DS3", "FSpace"},
                             5);
}

void RSampleModule2::WrapVINFOInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(
        wrapper, {"DG", "TYPE", "State", "Access", "Consist", "Cache", "sCC", "Size", "Name"}, 5);
}

void RSampleModule2::WrapPINFOInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(
        wrapper,
        {"EID", "DID", "State", "DG", "Size", "Intf", "Med", "SED", "PI", "SeSz", "Model", "Sp"},
        5);
}

void RSampleModule2::WrapIRInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper,
                             {"Time", "LogSequence", "LogEntryQualifier", "LogEntryDescription",
                              "LogEntryValue", "vfid", "vpid", "LogCode", "LogDataDescription",
                              "LogDataValue", "LogClass", "ArgumentType", "Locale"},
                             5);
}

// The next three tables are declared for SAS2308 devices; nothing fills them.
void RSampleModule2::WrapENDInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(
        wrapper,
        {"ID", "Type", "DiskType", "State", "Size", "SystemDisk", "Usage", "SerialNumber", "Model"},
        5);
}

void RSampleModule2::WrapARRAYInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {"Name", "Size", "Free", "NumDisks", "NumVols", "WriteCache"},
                             5);
}

void RSampleModule2::WrapVOLUMEInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper,
                             {"Name", "RaidLevel", "Size", "StripeSize", "NumDisks", "State",
                              "System", "Initialized", "CachePolicy"},
                             5);
}

void RSampleModule2::WrapLSILINKInstances(RInstancesWrapper& wrapper) {
    capture::set_row_headers(wrapper, {
                                          {"index",        2},
                                          {"lsishowall",   5},
                                          {"pdlist",       5},
                                          {"lsieventlog",  5},
                                          {"lsifwtermlog", 5}
    });
}

}  // namespace marlox::repository
