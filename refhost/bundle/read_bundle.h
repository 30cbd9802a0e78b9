// Checks a bundle that anybody may have made, and takes it apart.
#pragma once

#include <filesystem>
#include <string>

#include "bundle/archive_reader.h"
#include "bundle/manifest.h"

namespace qvhost::bundle {

struct Bundle {
    std::string directory;  // the one that its files are in
    Manifest manifest;
    std::string manifest_sha256;  // in hexadecimal digits: tells a bundle from any other
};

// Reads all of it. Throws std::runtime_error naming the bundle unless it holds each file as its manifest says, once,
// and nothing else.
Bundle verify_bundle(const std::filesystem::path& file, const Limits& limits = {});

// The same, and writes its files into a directory that is there and empty (files 0600, directories 0700). What was
// written before something was found wrong stays there.
Bundle unpack_bundle(const std::filesystem::path& file, const std::filesystem::path& directory,
                     const Limits& limits = {});

// Verifies it, and hands on the bytes of its file `name`, if it has one, before that is found to be right or wrong.
Bundle take_from_bundle(const std::filesystem::path& file, const std::string& name,
                        const TakeBytes& take, const Limits& limits = {});

}  // namespace qvhost::bundle
