// A directory beside what is to be made, so that this gets its name when it is whole.
#pragma once

#include <filesystem>

namespace qvhost {

// Throws std::runtime_error if something lies there; an empty directory is nothing.
void expect_free(const std::filesystem::path& directory);

class Unfinished {
public:
    // "NAME.XXXXXX", mode 0700. Goes with the object. Throws std::system_error.
    explicit Unfinished(const std::filesystem::path& name);
    ~Unfinished();
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    const std::filesystem::path& path() const { return path_; }
    // It stays, as that directory.
    void become(const std::filesystem::path& directory);

private:
    std::filesystem::path path_;
};

}  // namespace qvhost
