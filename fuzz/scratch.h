// A directory for one process, gone with it, for code that reads files.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include "check.h"

namespace fuzz {

class Scratch {
public:
    Scratch() {
        std::string pattern = std::filesystem::temp_directory_path() / "qv-fuzz-XXXXXX";
        expect(::mkdtemp(pattern.data()) != nullptr, "there is room for a directory");
        path_ = pattern;
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

// Called for every input, so without a stream.
inline void write_file(const std::filesystem::path& path, std::string_view bytes) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    while (!bytes.empty()) {
        const auto n = ::write(fd, bytes.data(), bytes.size());
        expect(n > 0, "an input can be written to a file");
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    ::close(fd);
}

}  // namespace fuzz
