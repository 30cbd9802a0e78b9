#include "read/text.h"

#include <charconv>
#include <limits>

namespace marlox::repository::capture {

std::string_view c_text(std::string_view bytes) { return bytes.substr(0, bytes.find('\0')); }

std::string_view first_line(std::string_view text, std::size_t most) {
    const auto end = text.find('\n');
    const auto line = end == std::string_view::npos ? text : text.substr(0, end + 1);
    return c_text(line.substr(0, most));
}

int leading_int(std::string_view text) {
    text = rest(text, text.find_first_not_of(" \t\n\v\f\r"));
    const bool plus = text.starts_with('+');
    if (plus) text.remove_prefix(1);
    if (plus && text.starts_with('-')) return 0;

    int value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc::result_out_of_range) return value;
    return text.starts_with('-') ? std::numeric_limits<int>::min()
                                 : std::numeric_limits<int>::max();
}

}  // namespace marlox::repository::capture
