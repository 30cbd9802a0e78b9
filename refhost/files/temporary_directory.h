// A private temporary directory that goes with the object.
#pragma once

#include <filesystem>
#include <string>

#include "files/descriptor.h"

namespace qvhost {

class TemporaryDirectory {
public:
    // $TMPDIR/NAME-XXXXXX, mode 0700, held (files/leftovers.h). Throws std::runtime_error naming it.
    explicit TemporaryDirectory(const std::string& name);
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // The directory stays.
    void keep() { kept_ = true; }

private:
    std::filesystem::path path_;
    Descriptor held_;
    bool kept_ = false;
};

}  // namespace qvhost
