// The store of collected records. A module receives it by reference in its enumerate callbacks and
// hands it on to RInstance::AddToRepository; it never reads it.
#pragma once

namespace marlox::repository {

class RRepository {
public:
    struct Impl;  // the host's own; incomplete for modules

    // For the host alone. `impl` is not owned and outlives the repository.
    explicit RRepository(Impl& impl);

    RRepository(const RRepository&) = delete;
    RRepository& operator=(const RRepository&) = delete;

    Impl& impl();

private:
    Impl* impl_;
};

}  // namespace marlox::repository
