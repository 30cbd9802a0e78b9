#include "read/lines.h"

#include <unistd.h>

#include <cstring>
#include <utility>

#include "read/file.h"

namespace marlox::repository::capture {

namespace {

constexpr std::size_t kBlock = 65536;

bool contains_nul(std::string_view text) { return text.find('\0') != std::string_view::npos; }

}  // namespace

std::optional<Lines> Lines::open(const std::string& path) {
    const int fd = open_for_reading(path);
    if (fd < 0) return std::nullopt;
    return Lines(fd);
}

Lines::Lines(std::string_view text)
    : text_(text), unread_(text), has_nul_(contains_nul(text)), at_end_(true) {}

Lines::Lines(int fd) : fd_(fd), buffer_(kBlock) {}

Lines::Lines(Lines&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)),
      buffer_(std::move(other.buffer_)),
      text_(other.text_),
      unread_(other.unread_),
      has_nul_(other.has_nul_),
      at_end_(other.at_end_) {}

Lines::~Lines() {
    if (fd_ >= 0) ::close(fd_);
}

void Lines::rewind() {
    if (fd_ < 0) {
        unread_ = text_;
        return;
    }
    unread_ = {};
    at_end_ = ::lseek(fd_, 0, SEEK_SET) != 0;
}

// Moves the unread bytes to the front of the buffer and fills the rest.
void Lines::refill() {
    std::size_t filled = unread_.size();
    if (filled > 0) std::memmove(buffer_.data(), unread_.data(), filled);
    while (filled < buffer_.size()) {
        const auto n = read_some(fd_, buffer_.data() + filled, buffer_.size() - filled);
        if (n == 0) {
            at_end_ = true;
            break;
        }
        filled += n;
    }
    unread_ = {buffer_.data(), filled};
    has_nul_ = contains_nul(unread_);
}

}  // namespace marlox::repository::capture
