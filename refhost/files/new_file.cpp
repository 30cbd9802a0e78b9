#include "files/new_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>
#include <utility>

namespace qvhost {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void throw_error(const fs::path& path, const char* what) {
    throw std::system_error(errno, std::generic_category(), path.string() + ": " + what);
}

}  // namespace

Descriptor create_private(const fs::path& path, int flags) {
    Descriptor file(::open(path.c_str(), flags | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file) throw_error(path, "cannot create it");
    return file;
}

NewFile::NewFile(const fs::path& path) : NewFile(path, create_private(path)) {}

NewFile::NewFile(const fs::path& path, Descriptor file)
    : std::ostream(nullptr),
      path_(path),
      buffer_(file.release(), std::ios::out | std::ios::binary) {
    rdbuf(&buffer_);
}

void NewFile::close() {
    if (!buffer_.close()) setstate(std::ios::badbit);
    if (bad()) throw_error(path_, "cannot write it");
}

void write_new_file(const fs::path& path, std::string_view text) {
    NewFile file(path);
    file << text;
    file.close();
}

void replace_file(const fs::path& path, const std::function<void(std::ostream&)>& write) {
    const fs::path unfinished = path.string() + ".new";
    std::error_code ignored;
    fs::remove(unfinished, ignored);
    const auto directory = fs::absolute(path).parent_path();
    Descriptor kept(::open(directory.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
    const bool has_name = !kept;
    if (has_name) kept = create_private(unfinished);
    try {
        Descriptor again(::fcntl(kept.get(), F_DUPFD_CLOEXEC, 0));
        if (!again) throw_error(path, "cannot write it");
        NewFile file(unfinished, std::move(again));
        write(file);
        file.close();
        if (::fsync(kept.get()) != 0 && errno != EINVAL) throw_error(path, "cannot keep it");
        const auto name = "/proc/self/fd/" + std::to_string(kept.get());
        if (!has_name &&
            ::linkat(AT_FDCWD, name.c_str(), AT_FDCWD, unfinished.c_str(), AT_SYMLINK_FOLLOW) != 0)
            throw_error(path, "cannot put it in its place");
    } catch (...) {
        fs::remove(unfinished, ignored);
        throw;
    }
    if (std::rename(unfinished.c_str(), path.c_str()) != 0)
        throw_error(path, "cannot put it in its place");
}

}  // namespace qvhost
