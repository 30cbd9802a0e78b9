// The AMT module: a table for the log of Intel AMT, laid out and left empty.
#pragma once

#include <string>

#include "export.h"
#include "rinstanceswrapper.h"
#include "rmodule.h"
#include "rrepository.h"

namespace marlox::repository {

class QV_EXPORT RAMTInfo : public RModule {
public:
    RAMTInfo();
    ~RAMTInfo() override;

    std::string GetName() override;
    std::string GetDisplay() override;
    void InitCallbacks() override;

    void EnumAMTInstances(RRepository& repo);
    void WrapAMTInstances(RInstancesWrapper& wrapper);

    static const std::string AMTLOG;

private:
    [[maybe_unused]] bool collected = false;  // every module has it; nothing is collected here
};

}  // namespace marlox::repository
