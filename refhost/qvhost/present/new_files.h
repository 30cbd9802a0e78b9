// A directory that is new or empty, for entries that are there all or not at all.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace qvhost {

// Throws std::runtime_error "PATH: REASON".
[[noreturn]] void fail(const std::filesystem::path& path, const std::string& reason);

class NewFiles {
public:
    // Makes the directory (mode 0700) if there is none. Throws std::runtime_error naming it if it cannot, or
    // if something is in it.
    explicit NewFiles(std::filesystem::path directory);
    ~NewFiles();
    NewFiles(const NewFiles&) = delete;
    NewFiles& operator=(const NewFiles&) = delete;

    std::filesystem::path path(const std::string& name) const { return directory_ / name; }
    // The entry of that name is one of them: made by now, or going to be made.
    void adopt(const std::string& name) { entries_.push_back(path(name)); }
    // Without it, nothing of them stays.
    void keep() { kept_ = true; }

private:
    std::filesystem::path directory_;
    std::vector<std::filesystem::path> entries_;
    bool made_ = false;
    bool kept_ = false;
};

}  // namespace qvhost
