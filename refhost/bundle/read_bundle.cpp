#include "bundle/read_bundle.h"

#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "bundle/digest.h"
#include "files/descriptor.h"
#include "files/new_file.h"

namespace qvhost::bundle {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLongestManifest = 64u << 20;

// Where the bytes of a file go as well. Empty: nowhere.
using Open = std::function<TakeBytes(const std::string& name)>;

class Checker {
public:
    Checker(fs::path file, Open open) : file_(std::move(file)), open_(std::move(open)) {}

    TakeBytes begin(const ArchivedFile& one) {
        finish_file();
        // The manifest, its digest, then what it names.
        constexpr const char* kFirst[] = {kManifestName, kManifestDigestName};
        if (const auto at = files_++; at < std::size(kFirst)) {
            if (one.name != kFirst[at])
                refuse("it is no bundle: it does not begin with a manifest");
            bundle_.directory = one.directory;
            return [&text = first_[at], this, also = open_(one.name)](std::string_view bytes) {
                text += bytes;
                if (text.size() > kLongestManifest) refuse("its manifest is too large");
                also(bytes);
            };
        }
        if (!is_read_) read();
        const auto listed = listed_.find(one.name);
        if (listed == listed_.end())
            refuse("\"" + one.name + "\" is in it, and its manifest does not say so");
        current_ = listed->second;
        listed_.erase(listed);
        digest_.emplace();
        bytes_ = 0;
        return [this, also = open_(one.name)](std::string_view bytes) {
            bytes_ += bytes.size();
            if (bytes_ > current_->bytes) refuse_file();
            digest_->add(bytes);
            also(bytes);
        };
    }

    Bundle finish() {
        finish_file();
        if (!is_read_) read();
        if (!listed_.empty())
            refuse("\"" + listed_.begin()->first + "\" is missing, which its manifest names");
        return std::move(bundle_);
    }

private:
    [[noreturn]] void refuse(const std::string& reason) const {
        throw std::runtime_error(file_.string() + ": " + reason);
    }
    [[noreturn]] void refuse_file() const {
        refuse("\"" + current_->name + "\" is not as its manifest says");
    }

    void read() {
        const auto& [manifest, digest] = first_;
        if (files_ < first_.size()) refuse("it is no bundle: it does not begin with a manifest");
        if (digest != digest_line(manifest)) refuse("its manifest is not as its digest says");
        try {
            bundle_.manifest = read_manifest(manifest);
        } catch (const std::runtime_error& error) {
            refuse(error.what());
        }
        bundle_.manifest_sha256 = digest.substr(0, digest.find(' '));
        is_read_ = true;
        for (const auto& file : bundle_.manifest.files) {
            if (!listed_.emplace(file.name, &file).second)
                refuse("its manifest names \"" + file.name + "\" twice");
        }
    }

    void finish_file() {
        if (digest_ && (bytes_ != current_->bytes || digest_->hex() != current_->sha256))
            refuse_file();
        digest_.reset();
    }

    fs::path file_;
    Open open_;
    Bundle bundle_;
    std::size_t files_ = 0;
    std::array<std::string, 2> first_;  // the manifest and its digest
    bool is_read_ = false;
    std::map<std::string, const BundledFile*> listed_;  // those that have not come
    const BundledFile* current_ = nullptr;
    std::optional<Sha256> digest_;
    std::uint64_t bytes_ = 0;
};

Bundle check(const fs::path& file, const Limits& limits, Open open) {
    Checker checker(file, std::move(open));
    each_file(file, limits, [&](const ArchivedFile& one) { return checker.begin(one); });
    return checker.finish();
}

void make_directories(const fs::path& directory, const fs::path& below) {
    auto place = directory;
    for (const auto& part : below) {
        place /= part;
        if (::mkdir(place.c_str(), 0700) != 0 && errno != EEXIST)
            throw std::system_error(errno, std::generic_category(), place.string());
    }
}

// Writes a new file.
TakeBytes writer_of(const fs::path& path) {
    auto written = std::make_shared<Descriptor>(create_private(path));
    return [written, path](std::string_view bytes) {
        errno = 0;
        if (!write_bytes(written->get(), bytes))
            throw std::system_error(errno, std::generic_category(), path.string());
    };
}

}  // namespace

Bundle verify_bundle(const fs::path& file, const Limits& limits) {
    return check(file, limits, [](const std::string&) { return [](std::string_view) {}; });
}

Bundle unpack_bundle(const fs::path& file, const fs::path& directory, const Limits& limits) {
    return check(file, limits, [&](const std::string& name) {
        make_directories(directory, fs::path(name).parent_path());
        return writer_of(directory / name);
    });
}

Bundle take_from_bundle(const fs::path& file, const std::string& name, const TakeBytes& take,
                        const Limits& limits) {
    return check(file, limits, [&](const std::string& one) -> TakeBytes {
        if (one == name) return take;
        return [](std::string_view) {};
    });
}

}  // namespace qvhost::bundle
