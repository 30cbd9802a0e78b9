// The plug-in's entry point.

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <vector>

#include "export.h"
#include "ramtinfo.h"
#include "rbmcinfo/rbmcinfo.h"
#include "rmodule.h"
#include "rsamplemodule1/rsamplemodule1.h"
#include "rsamplemodule2/rsamplemodule2.h"
#include "rwininfo.h"

using namespace marlox::repository;

// Appends the plug-in's modules to `modules`, which then owns them. Always 0.
extern "C" QV_EXPORT int AddModules(std::vector<boost::shared_ptr<RModule>>& modules) {
    modules.push_back(boost::make_shared<RSampleModule1>());
    modules.push_back(boost::make_shared<RSampleModule2>());
    modules.push_back(boost::make_shared<RBMCInfo>());
    modules.push_back(boost::make_shared<RAMTInfo>());
    modules.push_back(boost::make_shared<RWINInfo>());
    return 0;
}
