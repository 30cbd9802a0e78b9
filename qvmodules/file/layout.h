// Layouts: what a wrap callback declares.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "rinstanceswrapper.h"

namespace marlox::repository::capture {

using Ids = std::vector<std::string>;

struct Header {
    const char* id;
    unsigned width;
};

// A header row: one column an id, each of its own width.
inline void set_row_headers(RInstancesWrapper& wrapper, std::initializer_list<Header> headers) {
    Ids ids;
    std::vector<unsigned> widths;
    for (const Header& header : headers) {
        ids.emplace_back(header.id);
        widths.push_back(header.width);
    }
    wrapper.SetRowHeaders(ids, widths, false);
}

// The same with one width for all.
inline void set_row_headers(RInstancesWrapper& wrapper, const Ids& ids, unsigned width) {
    wrapper.SetRowHeaders(ids, std::vector<unsigned>(ids.size(), width), false);
}

// "MC1", "MC2", ... "MC<count>"
inline Ids numbered(const std::string& prefix, unsigned count) {
    Ids ids;
    for (unsigned i = 1; i <= count; ++i) ids.push_back(prefix + std::to_string(i));
    return ids;
}

}  // namespace marlox::repository::capture
