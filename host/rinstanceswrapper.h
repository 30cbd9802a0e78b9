// The layout of one table, which the table's wrap callback declares with one call.
#pragma once

#include <string>
#include <vector>

namespace marlox::repository {

class RInstancesWrapper {
public:
    struct Impl;  // the host's own; incomplete for modules

    // For the host alone. `impl` is not owned and outlives the wrapper.
    explicit RInstancesWrapper(Impl& impl);

    RInstancesWrapper(const RInstancesWrapper&) = delete;
    RInstancesWrapper& operator=(const RInstancesWrapper&) = delete;

    // The property ids stand in a header column, in this order, all of one width; `count` is the
    // number of records shown side by side.
    void SetColumnHeaders(const std::vector<std::string>& ids, unsigned width, unsigned count);

    // The property ids are a header row, one column each, with one width an id (shares of the
    // whole, usually of 100).
    void SetRowHeaders(const std::vector<std::string>& ids, const std::vector<unsigned>& widths,
                       bool flag);

private:
    Impl* impl_;
};

}  // namespace marlox::repository
