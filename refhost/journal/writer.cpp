#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "journal/codec.h"
#include "journal/journal.h"

namespace qvhost {

namespace {

[[noreturn]] void fail(int error, const std::string& what, const std::string& path) {
    throw std::system_error(error, std::generic_category(), what + " " + path);
}

}  // namespace

JournalWriter::JournalWriter(const std::string& path)
    : fd_(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0600)),
      path_(path),
      encoder_(std::make_unique<journal::Encoder>()) {
    if (fd_ < 0) fail(errno, "cannot create the journal", path_);
}

JournalWriter::~JournalWriter() { ::close(fd_); }

void JournalWriter::append(const JournalEntry& entry) {
    buffer_.clear();
    encoder_->encode(entry, buffer_);
    write_buffer();
}

void JournalWriter::append(const Record& record) {
    buffer_.clear();
    encoder_->encode(record, buffer_);
    write_buffer();
}

void JournalWriter::write_buffer() {
    std::size_t written = 0;
    while (written < buffer_.size()) {
        const ssize_t n = ::write(fd_, buffer_.data() + written, buffer_.size() - written);
        if (n >= 0) {
            written += static_cast<std::size_t>(n);
            continue;
        }
        if (errno == EINTR) continue;
        const int error = errno;
        encoder_->forget();
        // Half an entry would hide all that comes behind it.
        const off_t end = ::lseek(fd_, 0, SEEK_END);
        if (written > 0 && end >= 0 && ::ftruncate(fd_, end - static_cast<off_t>(written)) != 0)
            fail(errno, "cannot take back half an entry of", path_);
        fail(error, "cannot write to the journal", path_);
    }
}

}  // namespace qvhost
