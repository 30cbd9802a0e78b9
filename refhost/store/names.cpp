#include "store/names.h"

#include <algorithm>

#include "text/case.h"

namespace qvhost::store {

namespace {

// "qv_" is ours, "sqlite_" is SQLite's, and SQL text ends at a NUL.
bool is_free_for_use(std::string_view id) {
    const auto word = lowered(id);
    return !id.empty() && id.find('\0') == std::string_view::npos && !word.starts_with("qv_") &&
           !word.starts_with("sqlite_");
}

}  // namespace

std::string identifier(std::string_view name) {
    std::string text = "\"";
    for (const char c : name) {
        if (c == '"') text += '"';
        text += c;
    }
    return text + '"';
}

std::string NameSet::claim(std::string_view id) {
    std::string base(id);
    std::replace(base.begin(), base.end(), '\0', '_');
    if (!is_free_for_use(id)) base = "id_" + base;
    std::string name = base;
    for (int i = 2; !taken_.insert(lowered(name)).second; ++i)
        name = base + "_" + std::to_string(i);
    return name;
}

}  // namespace qvhost::store
