// Where the records and layouts of a collection go. librepository.so implements the host interface
// on top of these two; whoever drives modules derives from them.
#pragma once

#include "repository/record.h"
#include "rinstanceswrapper.h"
#include "rrepository.h"

namespace marlox::repository {

struct RRepository::Impl {
    virtual ~Impl() = default;

    // A record was added to the repository. What it throws passes through the module to the host.
    virtual void add(const qvhost::Record& record) = 0;
};

struct RInstancesWrapper::Impl {
    qvhost::Layout layout;  // what the wrap callback declared last
};

}  // namespace marlox::repository
