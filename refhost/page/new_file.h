#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace qvhost::page {

// A file (mode 0600) that is written from the start; it must not exist. Throws std::runtime_error
// naming the file when anything of it could not be written.
class NewFile {
public:
    explicit NewFile(const std::filesystem::path& path);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void write(std::string_view text);
    void close();

private:
    [[noreturn]] void fail(const char* what) const;

    std::string path_;
    int fd_;
};

void write_new_file(const std::filesystem::path& path, std::string_view text);

}  // namespace qvhost::page
