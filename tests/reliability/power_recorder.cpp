// Loaded into a program before the C library: notes of a directory what a disk has of it for certain, for cutting its
// power. Each fsync() of a file leaves a copy of it, each change of a directory and each fsync() of one a list of its
// names. Nothing waits for the real disk.
//
// QV_POWER_DIRECTORY is the directory; QV_POWER_NOTES is where the notes go; at the step QV_POWER_CUT every process
// that takes a step is killed. power_cut.h reads the notes.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

template <class Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

int open_really(const char* path, int flags, mode_t mode = 0) {
    static const auto function = real<int (*)(const char*, int, ...)>("open");
    return function(path, flags, mode);
}

const char* setting(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

// Which file or directory it is, whatever its name: numbers of files are used again.
std::string key_of(int fd) {
    struct statx info {};
    if (::statx(fd, "", AT_EMPTY_PATH, STATX_INO | STATX_BTIME, &info) != 0) return "";
    return std::to_string(info.stx_ino) + "-" + std::to_string(info.stx_btime.tv_sec) + "-" +
           std::to_string(info.stx_btime.tv_nsec);
}

bool is_watched(const std::string& path) {
    const std::string directory = setting("QV_POWER_DIRECTORY");
    return !directory.empty() &&
           (path == directory || path.compare(0, directory.size() + 1, directory + "/") == 0);
}

std::string path_of(int fd) {
    char path[PATH_MAX];
    const auto link = "/proc/self/fd/" + std::to_string(fd);
    const auto size = ::readlink(link.c_str(), path, sizeof path);
    return size > 0 ? std::string(path, static_cast<std::size_t>(size)) : "";
}

// The directory that the name stands in, with a path in which nothing is relative.
std::string directory_of(int at, const char* name) {
    std::string path = name;
    if (path.empty()) return "";
    if (path[0] != '/') {
        char here[PATH_MAX];
        path =
            (at == AT_FDCWD ? std::string(::getcwd(here, sizeof here) ? here : "") : path_of(at)) +
            "/" + path;
    }
    path = path.substr(0, path.find_last_of('/'));
    char whole[PATH_MAX];
    return ::realpath(path.c_str(), whole) ? whole : "";
}

void copy(int from, const std::string& to) {
    const int out = open_really(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    char block[65536];
    off_t at = 0;
    for (ssize_t n = 0; (n = ::pread(from, block, sizeof block, at)) > 0; at += n)
        if (::write(out, block, static_cast<std::size_t>(n)) != n) break;
    ::close(out);
}

// "KEY NAME", a line each.
std::string names_in(const std::string& directory) {
    std::string names;
    DIR* const all = ::opendir(directory.c_str());
    while (const dirent* entry = all ? ::readdir(all) : nullptr) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        const auto path = directory + "/" + name;
        const int fd = open_really(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
        if (fd < 0) continue;
        names += key_of(fd) + " " + name + "\n";
        ::close(fd);
    }
    if (all) ::closedir(all);
    return names;
}

void put(const std::string& file, const std::string& text, int flags) {
    const int fd = open_really(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, 0600);
    if (::write(fd, text.data(), text.size()) < 0) std::perror("recorder");
    ::close(fd);
}

// One step at a time over all processes; the last one ends all that take a further one.
class Step {
public:
    Step() : notes_(setting("QV_POWER_NOTES")) {
        const auto file = notes_ + "/steps";
        steps_ = open_really(file.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        ::flock(steps_, LOCK_EX);
        number_ = ::lseek(steps_, 0, SEEK_END);
        const std::string cut = setting("QV_POWER_CUT");
        is_last_ = !cut.empty() && number_ + 1 >= std::stol(cut);
        if (!cut.empty() && number_ >= std::stol(cut)) ::kill(::getpid(), SIGKILL);
    }
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;
    ~Step() {
        if (::write(steps_, ".", 1) != 1) std::perror("recorder");
        if (is_last_) ::kill(::getpid(), SIGKILL);
        ::close(steps_);
    }

    // What the disk has of the file from now on.
    void keep(int fd) const { copy(fd, notes_ + "/file-" + key_of(fd)); }

    // What the disk may have of the directory from now on; `mark`: 's' if it has all of it.
    void list(const std::string& directory, char mark) const {
        const int fd = open_really(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (fd < 0) return;
        const auto file = notes_ + "/names-" + key_of(fd);
        ::close(fd);
        if (mark == 's') put(file, "!\n", O_TRUNC);
        put(file, names_in(directory) + "=\n", O_APPEND);
    }

private:
    std::string notes_;
    int steps_ = -1;
    long number_ = 0;
    bool is_last_ = false;
};

// After a name has come or gone.
void note_names(int at, const char* name, int other_at = AT_FDCWD, const char* other = "") {
    const int error = errno;
    const auto directory = directory_of(at, name);
    const auto second = directory_of(other_at, other);
    if (is_watched(directory) || is_watched(second)) {
        const Step step;
        if (is_watched(directory)) step.list(directory, 'n');
        if (is_watched(second) && second != directory) step.list(second, 'n');
    }
    errno = error;
}

// Whether it was noted.
bool note_kept(int fd) {
    struct stat info {};
    if (::fstat(fd, &info) != 0) return false;
    const auto path = path_of(fd);  // of a file without a name: "DIRECTORY/#123 (deleted)"
    if (!is_watched(path)) return false;
    const Step step;
    if (S_ISDIR(info.st_mode))
        step.list(path, 's');
    else if (S_ISREG(info.st_mode))
        step.keep(fd);
    return true;
}

int opened(int fd, int at, const char* path, int flags) {
    if (fd >= 0 && (flags & O_CREAT) != 0) note_names(at, path);
    return fd;
}

mode_t mode_in(va_list arguments, int flags) {
    return (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

#define OPEN(name)                                                                \
    int name(const char* path, int flags, ...) {                                  \
        static const auto function = real<int (*)(const char*, int, ...)>(#name); \
        va_list arguments;                                                        \
        va_start(arguments, flags);                                               \
        const mode_t mode = mode_in(arguments, flags);                            \
        va_end(arguments);                                                        \
        return opened(function(path, flags, mode), AT_FDCWD, path, flags);        \
    }
#define OPENAT(name)                                                                   \
    int name(int at, const char* path, int flags, ...) {                               \
        static const auto function = real<int (*)(int, const char*, int, ...)>(#name); \
        va_list arguments;                                                             \
        va_start(arguments, flags);                                                    \
        const mode_t mode = mode_in(arguments, flags);                                 \
        va_end(arguments);                                                             \
        return opened(function(at, path, flags, mode), at, path, flags);               \
    }
OPEN(open)
OPEN(open64)
OPENAT(openat)
OPENAT(openat64)

int mkdir(const char* path, mode_t mode) {
    static const auto function = real<int (*)(const char*, mode_t)>("mkdir");
    const int result = function(path, mode);
    if (result == 0) note_names(AT_FDCWD, path);
    return result;
}
int rmdir(const char* path) {
    static const auto function = real<int (*)(const char*)>("rmdir");
    const int result = function(path);
    if (result == 0) note_names(AT_FDCWD, path);
    return result;
}
int unlink(const char* path) {
    static const auto function = real<int (*)(const char*)>("unlink");
    const int result = function(path);
    if (result == 0) note_names(AT_FDCWD, path);
    return result;
}
int remove(const char* path) {
    static const auto function = real<int (*)(const char*)>("remove");
    const int result = function(path);
    if (result == 0) note_names(AT_FDCWD, path);
    return result;
}
int unlinkat(int at, const char* path, int flags) {
    static const auto function = real<int (*)(int, const char*, int)>("unlinkat");
    const int result = function(at, path, flags);
    if (result == 0) note_names(at, path);
    return result;
}
int rename(const char* from, const char* to) {
    static const auto function = real<int (*)(const char*, const char*)>("rename");
    const int result = function(from, to);
    if (result == 0) note_names(AT_FDCWD, from, AT_FDCWD, to);
    return result;
}
int linkat(int from_at, const char* from, int to_at, const char* to, int flags) {
    static const auto function = real<int (*)(int, const char*, int, const char*, int)>("linkat");
    const int result = function(from_at, from, to_at, to, flags);
    if (result == 0) note_names(to_at, to);
    return result;
}
int fsync(int fd) {
    static const auto function = real<int (*)(int)>("fsync");
    return note_kept(fd) ? 0 : function(fd);
}
int fdatasync(int fd) {
    static const auto function = real<int (*)(int)>("fdatasync");
    return note_kept(fd) ? 0 : function(fd);
}

}  // extern "C"
#pragma GCC visibility pop
