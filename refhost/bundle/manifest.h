// manifest.json of a bundle: what is in it, where that comes from, and what is not.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvhost::bundle {

inline constexpr int kFormat = 1;  // counts the changes of the format that a reader has to know of
inline constexpr const char* kManifestName = "manifest.json";
// Follows it, with its SHA-256 as sha256sum writes it.
inline constexpr const char* kManifestDigestName = "manifest.sha256";

struct BundledFile {
    std::string name;
    std::uint64_t bytes = 0;
    std::string sha256;  // in hexadecimal digits
    // Of a capture: the command that wrote it, when it began (UTC), how long it ran, and how it ended in words;
    // empty: well.
    std::string command = {};
    std::string started = {};
    std::optional<double> seconds = {};
    std::string outcome = {};
    bool operator==(const BundledFile&) const = default;
};

struct LeftOut {
    std::string name;
    std::string reason;
    std::uint64_t bytes = 0;
    bool operator==(const LeftOut&) const = default;
};

struct Manifest {
    std::string program = {};       // "qvhost 1.0.0", which made the bundle
    std::string collected_by = {};  // the version that collected
    // Of the collection; empty: not known.
    std::string host = {}, started = {}, finished = {}, status = {};
    std::string redacted = {};  // "serials,network": what it was redacted of; empty: nothing
    std::vector<BundledFile> files = {};  // all but the manifest and its digest
    std::vector<LeftOut> left_out = {};
    bool operator==(const Manifest&) const = default;
};

std::string json_of(const Manifest& manifest);

// The content of manifest.sha256.
std::string digest_line(std::string_view manifest);

// Throws std::runtime_error, without the bundle's name, if the text is no manifest of this format.
Manifest read_manifest(std::string_view text);

}  // namespace qvhost::bundle
