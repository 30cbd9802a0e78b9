#include "store/names.h"

#include <algorithm>

namespace qvhost::store {

namespace {

std::string folded(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

// "qv_" is ours, "sqlite_" is SQLite's, and SQL text ends at a NUL.
bool is_free_for_use(std::string_view id) {
    const auto lower = folded(std::string(id));
    return !id.empty() && id.find('\0') == std::string_view::npos && !lower.starts_with("qv_") &&
           !lower.starts_with("sqlite_");
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
    for (int i = 2; !taken_.insert(folded(name)).second; ++i) name = base + "_" + std::to_string(i);
    return name;
}

}  // namespace qvhost::store
