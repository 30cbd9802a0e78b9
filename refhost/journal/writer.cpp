#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "journal/codec.h"
#include "journal/journal.h"

namespace qvhost {

namespace {

constexpr std::size_t kWindow = 262144;

[[noreturn]] void fail(int error, const std::string& what, const std::string& path) {
    throw std::system_error(error, std::generic_category(), what + " " + path);
}

std::size_t down_to_page(std::size_t offset) {
    static const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return offset / page * page;
}

}  // namespace

JournalWriter::JournalWriter(const std::string& path)
    : fd_(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600)),
      path_(path),
      encoder_(std::make_unique<journal::Encoder>()) {
    if (fd_ < 0) fail(errno, "cannot create the journal", path_);
    try {
        start_ = room_for(0, kWindow, journal::kStart);
        publish(journal::kStart);
    } catch (...) {
        ::close(fd_);
        throw;
    }
}

JournalWriter::~JournalWriter() {
    // What was set aside and not used; if it stays, no harm is done.
    [[maybe_unused]] const int ignored = ::ftruncate(fd_, static_cast<off_t>(end_));
    ::close(fd_);
}

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

// The disk has to have room before memory is written that stands for it: later it would be a signal
// and not an error.
journal::Mapping JournalWriter::room_for(std::size_t offset, std::size_t most, std::size_t least) {
    int error = 0;
    for (const auto size : {std::max(most, least), least}) {
        do {
            error = ::posix_fallocate(fd_, static_cast<off_t>(offset), static_cast<off_t>(size));
        } while (error == EINTR);
        if (error != 0) continue;
        journal::Mapping mapping(fd_, static_cast<off_t>(offset), size);
        if (mapping) return mapping;
        error = errno;
    }
    fail(error, "cannot write to the journal", path_);
}

void JournalWriter::write_buffer() {
    if (end_ + buffer_.size() > window_start_ + window_.size()) {
        const auto start = down_to_page(end_);
        try {
            window_ = room_for(start, kWindow, end_ - start + buffer_.size());
        } catch (...) {
            encoder_->forget();
            throw;
        }
        window_start_ = start;
    }
    std::memcpy(window_.data() + (end_ - window_start_), buffer_.data(), buffer_.size());
    publish(end_ + buffer_.size());
}

void JournalWriter::publish(std::size_t end) {
    end_ = end;
    std::atomic_ref(*reinterpret_cast<std::uint64_t*>(start_.data()))
        .store(end, std::memory_order_release);
}

}  // namespace qvhost
