#include "compat/chatter.h"

#include <cstring>
#include <utility>

namespace qvhost::compat {

namespace {

constexpr std::string_view kWords = "IANA PEN registry open failed: ";
constexpr std::size_t kLongestReason = 80;

// Whether the text is a reason that the system gives when a file cannot be opened.
bool is_reason(std::string_view text) {
    constexpr int kLastError = 133;
    for (int error = 1; error <= kLastError; ++error) {
        if (text == std::strerror(error)) return true;
    }
    return false;
}

bool is_chatter(std::string_view line) {
    return line.starts_with(kWords) && is_reason(line.substr(kWords.size()));
}

bool can_become_chatter(std::string_view beginning) {
    return beginning.size() < kWords.size()
               ? kWords.starts_with(beginning)
               : beginning.starts_with(kWords) &&
                     beginning.size() <= kWords.size() + kLongestReason;
}

}  // namespace

std::string ChatterFilter::pass(std::string_view bytes) {
    std::string passed;
    while (!bytes.empty()) {
        if (!at_line_start_) {
            const auto end = bytes.find('\n');
            const auto line = bytes.substr(0, end == std::string_view::npos ? end : end + 1);
            passed += line;
            at_line_start_ = end != std::string_view::npos;
            bytes.remove_prefix(line.size());
            continue;
        }
        const char c = bytes.front();
        bytes.remove_prefix(1);
        if (c == '\n' && is_chatter(held_)) {
            taken_ = std::exchange(held_, {});
            continue;
        }
        held_ += c;
        if (c != '\n' && can_become_chatter(held_)) continue;
        passed += std::exchange(held_, {});
        at_line_start_ = c == '\n';
    }
    return passed;
}

std::string ChatterFilter::rest() { return std::exchange(held_, {}); }

}  // namespace qvhost::compat
