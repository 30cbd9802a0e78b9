#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "journal/codec.h"
#include "journal/journal.h"

namespace qvhost {

JournalReader::JournalReader(std::string path) : path_(std::move(path)) {}

JournalReader::~JournalReader() {
    if (fd_ >= 0) ::close(fd_);
}

std::size_t JournalReader::read(const std::function<void(const JournalEntry&)>& take,
                                std::size_t most) {
    constexpr std::size_t kBlock = 262144;
    if (fd_ < 0) {
        fd_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd_ < 0 && errno == ENOENT) return 0;
        if (fd_ < 0)
            throw std::system_error(errno, std::generic_category(), "cannot read " + path_);
    }

    std::size_t entries = 0;
    std::size_t bytes = 0;
    for (;;) {
        if (entries > 0 && bytes >= most) return entries;
        const auto size = pending_.size();
        pending_.resize(size + kBlock);
        ssize_t n = 0;
        do {
            n = ::read(fd_, pending_.data() + size, kBlock);
        } while (n < 0 && errno == EINTR);
        pending_.resize(size + static_cast<std::size_t>(n > 0 ? n : 0));
        if (n < 0) throw std::system_error(errno, std::generic_category(), "cannot read " + path_);
        if (n == 0) return entries;
        bytes += static_cast<std::size_t>(n);

        std::string_view rest = pending_;
        while (rest.size() >= journal::kHeadSize) {
            std::uint32_t length = 0;
            std::memcpy(&length, rest.data(), sizeof length);
            if (rest.size() - journal::kHeadSize < length) break;
            journal::decode(rest.substr(journal::kHeadSize, length), entry_);
            rest.remove_prefix(journal::kHeadSize + length);
            take(entry_);
            ++entries;
        }
        pending_.erase(0, pending_.size() - rest.size());
    }
}

}  // namespace qvhost
