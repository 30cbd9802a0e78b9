#include "rmodule.h"

namespace marlox::repository {

RModule::RModule() = default;
RModule::~RModule() = default;

}  // namespace marlox::repository
