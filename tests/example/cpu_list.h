#pragma once

#include "rrepository.h"

namespace marlox::repository {

void cpu_list(RRepository& repository);

}  // namespace marlox::repository
