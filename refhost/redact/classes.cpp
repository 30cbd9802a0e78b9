#include "redact/classes.h"

namespace qvhost::redact {

std::string_view name_of(Class one) { return kClasses[static_cast<std::size_t>(one)].name; }

ClassSet classes_of(std::string_view text) {
    ClassSet classes;
    for (;;) {
        const auto comma = text.find(',');
        const auto word = text.substr(0, comma);
        bool is_known = false;
        for (const auto& row : kClasses) {
            if (word != row.name && word != "all") continue;
            classes.add(row.which);
            is_known = true;
        }
        if (!is_known) return {};
        if (comma == std::string_view::npos) return classes;
        text.remove_prefix(comma + 1);
    }
}

std::string text_of(ClassSet classes) {
    std::string text;
    for (const auto& row : kClasses) {
        if (classes.has(row.which)) text += (text.empty() ? "" : ",") + std::string(row.name);
    }
    return text;
}

}  // namespace qvhost::redact
