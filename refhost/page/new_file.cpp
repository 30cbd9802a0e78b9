#include "page/new_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace qvhost::page {

NewFile::NewFile(const std::filesystem::path& path)
    : path_(path.string()),
      fd_(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600)) {
    if (fd_ < 0) fail("cannot create it");
}

NewFile::~NewFile() {
    if (fd_ >= 0) ::close(fd_);
}

void NewFile::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t n = ::write(fd_, text.data(), text.size());
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) fail("cannot write it");
        text.remove_prefix(static_cast<std::size_t>(n));
    }
}

void NewFile::close() {
    if (::close(std::exchange(fd_, -1)) != 0) fail("cannot write it");
}

void NewFile::fail(const char* what) const {
    throw std::runtime_error(path_ + ": " + what + ": " + std::strerror(errno));
}

void write_new_file(const std::filesystem::path& path, std::string_view text) {
    NewFile file(path);
    file.write(text);
    file.close();
}

}  // namespace qvhost::page
