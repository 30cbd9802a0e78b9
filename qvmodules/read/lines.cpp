#include "read/lines.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "runner/command_log.h"
#include "runner/written_files.h"

namespace marlox::repository::capture {

namespace {

constexpr std::size_t kBlock = 65536;

// A missing file is not logged: a tool that is not installed leaves none.
int open_for_reading(const std::string& path) {
    if (runner::is_stale(path))
        return -1;  // the command that should have written it was not started
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 && errno != ENOENT) runner::log_unread(path, errno);
    return fd;
}

// After a read error the text ends; what was read before is kept.
std::size_t read_some(int fd, char* to, std::size_t size) {
    for (;;) {
        const ssize_t n = ::read(fd, to, size);
        if (n >= 0) return static_cast<std::size_t>(n);
        if (errno == EINTR) continue;
        runner::log_unread(fd, errno);
        return 0;
    }
}

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

std::optional<std::string> read_bytes(const std::string& path) {
    const int fd = open_for_reading(path);
    if (fd < 0) return std::nullopt;

    std::string bytes;
    struct stat file = {};
    if (::fstat(fd, &file) == 0) bytes.reserve(static_cast<std::size_t>(file.st_size) + kBlock);
    for (;;) {
        const auto size = bytes.size();
        bytes.resize(size + kBlock);
        const auto n = read_some(fd, bytes.data() + size, kBlock);
        bytes.resize(size + n);
        if (n == 0) break;
    }
    ::close(fd);
    return bytes;
}

}  // namespace marlox::repository::capture
