#include "bundle/archive_reader.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <set>
#include <stdexcept>
#include <system_error>

#include "files/descriptor.h"

namespace qvhost::bundle {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBlock = 1 << 16;

[[noreturn]] void refuse(const fs::path& archive, const std::string& reason) {
    throw std::runtime_error(archive.string() + ": " + reason);
}

// Opened without waiting for whoever writes a pipe.
Descriptor opened(const fs::path& file, struct stat& info) {
    Descriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!fd || ::fstat(fd.get(), &info) != 0) refuse(file, std::strerror(errno));
    if (!S_ISREG(info.st_mode)) refuse(file, "no regular file");
    return fd;
}

bool has_magic(std::string_view beginning) {
    using namespace std::string_view_literals;
    return beginning.starts_with("\x28\xb5\x2f\xfd"sv) || beginning.starts_with("PK\x03\x04"sv);
}

class Reader {
public:
    Reader(const fs::path& file, const Limits& limits) : file_(file), limits_(limits) {
        struct stat info {};
        fd_ = opened(file, info);
        const auto bytes = static_cast<std::uint64_t>(info.st_size);
        most_ = std::min(limits.bytes, std::max(limits.free_bytes, bytes * limits.ratio));
        if (!archive_) throw std::bad_alloc();
        archive_read_support_filter_zstd(archive_.get());
        archive_read_support_format_tar(archive_.get());
        archive_read_support_format_zip(archive_.get());
        check(archive_read_open_fd(archive_.get(), fd_.get(), kBlock));
    }

    void read(const std::function<TakeBytes(const ArchivedFile& file)>& begin) {
        archive_entry* entry = nullptr;
        for (int result;
             (result = archive_read_next_header(archive_.get(), &entry)) != ARCHIVE_EOF;) {
            check(result);
            const auto file = checked(entry);
            if (file.name.empty()) continue;
            if (++files_ > limits_.files)
                refuse(file_, "it holds more than " + std::to_string(limits_.files) + " files");
            read_bytes(begin(file));
        }
    }

private:
    // Without a name: it is a directory, which files below it make.
    ArchivedFile checked(archive_entry* entry) {
        const char* const given = archive_entry_pathname(entry);
        std::string path = given ? given : "";
        const auto type = archive_entry_filetype(entry);
        if (archive_entry_hardlink(entry) || archive_entry_symlink(entry) ||
            (type != AE_IFREG && type != AE_IFDIR))
            refuse(file_, "\"" + path + "\" in it is no file");
        if (type == AE_IFDIR && path.ends_with('/')) path.pop_back();
        if (!is_plain_path(path)) refuse(file_, "\"" + path + "\" in it is no name for a file");
        const auto slash = path.find('/');
        ArchivedFile file{path.substr(0, slash), ""};
        if (directory_.empty()) directory_ = file.directory;
        if (file.directory != directory_) refuse(file_, "its files are not in one directory");
        if (type == AE_IFDIR) return file;
        if (slash == std::string::npos) refuse(file_, "\"" + path + "\" is in no directory");
        file.name = path.substr(slash + 1);
        claim(file.name);
        return file;
    }

    // A name stands for one file, and no file is also a directory.
    void claim(const std::string& name) {
        const auto refuse_second = [&](const std::string& what) {
            refuse(file_, "\"" + what + "\" is in it twice");
        };
        if (directories_.contains(name) || !names_.insert(name).second) refuse_second(name);
        for (auto slash = name.find('/'); slash != std::string::npos;
             slash = name.find('/', slash + 1)) {
            auto directory = name.substr(0, slash);
            if (names_.contains(directory)) refuse_second(directory);
            directories_.insert(std::move(directory));
        }
    }

    void read_bytes(const TakeBytes& take) {
        std::array<char, kBlock> block;
        for (;;) {
            const auto read = archive_read_data(archive_.get(), block.data(), block.size());
            if (read < 0) check(static_cast<int>(read));
            if (read == 0) return;
            const auto size = static_cast<std::size_t>(read);
            bytes_ += size;
            if (bytes_ > most_)
                refuse(file_, "what is in it has more than " + std::to_string(most_) + " bytes");
            take({block.data(), size});
        }
    }

    // A warning is damage as well: a bundle is written without.
    void check(int result) {
        if (result == ARCHIVE_OK) return;
        const char* said = archive_error_string(archive_.get());
        refuse(file_, std::string("it is damaged, or no bundle: ") + (said ? said : "unreadable"));
    }

    struct Free {
        void operator()(archive* one) const { archive_read_free(one); }
    };

    fs::path file_;
    Limits limits_;
    Descriptor fd_;
    std::unique_ptr<archive, Free> archive_{archive_read_new()};
    std::string directory_;
    std::set<std::string> names_, directories_;
    std::uint64_t most_ = 0, bytes_ = 0, files_ = 0;
};

}  // namespace

bool is_plain_path(std::string_view name) {
    constexpr std::size_t kLongestPart = 255;
    constexpr std::size_t kMostParts = 16;
    const bool plain = std::all_of(name.begin(), name.end(),
                                   [](char c) { return c >= ' ' && c <= '~' && c != '\\'; });
    if (!plain || name.empty()) return false;
    for (std::size_t parts = 1;; ++parts) {
        const auto part = name.substr(0, name.find('/'));
        if (part.empty() || part == "." || part == ".." || part.size() > kLongestPart ||
            parts > kMostParts)
            return false;
        if (part.size() == name.size()) return true;
        name.remove_prefix(part.size() + 1);
    }
}

bool is_archive(const fs::path& file) {
    struct stat info {};
    std::error_code error;
    if (!fs::is_regular_file(file, error)) return false;
    const auto fd = opened(file, info);
    constexpr std::size_t kMagic = 4;
    return has_magic(read_bytes(fd.get(), kMagic));
}

void each_file(const fs::path& archive, const Limits& limits,
               const std::function<TakeBytes(const ArchivedFile& file)>& begin) {
    Reader(archive, limits).read(begin);
}

}  // namespace qvhost::bundle
