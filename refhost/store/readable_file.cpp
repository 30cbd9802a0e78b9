#include "store/readable_file.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <thread>

#include "files/descriptor.h"
#include "files/new_file.h"

namespace qvhost::store {

namespace {

constexpr auto kWal = "-wal";
constexpr auto kRollbackJournal = "-journal";

// Of a store that has to be copied, with its log.
constexpr std::uint64_t kMostCopied = std::uint64_t{4} << 30;

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw std::runtime_error(path + ": " + reason);
}

struct OpenFile {
    Descriptor file;
    struct stat info;
};

// Nothing if there is no such file. Nobody is waited for at a pipe.
std::optional<OpenFile> open_file(const std::string& path, int flags = 0) {
    OpenFile opened{Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | flags)),
                    {}};
    if (!opened.file && errno == ENOENT) return std::nullopt;
    if (!opened.file || ::fstat(opened.file.get(), &opened.info) != 0)
        fail(path, std::strerror(errno));
    if (!S_ISREG(opened.info.st_mode)) fail(path, "it is no file");
    return opened;
}

bool is_unchanged(const OpenFile& opened) {
    struct stat now {};
    if (::fstat(opened.file.get(), &now) != 0) return false;
    const auto same = [](const timespec& a, const timespec& b) {
        return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
    };
    return now.st_size == opened.info.st_size && same(now.st_mtim, opened.info.st_mtim) &&
           same(now.st_ctim, opened.info.st_ctim);
}

void copy(const OpenFile& from, const std::string& to) {
    const auto copied = create_private(to);
    for (;;) {
        const auto block = read_bytes(from.file.get(), 1 << 20);
        if (block.empty()) return;
        if (!write_bytes(copied.get(), block)) fail(to, std::strerror(errno));
    }
}

// Copies the store with its log, both as of one moment, and makes one file of them. False: the store was
// written to meanwhile.
bool copy_with_log(const OpenFile& store, const OpenFile& log, const std::string& to) {
    std::error_code ignored;
    for (const char* part : {"", kWal}) std::filesystem::remove(to + part, ignored);
    copy(store, to);
    copy(log, to + kWal);
    if (!is_unchanged(store) || !is_unchanged(log)) return false;
    SQLite::Database db(to, SQLite::OPEN_READWRITE);
    db.execAndGet("PRAGMA wal_checkpoint(TRUNCATE)");
    return true;
}

// An absolute path as a URI.
std::string uri_of(const std::string& path) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string uri = "file://";
    for (const char c : std::filesystem::absolute(path).string()) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') ||
                           std::string_view("/_-.").find(c) != std::string_view::npos;
        const auto byte = static_cast<unsigned char>(c);
        if (plain) {
            uri += c;
        } else {
            uri += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    // SQLite then looks for no journal and no log, and takes no locks.
    return uri + "?immutable=1";
}

}  // namespace

ReadableFile::ReadableFile(const std::string& path) {
    // A collection that runs writes to its store twice a second, and may be about to put its log into it.
    constexpr int kTries = 40;
    std::string busy;
    for (int i = 0; i < kTries; ++i) {
        if (i > 0) std::this_thread::sleep_for(std::chrono::milliseconds(25));
        const auto store = open_file(path);
        if (!store) fail(path, std::strerror(ENOENT));
        bytes_ = static_cast<std::uint64_t>(store->info.st_size);
        const auto journal = open_file(path + kRollbackJournal, O_NOFOLLOW);
        if (journal && journal->info.st_size > 0) {
            busy = "it is being written or was left half written: " + path + kRollbackJournal +
                   " lies beside it";
            continue;
        }
        const auto log = open_file(path + kWal, O_NOFOLLOW);
        if (!log || log->info.st_size == 0) {
            uri_ = uri_of(path);
            return;
        }
        if (!copy_) copy_ = std::make_unique<TemporaryDirectory>("qvhost-store");
        const auto copied = copy_->path() / "report.sqlite";
        const auto total = bytes_ + static_cast<std::uint64_t>(log->info.st_size);
        if (total > kMostCopied) fail(path, "it is too large to be read with the log beside it");
        if (copy_with_log(*store, *log, copied)) {
            uri_ = uri_of(copied);
            bytes_ = total;
            return;
        }
        busy = "it is written to all the time";
    }
    fail(path, busy);
}

}  // namespace qvhost::store
