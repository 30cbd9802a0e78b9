// Sample module 1: summaries of RAID controllers, and two fixed sample tables.
#pragma once

#include <string>

#include "export.h"
#include "rinstanceswrapper.h"
#include "rmodule.h"
#include "rrepository.h"

namespace marlox::repository {

// The headers of PELADDTABLE.
QV_EXPORT extern const char* const ptn[4];

class QV_EXPORT RSampleModule1 : public RModule {
public:
    RSampleModule1();
    ~RSampleModule1() override;

    std::string GetName() override;
    std::string GetDisplay() override;
    void InitCallbacks() override;

    // Collects everything the first time it is called.
    void EnumQV1Instances(RRepository& repository);

    void WrapQV1T1Instances(RInstancesWrapper& wrapper);
    void WrapQV1T2Instances(RInstancesWrapper& wrapper);
    void WrapQV1T3Instances(RInstancesWrapper& wrapper);
    void WrapRAIDInstances(RInstancesWrapper& wrapper);
    void WrapCONTROLLERInstances(RInstancesWrapper& wrapper);
    void WrapPMCINFOInstances(RInstancesWrapper& wrapper);
    void WrapPMCVERInstances(RInstancesWrapper& wrapper);
    void WrapPMCLINKInstances(RInstancesWrapper& wrapper);

    static const std::string T_SAMPLE1_TABLE1;
    static const std::string T_SAMPLE1_TABLE2;
    static const std::string T_SAMPLE1_TABLE3;
    static const std::string T_SAMPLE1_TABLE4;
    static const std::string T_CONTROLLER_TABLE4;
    static const std::string T_PMCINFO_TABLE;
    static const std::string T_PMCVER_TABLE;
    static const std::string T_PMCLINK_TABLE;

private:
    bool collected = false;
};

}  // namespace marlox::repository
