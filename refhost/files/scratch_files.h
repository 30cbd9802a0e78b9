// Files for what is needed for a while. One that is given back is written over by whoever comes next: to make and remove a
// small file costs more than to write it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "files/descriptor.h"
#include "files/temporary_directory.h"

namespace qvhost {

// They may be taken and given back by several threads.
class ScratchFiles {
public:
    // In a temporary directory of that name.
    explicit ScratchFiles(const std::string& name) : directory_(name) {}

private:
    friend class ScratchFile;
    std::filesystem::path take();
    void give_back(const std::filesystem::path& path);

    TemporaryDirectory directory_;
    std::mutex mutex_;  // of what follows
    std::vector<std::filesystem::path> free_;
    std::size_t made_ = 0;
};

// One of them, as long as the object lives.
class ScratchFile {
public:
    explicit ScratchFile(ScratchFiles& files) : files_(files), path_(files.take()) {}
    ~ScratchFile() { files_.give_back(path_); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // To write it from its beginning. What it held before stays behind that until cut(). Throws std::system_error.
    Descriptor open() const;
    void cut(std::uintmax_t bytes) const { std::filesystem::resize_file(path_, bytes); }

private:
    ScratchFiles& files_;
    std::filesystem::path path_;
};

}  // namespace qvhost
