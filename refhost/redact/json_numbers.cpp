#include "redact/json_numbers.h"

#include <algorithm>
#include <cstddef>

#include "redact/letters.h"

namespace qvhost::redact {

void JsonNumbers::append(std::string_view part, std::string& text) {
    constexpr char kHidden = '#';
    text.reserve(text.size() + part.size());
    while (!part.empty()) {
        // Of a text all goes through up to its end, or what is escaped.
        if (is_in_text_ && !is_escaped_ && !is_escaped_in_script_) {
            const auto* const end = std::find_if(part.begin(), part.end(),
                                                 [](char c) { return c == '"' || c == '\\'; });
            text.append(part.begin(), end);
            part.remove_prefix(static_cast<std::size_t>(end - part.begin()));
            if (part.empty()) return;
        }
        const char c = part.front();
        part.remove_prefix(1);
        text += !is_in_text_ && is_digit(c) ? kHidden : c;
        if (is_script_ && c == '\\' && !is_escaped_in_script_) {
            is_escaped_in_script_ = true;
        } else {
            is_escaped_in_script_ = false;
            read(c);
        }
    }
}

// A character of the JSON itself.
void JsonNumbers::read(char c) {
    if (!is_in_text_) {
        is_in_text_ = c == '"';
    } else if (is_escaped_) {
        is_escaped_ = false;
    } else if (c == '\\') {
        is_escaped_ = true;
    } else if (c == '"') {
        is_in_text_ = false;
    }
}

}  // namespace qvhost::redact
