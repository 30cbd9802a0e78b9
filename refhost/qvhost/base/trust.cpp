#include "qvhost/base/trust.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <deque>
#include <system_error>

#include "files/descriptor.h"
#include "qvhost/base/access_list.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

// A file as it was opened, without its contents (O_PATH).
struct Opened {
    Descriptor file;
    struct stat info {};
    int error = 0;  // why it could not be opened
};

// `name` is one name, and a link is opened itself.
Opened open_in(const Descriptor& directory, const std::string& name) {
    Opened opened;
    opened.file =
        Descriptor(::openat(directory.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!opened.file || ::fstat(opened.file.get(), &opened.info) != 0) opened.error = errno;
    return opened;
}

Opened open_root() {
    Opened opened;
    opened.file = Descriptor(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!opened.file || ::fstat(opened.file.get(), &opened.info) != 0) opened.error = errno;
    return opened;
}

// Attributes of what is only opened as a path are read by this name.
std::string name_of(const Descriptor& file) {
    return "/proc/self/fd/" + std::to_string(file.get());
}

// Users mostly have a group of their own. Root trusts no group but its own.
bool groups_count() { return ::geteuid() == 0; }

bool others_write(const Opened& opened) {
    const auto& info = opened.info;
    const auto list = list_lets_others_write(name_of(opened.file), AccessList::access, info.st_uid,
                                             info.st_gid, groups_count());
    if (list) return *list;
    return (info.st_mode & S_IWOTH) != 0 ||
           (groups_count() && info.st_gid != 0 && (info.st_mode & S_IWGRP) != 0);
}

// Whether what is made in the directory can be written by others.
bool others_write_in(const Opened& opened) {
    return list_lets_others_write(name_of(opened.file), AccessList::default_access,
                                  opened.info.st_uid, opened.info.st_gid, groups_count())
        .value_or(false);
}

bool is_ours_or_roots(const struct stat& info) {
    return info.st_uid == ::geteuid() || info.st_uid == 0;
}

std::string why_way_is_open(const Opened& directory, const fs::path& path) {
    if (!S_ISDIR(directory.info.st_mode)) return path.string() + " is not a directory";
    if (!is_ours_or_roots(directory.info))
        return path.string() + " belongs to another user, who could replace it";
    if (others_write(directory) && (directory.info.st_mode & S_ISVTX) == 0)
        return path.string() + " can be written by others, who could replace it";
    return "";
}

// A tool would write through a link to wherever it leads, and wait at a pipe that nobody reads.
std::string why_not_plain(const fs::path& directory) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(directory, error)) {
        const auto status = entry.symlink_status(error);
        const auto name = entry.path().filename().string();
        if (fs::is_symlink(status)) return name + " in it is a symbolic link";
        if (!fs::is_regular_file(status) && !fs::is_directory(status))
            return name + " in it is neither a file nor a directory";
    }
    return error ? error.message() : "";
}

std::string why_not_private(const Opened& directory) {
    if (!S_ISDIR(directory.info.st_mode)) return "not a directory";
    if (directory.info.st_uid != ::geteuid()) return "it belongs to another user";
    if (others_write(directory)) return "others can write to it";
    if (others_write_in(directory)) return "others can write to what is made in it";
    return why_not_plain(name_of(directory.file) + "/");
}

std::string target_of(const Opened& link) {
    std::string target(4096, '\0');
    const ssize_t size = ::readlinkat(link.file.get(), "", target.data(), target.size());
    target.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return target;
}

// Walks from the root, a name at a time.
class Walk {
public:
    explicit Walk(const fs::path& path) { expect(path); }

    JudgedPlace to_private() {
        ways_.push_back(open_root());
        if (ways_.back().error != 0) return refused(std::strerror(ways_.back().error));
        while (!names_.empty()) {
            if (auto why = why_way_is_open(ways_.back(), here_); !why.empty()) return refused(why);
            const auto name = names_.front();
            names_.pop_front();
            if (name == "..") {
                if (ways_.size() > 1) ways_.pop_back();
                here_ = here_.parent_path();
                continue;
            }
            auto next = open_in(ways_.back().file, name);
            if (next.error == ENOENT) return missing(name);
            if (next.error != 0)
                return refused((here_ / name).string() + ": " + std::strerror(next.error));
            if (S_ISLNK(next.info.st_mode)) {
                if (names_.empty())
                    return refused("it is a symbolic link; name the directory itself");
                if (!is_ours_or_roots(next.info))
                    return refused((here_ / name).string() + " is a link of another user's");
                if (++links_ > kMostLinks) return refused(std::strerror(ELOOP));
                follow(target_of(next));
                continue;
            }
            here_ /= name;
            ways_.push_back(std::move(next));
        }
        return refused(why_not_private(ways_.back()));
    }

private:
    static constexpr int kMostLinks = 40;

    // The names of the path come before those that are left.
    void expect(const fs::path& path) {
        std::deque<std::string> names;
        for (const auto& part : path.relative_path()) {
            if (!part.empty() && part != ".") names.push_back(part);
        }
        names_.insert(names_.begin(), names.begin(), names.end());
    }

    void follow(const fs::path& target) {
        expect(target);
        if (!target.is_absolute()) return;
        ways_.resize(1);
        here_ = "/";
    }

    JudgedPlace refused(const std::string& why) const { return {here_, why}; }

    // What is not there will be made here.
    JudgedPlace missing(const std::string& name) const {
        auto path = here_ / name;
        for (const auto& rest : names_) path /= rest;
        return {path, ""};
    }

    std::deque<std::string> names_;  // left to walk
    std::deque<Opened> ways_;        // directories, from the root to where it stands
    fs::path here_ = "/";
    int links_ = 0;
};

}  // namespace

JudgedPlace judge_private(const fs::path& directory) { return Walk(directory).to_private(); }

std::string why_not_trusted_itself(const fs::path& path) {
    Opened opened;
    opened.file = Descriptor(::open(path.c_str(), O_PATH | O_CLOEXEC));
    if (!opened.file || ::fstat(opened.file.get(), &opened.info) != 0)
        return "";  // there is nothing to run
    if (!is_ours_or_roots(opened.info)) return path.string() + " belongs to another user";
    if (others_write(opened)) return path.string() + " can be written by others";
    return "";
}

std::string why_program_not_trusted(const fs::path& program) {
    std::error_code error;
    const auto file = fs::canonical(program, error);
    if (error) return program.string() + ": " + error.message();
    if (auto reason = why_not_trusted_itself(file); !reason.empty()) return reason;
    for (auto way = file.parent_path();; way = way.parent_path()) {
        Opened opened;
        opened.file = Descriptor(::open(way.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
        if (!opened.file || ::fstat(opened.file.get(), &opened.info) != 0)
            return way.string() + ": " + std::strerror(errno);
        if (auto reason = why_way_is_open(opened, way); !reason.empty()) return reason;
        if (way == way.parent_path()) return "";
    }
}

std::string why_not_trusted(const fs::path& path) {
    if (auto reason = why_not_trusted_itself(path); !reason.empty()) return reason;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(path, ignored)) {
        if (auto reason = why_not_trusted_itself(entry.path()); !reason.empty()) return reason;
    }
    return "";
}

}  // namespace qvhost
