// What stands above or beside the values of a table.
#pragma once

#include <string>
#include <vector>

#include "store/store.h"

namespace qvhost {

struct Header {
    std::string id;
    std::string label;
};

// The layout's headers and behind them what else the records hold.
std::vector<Header> headers_of(const Store& store, const TableInfo& table);

}  // namespace qvhost
