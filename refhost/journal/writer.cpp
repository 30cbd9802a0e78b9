#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "files/new_file.h"
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
    : file_(create_private(path, O_RDWR)),
      path_(path),
      encoder_(std::make_unique<journal::Encoder>()) {
    make_room(journal::kStart);
    start_ = journal::Mapping(file_.get(), 0, journal::kStart);
    publish(journal::kStart);
}

JournalWriter::~JournalWriter() {
    // Give back the room that was not used. Failing to do so does no harm.
    [[maybe_unused]] const int ignored = ::ftruncate(file_.get(), static_cast<off_t>(end_));
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

void JournalWriter::write_buffer() {
    try {
        make_room(buffer_.size());
        if (window_) {
            std::memcpy(window_.data() + (end_ - window_start_), buffer_.data(), buffer_.size());
        } else {
            write_at(end_, buffer_.data(), buffer_.size());
        }
    } catch (...) {
        encoder_->forget();
        throw;
    }
    publish(end_ + buffer_.size());
}

// Reserves room on the disk before the mapped memory is written. Without the room, the write itself
// would be a SIGBUS instead of an error.
void JournalWriter::make_room(std::size_t size) {
    if (end_ + size <= room_) return;
    const auto start = down_to_page(end_);
    const auto least = end_ - start + size;
    int error = 0;
    for (const auto wanted : {std::max(kWindow, least), least}) {
        do {
            error = ::posix_fallocate(file_.get(), static_cast<off_t>(start),
                                      static_cast<off_t>(wanted));
        } while (error == EINTR);
        if (error != 0) continue;
        window_ = journal::Mapping(file_.get(), static_cast<off_t>(start), wanted);
        window_start_ = start;
        room_ = start + wanted;
        return;
    }
    fail(error, "cannot write to the journal", path_);
}

// For file systems whose files cannot be mapped into memory.
void JournalWriter::write_at(std::size_t offset, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t n = ::pwrite(file_.get(), data, size, static_cast<off_t>(offset));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) fail(errno, "cannot write to the journal", path_);
        offset += static_cast<std::size_t>(n);
        data += n;
        size -= static_cast<std::size_t>(n);
    }
}

void JournalWriter::publish(std::size_t end) {
    const std::uint64_t number = end;
    if (start_) {
        std::atomic_ref(*reinterpret_cast<std::uint64_t*>(start_.data()))
            .store(number, std::memory_order_release);
    } else {
        write_at(0, reinterpret_cast<const char*>(&number), sizeof number);
    }
    end_ = end;
}

}  // namespace qvhost
