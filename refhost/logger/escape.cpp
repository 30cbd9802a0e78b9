#include "logger/control.h"

namespace qvhost {

std::string escape_log_text(std::string_view text) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string line;
    line.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
            case '\\': line += "\\\\"; break;
            case '\n': line += "\\n"; break;
            case '\r': line += "\\r"; break;
            case '\t': line += "\\t"; break;
            default:
                if (byte < 0x20 || byte == 0x7f) {
                    line += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
                } else {
                    line += c;
                }
        }
    }
    return line;
}

}  // namespace qvhost
