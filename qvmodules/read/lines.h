// Reading a capture back, as lines.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "read/text.h"

namespace marlox::repository::capture {

// The lines of a capture as a reader with a line buffer of 512 bytes gets them: a line keeps its line
// end, a longer line comes in pieces of 511 bytes, and a line ends at its first NUL. The memory that
// is used does not depend on the size of the capture.
class Lines {
public:
    static constexpr std::size_t kLongest = 511;  // bytes

    // Opens a capture file; nothing if it cannot be opened.
    static std::optional<Lines> open(const std::string& path);

    // Reads a text, which must outlive the lines.
    explicit Lines(std::string_view text);

    Lines(Lines&& other) noexcept;
    Lines& operator=(Lines&&) = delete;
    ~Lines();

    // The next line, or nothing at the end (also where the file cannot be read further). The view
    // holds until the next call.
    std::optional<std::string_view> next() {
        auto end = line_end();
        if (end == std::string_view::npos && unread_.size() < kLongest && !at_end_) {
            refill();
            end = line_end();
        }
        if (unread_.empty()) return std::nullopt;

        const auto line = unread_.substr(0, end == std::string_view::npos ? kLongest : end + 1);
        unread_.remove_prefix(line.size());
        return has_nul_ ? c_text(line) : line;
    }

    // Starts again at the first line.
    void rewind();

private:
    explicit Lines(int fd);
    std::size_t line_end() const { return unread_.substr(0, kLongest).find('\n'); }
    void refill();

    int fd_ = -1;               // -1: all of the text is in `unread_` from the start
    std::vector<char> buffer_;  // of the file
    std::string_view text_;     // the text to rewind to, if there is no file
    std::string_view unread_;
    bool has_nul_ = false;  // `unread_` has one somewhere
    bool at_end_ = false;
};

}  // namespace marlox::repository::capture
