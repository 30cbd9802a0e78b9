// The BMC module: what the baseboard management controller knows, in ten tables that one pass over
// the IPMI utilities fills.
#pragma once

#include <string>

#include "export.h"
#include "rinstanceswrapper.h"
#include "rmodule.h"
#include "rrepository.h"

namespace marlox::repository {

class QV_EXPORT RBMCInfo : public RModule {
public:
    RBMCInfo();
    ~RBMCInfo() override;

    std::string GetName() override;
    std::string GetDisplay() override;
    void InitCallbacks() override;

    // Collects all ten tables the first time it is called.
    void EnumBMCInstances(RRepository& repo);

    void WrapMCInstances(RInstancesWrapper& wrapper);
    void WrapSELFInstances(RInstancesWrapper& wrapper);
    void WrapVERInstances(RInstancesWrapper& wrapper);
    void WrapLANInstances(RInstancesWrapper& wrapper);
    void WrapLEDInstances(RInstancesWrapper& wrapper);
    void WrapPSUInstances(RInstancesWrapper& wrapper);
    void WrapSENSORInstances(RInstancesWrapper& wrapper);
    void WrapFRUInstances(RInstancesWrapper& wrapper);
    void WrapSDRInstances(RInstancesWrapper& wrapper);
    void WrapSELInstances(RInstancesWrapper& wrapper);

    static const std::string LEDINFO;
    static const std::string PSUINFO;
    static const std::string SENSORINFO;
    static const std::string FRUINFO;
    static const std::string SDRINFO;
    static const std::string MCINFO;
    static const std::string SELFINFO;
    static const std::string VERINFO;
    static const std::string LANINFO;
    static const std::string SELINFO;

private:
    bool collected = false;
};

}  // namespace marlox::repository
