#include "failing_reads.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <stdexcept>

namespace test {

namespace {

struct Failing {
    bool is_on = false;
    dev_t device = 0;
    ino_t file = 0;
    off_t readable = 0;  // bytes
    int readings = 0;    // that are left to do well
};
Failing failing;

}  // namespace

FailingReads::FailingReads(const std::string& path, int from) {
    struct stat info = {};
    if (::stat(path.c_str(), &info) != 0) throw std::runtime_error(path);
    failing = {true, info.st_dev, info.st_ino, info.st_size / 2, from};
}

FailingReads::~FailingReads() { failing = {}; }

}  // namespace test

// The linker's names for the two of them.
extern "C" {
ssize_t real_read(int fd, void* buffer, std::size_t size) __asm__("__real_read");
ssize_t wrapped_read(int fd, void* buffer, std::size_t size) __asm__("__wrap_read");
}

ssize_t wrapped_read(int fd, void* buffer, std::size_t size) {
    auto& failing = test::failing;
    struct stat info = {};
    if (!failing.is_on || ::fstat(fd, &info) != 0 || info.st_dev != failing.device ||
        info.st_ino != failing.file)
        return real_read(fd, buffer, size);
    const off_t at = ::lseek(fd, 0, SEEK_CUR);
    if (at == 0 && failing.readings > 0) --failing.readings;
    if (failing.readings > 0) return real_read(fd, buffer, size);
    if (at >= failing.readable) {
        errno = EIO;
        return -1;
    }
    return real_read(fd, buffer, std::min(size, static_cast<std::size_t>(failing.readable - at)));
}
