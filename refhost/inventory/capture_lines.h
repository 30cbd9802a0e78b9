// The lines of a capture, numbered, from memory or from a file that is read in blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qvhost::inventory {

struct CaptureLine {
    std::string_view
        text;  // without its line end ("\n" or "\r\n"); valid until the next line is read
    std::int64_t number = 0;  // from 1
    bool ended = true;        // false: the capture stops in the middle of it
};

// Memory does not grow with the capture. Of a line longer than kLongestLine the beginning is given and
// the rest is skipped.
class CaptureLines {
public:
    static constexpr std::size_t kLongestLine = std::size_t{64} * 1024;  // bytes

    explicit CaptureLines(std::string_view text);
    // Takes the descriptor, and closes it.
    explicit CaptureLines(int fd);
    ~CaptureLines();
    CaptureLines(const CaptureLines&) = delete;
    CaptureLines& operator=(const CaptureLines&) = delete;

    std::optional<CaptureLine> next();

    // Asked before each further block of a file: whether to end with the last whole line before it.
    void stop_when(std::function<bool()> is_enough) { is_enough_ = std::move(is_enough); }
    bool was_stopped() const { return was_stopped_; }

    // How many bytes of a file were read.
    std::size_t bytes() const { return bytes_; }

    // The line that next() gave last is given once more.
    void again() { again_ = last_.has_value(); }

    // How many lines were read.
    std::int64_t count() const { return count_; }

    // The system's error number if the file could not be read to its end, else 0.
    int error() const { return error_; }

private:
    bool refill();

    int fd_ = -1;
    std::vector<char> buffer_;
    std::string_view unread_;
    std::string beginning_;  // of a line that is longer than is given
    std::function<bool()> is_enough_;
    std::size_t bytes_ = 0;
    bool at_end_ = false;
    bool was_stopped_ = false;
    bool again_ = false;
    std::optional<CaptureLine> last_;
    std::int64_t count_ = 0;
    int error_ = 0;
};

}  // namespace qvhost::inventory
