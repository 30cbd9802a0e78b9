#include "files/new_file.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

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

NewFile::NewFile(const fs::path& path)
    : std::ostream(nullptr),
      path_(path),
      buffer_(create_private(path).release(), std::ios::out | std::ios::binary) {
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
    NewFile file(unfinished);
    try {
        write(file);
        file.close();
    } catch (...) {
        fs::remove(unfinished, ignored);
        throw;
    }
    if (std::rename(unfinished.c_str(), path.c_str()) != 0)
        throw_error(path, "cannot put it in its place");
}

}  // namespace qvhost
