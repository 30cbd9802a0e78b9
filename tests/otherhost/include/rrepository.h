// The other host's store of records: a list.
#pragma once

#include <deque>

#include "rinstance.h"

namespace marlox::repository {

class RRepository {
public:
    std::deque<RInstance> records;
};

}  // namespace marlox::repository
