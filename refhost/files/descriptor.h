// File descriptors that close themselves; reads and writes that continue after a signal.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace qvhost {

// Owns a descriptor, or none (-1).
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor() { close(); }

    explicit operator bool() const { return fd_ >= 0; }
    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }

    // False if the system could not keep what was written (see errno).
    bool close();

private:
    int fd_ = -1;
};

// Reads up to `most` bytes. Returns fewer at the end of the file or after an error.
std::string read_bytes(int fd, std::size_t most);
// The same into a buffer, for files that are read in many blocks. Returns how many bytes were read.
std::size_t read_into(int fd, std::span<char> buffer);

// Writes all of the bytes. False if the system refused some of them (see errno).
bool write_bytes(int fd, std::string_view bytes);

}  // namespace qvhost
