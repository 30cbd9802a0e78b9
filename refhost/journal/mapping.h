// A part of a file in memory: what is stored there is in the file, whatever becomes of the process.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <utility>

namespace qvhost::journal {

class Mapping {
public:
    Mapping() = default;
    // `offset` is a multiple of the page size. Empty if the system refuses (see errno).
    Mapping(int fd, off_t offset, std::size_t size) : size_(size) {
        void* const data = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, offset);
        if (data != MAP_FAILED) data_ = static_cast<char*>(data);
    }
    Mapping(Mapping&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)), size_(other.size_) {}
    Mapping& operator=(Mapping&& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        return *this;
    }
    ~Mapping() {
        if (data_) ::munmap(data_, size_);
    }

    explicit operator bool() const { return data_ != nullptr; }
    char* data() const { return data_; }

private:
    char* data_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace qvhost::journal
