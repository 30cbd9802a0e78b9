#include "inventory/capture_lines.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace qvhost::inventory {

CaptureLines::CaptureLines(std::string_view text) : unread_(text), at_end_(true) {}

CaptureLines::CaptureLines(int fd) : fd_(fd), buffer_(2 * kLongestLine) {}

CaptureLines::~CaptureLines() {
    if (fd_ >= 0) ::close(fd_);
}

// Moves what is unread to the front and fills the buffer behind it. Whether anything came.
bool CaptureLines::refill() {
    if (at_end_) return false;
    if (is_enough_ && is_enough_()) {
        at_end_ = was_stopped_ = true;
        return false;
    }
    const std::size_t kept = unread_.size();
    if (kept > 0) std::memmove(buffer_.data(), unread_.data(), kept);
    ssize_t got = 0;
    do {
        got = ::read(fd_, buffer_.data() + kept, buffer_.size() - kept);
    } while (got < 0 && errno == EINTR);
    if (got < 0) error_ = errno;
    if (got <= 0) at_end_ = true;
    if (got > 0) bytes_ += static_cast<std::size_t>(got);
    unread_ = {buffer_.data(), kept + static_cast<std::size_t>(got > 0 ? got : 0)};
    return got > 0;
}

std::optional<CaptureLine> CaptureLines::next() {
    if (again_) {
        again_ = false;
        return last_;
    }
    last_.reset();
    std::size_t searched = 0;
    std::size_t end = unread_.find('\n');
    while (end == std::string_view::npos && unread_.size() < kLongestLine) {
        searched = unread_.size();
        if (!refill()) break;
        end = unread_.find('\n', searched);
    }
    if (end == std::string_view::npos && was_stopped_) unread_ = {};
    if (unread_.empty()) return std::nullopt;

    CaptureLine line;
    line.number = ++count_;
    if (end == std::string_view::npos && unread_.size() >= kLongestLine) {
        line.text = unread_.substr(0, kLongestLine);
        // The text must outlive the skipping of the rest, which needs the buffer.
        beginning_.assign(line.text);
        line.text = beginning_;
        while (end == std::string_view::npos) {
            unread_ = {};
            if (!refill()) break;
            end = unread_.find('\n');
        }
        line.ended = end != std::string_view::npos;
        unread_.remove_prefix(line.ended ? end + 1 : unread_.size());
    } else {
        line.ended = end != std::string_view::npos;
        line.text = unread_.substr(0, end);
        if (line.text.size() > kLongestLine) line.text = line.text.substr(0, kLongestLine);
        unread_.remove_prefix(line.ended ? end + 1 : unread_.size());
    }
    if (line.text.ends_with('\r')) line.text.remove_suffix(1);
    last_ = line;
    return last_;
}

}  // namespace qvhost::inventory
