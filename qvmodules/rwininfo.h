// The Windows-related module: tables for ARP and network connections, which are empty on Linux.
#pragma once

#include <string>

#include "export.h"
#include "rinstanceswrapper.h"
#include "rmodule.h"
#include "rrepository.h"

namespace marlox::repository {

class QV_EXPORT RWINInfo : public RModule {
public:
    RWINInfo();
    ~RWINInfo() override;

    std::string GetName() override;
    std::string GetDisplay() override;
    void InitCallbacks() override;

    void EnumWINInstances(RRepository& repo);
    void WrapARPInstances(RInstancesWrapper& wrapper);
    void WrapNETSTATInstances(RInstancesWrapper& wrapper);

    static const std::string ARPINFO;
    static const std::string NETSTATINFO;

private:
    bool collected = false;
};

}  // namespace marlox::repository
