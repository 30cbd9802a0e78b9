#include "files/descriptor.h"

#include <unistd.h>

#include <cerrno>

namespace qvhost {

bool Descriptor::close() { return fd_ < 0 || ::close(release()) == 0; }

std::string read_bytes(int fd, std::size_t most) {
    std::string bytes(most, '\0');
    bytes.resize(read_into(fd, bytes));
    return bytes;
}

std::size_t read_into(int fd, std::span<char> buffer) {
    std::size_t size = 0;
    while (size < buffer.size()) {
        const ssize_t n = ::read(fd, buffer.data() + size, buffer.size() - size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        size += static_cast<std::size_t>(n);
    }
    return size;
}

bool write_bytes(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
}

}  // namespace qvhost
