#include "redact/json_numbers.h"

#include "redact/letters.h"

namespace qvhost::redact {

void JsonNumbers::append(std::string_view part, std::string& text) {
    constexpr char kHidden = '#';
    text.reserve(text.size() + part.size());
    for (const char c : part) {
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
