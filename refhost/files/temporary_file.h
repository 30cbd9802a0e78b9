// A file that goes with the object.
#pragma once

#include <filesystem>
#include <system_error>
#include <utility>

namespace qvhost {

class TemporaryFile {
public:
    // The path at which somebody makes it.
    explicit TemporaryFile(std::filesystem::path path) : path_(std::move(path)) {}
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

}  // namespace qvhost
