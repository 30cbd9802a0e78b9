#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "journal/codec.h"
#include "journal/journal.h"

namespace qvhost {

namespace {

// How many bytes were read; less than asked for only at the end of the file.
std::size_t read_at(int fd, std::size_t offset, char* data, std::size_t size,
                    const std::string& path) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t n = ::pread(fd, data + done, size - done, static_cast<off_t>(offset + done));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) throw std::system_error(errno, std::generic_category(), "cannot read " + path);
        if (n == 0) break;
        done += static_cast<std::size_t>(n);
    }
    return done;
}

}  // namespace

JournalReader::JournalReader(std::string path) : path_(std::move(path)), next_(journal::kStart) {}

std::size_t JournalReader::written() const {
    std::uint64_t end = 0;
    if (read_at(file_.get(), 0, reinterpret_cast<char*>(&end), sizeof end, path_) < sizeof end)
        return 0;
    std::atomic_thread_fence(std::memory_order_acquire);
    return end;
}

// A file with holes costs its maker nothing, and may announce any length.
void JournalReader::expect_room_for(std::size_t entry) const {
    constexpr std::size_t kSmall = 64 << 20;
    constexpr std::size_t kUnitOfBlocks = 512;  // of st_blocks, whatever the disk's are
    if (entry <= kSmall) return;
    struct stat info {};
    if (::fstat(file_.get(), &info) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot read " + path_);
    if (entry > static_cast<std::size_t>(info.st_blocks) * kUnitOfBlocks)
        throw std::runtime_error(path_ + ": an entry is longer than what the file holds");
}

std::size_t JournalReader::read(const std::function<void(const JournalEntry&)>& take,
                                std::size_t most) {
    constexpr std::size_t kBlock = 262144;
    if (!file_) {
        file_ = Descriptor(::open(path_.c_str(), O_RDONLY | O_CLOEXEC));
        if (!file_ && errno == ENOENT) return 0;
        if (!file_) throw std::system_error(errno, std::generic_category(), "cannot read " + path_);
    }

    std::size_t entries = 0;
    std::size_t bytes = 0;
    while (entries == 0 || bytes < most) {
        const auto end = written();
        if (next_ >= end) break;
        const auto size = pending_.size();
        const auto wanted = std::min(kBlock, end - next_);
        pending_.resize(size + wanted);
        const auto n = read_at(file_.get(), next_, pending_.data() + size, wanted, path_);
        pending_.resize(size + n);
        if (n == 0) break;
        next_ += n;
        bytes += n;

        std::string_view rest = pending_;
        while (rest.size() >= journal::kHeadSize) {
            std::uint32_t length = 0;
            std::memcpy(&length, rest.data(), sizeof length);
            if (rest.size() - journal::kHeadSize < length) {
                expect_room_for(length);
                break;
            }
            journal::decode(rest.substr(journal::kHeadSize, length), entry_);
            rest.remove_prefix(journal::kHeadSize + length);
            take(entry_);
            ++entries;
        }
        pending_.erase(0, pending_.size() - rest.size());
    }
    return entries;
}

}  // namespace qvhost
