#include "bundle/write_bundle.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <future>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <system_error>
#include <utility>

#include "bundle/contents.h"
#include "bundle/digest.h"
#include "bundle/summary_text.h"
#include "files/descriptor.h"
#include "files/new_file.h"
#include "text/utc.h"

namespace qvhost::bundle {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kReadAtOnce = 1 << 16;

// Counts what is written to it.
class CountingBuffer : public std::streambuf {
public:
    std::uint64_t bytes() const { return bytes_; }

private:
    std::streamsize xsputn(const char*, std::streamsize size) override {
        bytes_ += static_cast<std::uint64_t>(size);
        return size;
    }
    int_type overflow(int_type c) override {
        ++bytes_;
        return traits_type::not_eof(c);
    }

    std::uint64_t bytes_ = 0;
};

void each_block(const fs::path& file, const std::function<void(std::string_view)>& take) {
    const Descriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!fd) throw std::system_error(errno, std::generic_category(), file.string());
    std::array<char, kReadAtOnce> buffer;
    for (;;) {
        errno = 0;
        const auto size = read_into(fd.get(), buffer);
        if (size == 0 && errno != 0)
            throw std::system_error(errno, std::generic_category(), file.string());
        if (size == 0) return;
        take({buffer.data(), size});
    }
}

std::string sha256_of(std::string_view bytes) {
    Sha256 digest;
    digest.add(bytes);
    return digest.hex();
}

// "2026-11-21T01:20:40Z"; 0: it is none.
std::time_t time_of(const std::string& text) {
    return std::max<std::time_t>(seconds_of_utc(text).value_or(0), 0);
}

// The directory that is in the bundle: "qvhost-web1-20261121T012040Z".
std::string directory_name(const Manifest& manifest) {
    constexpr std::size_t kLongest = 64;
    std::string name = "qvhost";
    for (const auto& text : {manifest.host, manifest.finished}) {
        std::string part;
        for (const char c : text.substr(0, kLongest)) {
            const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                               (c >= '0' && c <= '9') || c == '_' || (c == '.' && !part.empty());
            if (plain) part += c;
        }
        if (!part.empty()) name += '-' + part;
    }
    return name;
}

class Writer {
public:
    Writer(const Store& store, const std::string& program, const Order& order)
        : store_(store), order_(order), contents_(contents_of(order.log_dir, order.names)) {
        contents_.left_out.insert(contents_.left_out.end(), order.left_out.begin(),
                                  order.left_out.end());
        manifest_.program = program;
        manifest_.collected_by = store.meta("qvhost");
        manifest_.host = store.meta("host");
        manifest_.started = store.meta("started");
        manifest_.finished = store.meta("finished");
        manifest_.status = store.meta("status");
        manifest_.redacted = order.redacted;
        hash_files();
    }

    Manifest write() {
        if (order_.most_bytes > 0) leave_out_what_is_too_much();
        describe();
        try {
            replace_file(order_.output, [&](std::ostream& out) { write_to(out); });
        } catch (const ArchiveError& error) {
            throw std::runtime_error(order_.output.string() +
                                     ": cannot be written: " + error.what());
        }
        return manifest_;
    }

private:
    // The manifest, which stands first, has the hashes of all files: so long nothing can be packed. Two threads.
    void hash_files() {
        hashes_.resize(contents_.files.size());
        std::atomic<std::size_t> next{0};
        const auto hash_some = [&] {
            for (auto i = next++; i < hashes_.size(); i = next++)
                hashes_[i] = hash_of(contents_.files[i]);
        };
        auto other = std::async(std::launch::async, hash_some);
        hash_some();
        other.get();
    }

    std::string hash_of(Source& source) const {
        Sha256 digest;
        source.bytes = 0;
        each_block(order_.log_dir / source.name, [&](std::string_view block) {
            digest.add(block);
            source.bytes += block.size();
        });
        return digest.hex();
    }

