// The other host's layout of a table, which it holds itself.
#pragma once

#include <string>
#include <vector>

namespace marlox::repository {

class RInstancesWrapper {
public:
    virtual ~RInstancesWrapper();

    void SetColumnHeaders(const std::vector<std::string>& ids, unsigned width, unsigned count);
    void SetRowHeaders(const std::vector<std::string>& ids, const std::vector<unsigned>& widths,
                       bool flag);

    bool rows = false;
    bool flag = false;
    std::vector<std::string> ids;
    std::vector<unsigned> widths;  // of columns: the one width
    unsigned count = 0;
};

}  // namespace marlox::repository
