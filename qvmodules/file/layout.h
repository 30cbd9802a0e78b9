// Layouts: what a table's wrap callback tells the host, read from the table's declaration.
#pragma once

#include <string>
#include <vector>

#include "file/table.h"
#include "rinstanceswrapper.h"

namespace marlox::repository::capture {

inline void lay_out(RInstancesWrapper& wrapper, const Table& table) {
    std::vector<std::string> ids;
    std::vector<unsigned> widths;
    for (const Column& column : table.columns) {
        if (!column.unlisted.empty()) continue;
        ids.emplace_back(column.id);
        widths.push_back(column.width > 0 ? column.width : table.layout.width);
    }
    if (table.layout.kind == Layout::Kind::header_row) {
        wrapper.SetRowHeaders(ids, widths, false);
    } else {
        wrapper.SetColumnHeaders(ids, table.layout.width, table.layout.count);
    }
}

}  // namespace marlox::repository::capture