    // Fills the lists of the manifest.
    void describe() {
        manifest_.left_out = contents_.left_out;
        summary_ = summary_text(store_, manifest_);
        manifest_.files = {
            {kSummaryName, summary_.size(), sha256_of(summary_)}
        };
        for (std::size_t i = 0; i < contents_.files.size(); ++i)
            manifest_.files.push_back(described(contents_.files[i], hashes_[i]));
    }

    BundledFile described(const Source& source, const std::string& hash) const {
        BundledFile file{source.name, source.bytes, hash};
        for (const auto& command : commands_) {
            const auto& captures = command.captures;
            if (std::find(captures.begin(), captures.end(), source.name) == captures.end())
                continue;
            file.command = command.text;
            file.started = command.started.value_or("");
            file.seconds = command.seconds;
            file.outcome = outcome(command);
        }
        return file;
    }

    void write_to(std::ostream& out) const {
        ArchiveWriter archive(out, order_.format, time_of(manifest_.finished));
        const auto directory = directory_name(manifest_) + '/';
        const auto put = [&](const char* name, const std::string& text) {
            archive.begin(directory + name, text.size());
            archive.write(text);
        };
        const auto manifest = json_of(manifest_);
        put(kManifestName, manifest);
        put(kManifestDigestName, digest_line(manifest));
        put(kSummaryName, summary_);
        for (std::size_t i = 0; i < contents_.files.size(); ++i) {
            const auto& source = contents_.files[i];
            archive.begin(directory + source.name, source.bytes);
            Sha256 digest;
            each_block(order_.log_dir / source.name, [&](std::string_view block) {
                digest.add(block);
                archive.write(block);
            });
            if (digest.hex() != hashes_[i])
                throw std::runtime_error((order_.log_dir / source.name).string() +
                                         ": it changed while the bundle was made");
        }
        archive.close();
    }

    std::uint64_t bytes_of_bundle() {
        describe();
        CountingBuffer counter;
        std::ostream out(&counter);
        write_to(out);
        return counter.bytes();
    }

    // How many bytes of a bundle the file takes by itself.
    std::uint64_t packed_bytes(const Source& source) const {
        CountingBuffer counter;
        std::ostream out(&counter);
        ArchiveWriter archive(out, order_.format, 0);
        archive.begin(source.name, source.bytes);
        each_block(order_.log_dir / source.name,
                   [&](std::string_view block) { archive.write(block); });
        archive.close();
        return counter.bytes();
    }

    void leave_out_what_is_too_much() {
        auto bytes = bytes_of_bundle();
        while (bytes > order_.most_bytes) {
            auto excess = bytes - order_.most_bytes;
            for (bool first = true; first || excess > 0; first = false) {
                const auto saved = leave_out_largest_capture(bytes);
                excess -= std::min(excess, saved);
                if (saved == 0) break;
            }
            bytes = bytes_of_bundle();
        }
    }

    // Returns about how many bytes of the bundle that saves.
    std::uint64_t leave_out_largest_capture(std::uint64_t bytes) {
        const auto largest = std::max_element(
            contents_.files.begin(), contents_.files.end(), [](const Source& a, const Source& b) {
                return std::pair(a.is_capture, a.bytes) < std::pair(b.is_capture, b.bytes);
            });
        if (largest == contents_.files.end() || !largest->is_capture)
            throw std::runtime_error(order_.output.string() + ": without any capture it has " +
                                     std::to_string(bytes) + " bytes, and may have " +
                                     std::to_string(order_.most_bytes));
        const auto saved = packed_bytes(*largest);
        contents_.left_out.push_back(
            {largest->name, "the bundle would be larger than it may be", largest->bytes});
        hashes_.erase(hashes_.begin() + (largest - contents_.files.begin()));
        contents_.files.erase(largest);
        return saved;
    }

    const Store& store_;
    const Order& order_;
    std::vector<CommandInfo> commands_ = store_.commands();
    Contents contents_;
    std::vector<std::string> hashes_;  // one a file of the contents
    Manifest manifest_;
    std::string summary_;
};

}  // namespace

Manifest write_bundle(const Store& store, const std::string& program, const Order& order) {
    return Writer(store, program, order).write();
}

}  // namespace qvhost::bundle
