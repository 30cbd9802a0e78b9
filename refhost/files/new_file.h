// New private files: mode 0600. A file that exists, or a link in its place, is never written to.
#pragma once

#include <fcntl.h>

#include <ext/stdio_filebuf.h>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string_view>

#include "files/descriptor.h"

namespace qvhost {

// Creates the file. `flags` is the access mode for open(2), with O_APPEND if wanted. Throws std::system_error,
// "PATH: cannot create it: REASON".
Descriptor create_private(const std::filesystem::path& path, int flags = O_WRONLY);

// A new private file as a stream.
class NewFile : public std::ostream {
public:
    explicit NewFile(const std::filesystem::path& path);
    // One that is made and open already; `path` is its name for people.
    NewFile(const std::filesystem::path& path, Descriptor file);

    // Throws std::system_error naming the file if anything of it could not be written. A file that
    // is not closed may lack its end.
    void close();

private:
    std::filesystem::path path_;
    __gnu_cxx::stdio_filebuf<char> buffer_;
};

void write_new_file(const std::filesystem::path& path, std::string_view text);

// Writes a file without a name and then moves it to PATH, so that PATH is there whole or as it was before, and
// nothing is left beside it by a program that is killed. Where the file system has no such files it is PATH.new
// meanwhile. Throws std::system_error naming the file.
void replace_file(const std::filesystem::path& path,
                  const std::function<void(std::ostream& out)>& write);

}  // namespace qvhost
