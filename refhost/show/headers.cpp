#include "show/headers.h"

#include <algorithm>

namespace qvhost {

namespace {

const std::vector<std::string>& header_ids(const Layout& layout) {
    static const std::vector<std::string> none;
    if (const auto* columns = std::get_if<ColumnLayout>(&layout)) return columns->headers;
    if (const auto* rows = std::get_if<RowLayout>(&layout)) return rows->headers;
    return none;
}

}  // namespace

std::vector<Header> headers_of(const Store& store, const TableInfo& table) {
    const auto properties = store.properties(table.id);

    std::vector<Header> headers;
    for (const auto& id : header_ids(table.layout)) {
        const auto known = std::find_if(properties.begin(), properties.end(),
                                        [&](const PropertyInfo& p) { return p.id == id; });
        headers.push_back({id, known == properties.end() ? id : known->display});
    }
    for (const auto& property : properties) {
        const bool asked = std::any_of(headers.begin(), headers.end(),
                                       [&](const Header& h) { return h.id == property.id; });
        if (!asked) headers.push_back({property.id, property.display});
    }
    return headers;
}

}  // namespace qvhost
