// Sample module 2: what the MegaRAID and SAS2308 controllers log and list, and two fixed sample
// tables.
#pragma once

#include <string>

#include "export.h"
#include "rinstanceswrapper.h"
#include "rmodule.h"
#include "rrepository.h"

namespace marlox::repository {

class QV_EXPORT RSampleModule2 : public RModule {
public:
    RSampleModule2();
    ~RSampleModule2() override;

    std::string GetName() override;
    std::string GetDisplay() override;
    void InitCallbacks() override;

    // Collects everything the first time it is called.
    void EnumQV2Instances(RRepository& repo);

    void WrapQV2T1Instances(RInstancesWrapper& wrapper);
    void WrapQV2T2Instances(RInstancesWrapper& wrapper);
    void WrapEventLog1Instances(RInstancesWrapper& wrapper);
    void WrapEventLog2Instances(RInstancesWrapper& wrapper);
    void WrapEventLog3Instances(RInstancesWrapper& wrapper);
    void WrapEventLog4Instances(RInstancesWrapper& wrapper);
    void WrapEventLog5Instances(RInstancesWrapper& wrapper);
    void WrapFWtermInstances(RInstancesWrapper& wrapper);
    void WrapPDListInstances(RInstancesWrapper& wrapper);
    void WrapTINFOInstances(RInstancesWrapper& wrapper);
    void WrapVINFOInstances(RInstancesWrapper& wrapper);
    void WrapPINFOInstances(RInstancesWrapper& wrapper);
    void WrapIRInstances(RInstancesWrapper& wrapper);
    void WrapENDInstances(RInstancesWrapper& wrapper);
    void WrapARRAYInstances(RInstancesWrapper& wrapper);
    void WrapVOLUMEInstances(RInstancesWrapper& wrapper);
    void WrapLSILINKInstances(RInstancesWrapper& wrapper);

    static const std::string T_SAMPLE2_TABLE1;
    static const std::string T_SAMPLE2_TABLE2;
    static const std::string T_EVENTLOG1_TABLE2;
    static const std::string T_EVENTLOG2_TABLE2;
    static const std::string T_EVENTLOG3_TABLE2;
    static const std::string T_EVENTLOG4_TABLE2;
    static const std::string T_EVENTLOG5_TABLE2;
    static const std::string T_FWTERM_TABLE2;
    static const std::string T_PDLIST_TABLE2;
    static const std::string T_TINFO_TABLE2;
    static const std::string T_VINFO_TABLE2;
    static const std::string T_PINFO_TABLE2;
    static const std::string T_IR_TABLE2;
    static const std::string T_END_TABLE2;
    static const std::string T_ARRAY_TABLE4;
    static const std::string T_VOLUME_TABLE4;
    static const std::string T_LSILINK_TABLE4;

private:
    bool collected = false;
};

}  // namespace marlox::repository
