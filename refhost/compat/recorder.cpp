#include "compat/recorder.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <string_view>
#include <system_error>
#include <thread>

#include "compat/script_parts.h"
#include "compat/stand_in.h"
#include "files/descriptor.h"
#include "files/new_file.h"
#include "files/script.h"

namespace qvhost::compat {

namespace fs = std::filesystem;

namespace {

// Filters in command lines: what they print depends on what they read. They are this machine's own in a replay, too.
constexpr std::string_view kFilters[] = {"awk", "grep", "wc", "sh"};

constexpr const char* kVendorTools = "qv_tools";

std::string recorder(const Place& place, const fs::path& notes, const std::string& rest) {
    return "#!/bin/sh\n" + start_in_program(place, "record") + " " + shell_quoted(notes) + " " +
           shell_quoted(place.directory.string() + ":" + place.search_path) + " " + rest +
           " \"$@\"\n";
}

bool is_program(const fs::path& file) {
    std::error_code ignored;
    return fs::is_regular_file(file, ignored) && ::access(file.c_str(), X_OK) == 0;
}

// Where a stream of this process leads.
struct Way {
    explicit Way(int fd) {
        struct stat info {};
        if (::fstat(fd, &info) != 0) return;
        device = info.st_dev;
        inode = info.st_ino;
        // The shell opens captures; files to which is added are the host's.
        is_host_file = S_ISREG(info.st_mode) && (::fcntl(fd, F_GETFL) & O_APPEND) != 0;
        is_pipe = S_ISFIFO(info.st_mode);
        size = info.st_size;
    }
    bool is_same(const Way& other) const { return device == other.device && inode == other.inode; }
    dev_t device = 0;
    ino_t inode = 0;
    bool is_host_file = false;
    bool is_pipe = false;
    off_t size = 0;
};

// Passes on what the file has got since `at`. False: nobody reads it any more.
bool pass_on(int file, off_t& at) {
    char block[65536];
    for (;;) {
        const ssize_t n = ::pread(file, block, sizeof block, at);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return true;
        at += n;
        if (!write_bytes(STDOUT_FILENO, {block, static_cast<std::size_t>(n)})) return false;
    }
}

// Copies what the file behind the stream has got since `at`.
void keep(int stream, off_t at, const fs::path& file) {
    const Descriptor from(
        ::open(("/proc/self/fd/" + std::to_string(stream)).c_str(), O_RDONLY | O_CLOEXEC));
    if (!from) return;
    constexpr off_t kMost = off_t{64} << 20;
    const auto to = create_private(file);
    char block[65536];
    for (off_t end = at + kMost; at < end;) {
        const ssize_t n = ::pread(from.get(), block, sizeof block, at);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        at += n;
        if (!write_bytes(to.get(), {block, static_cast<std::size_t>(n)})) return;
    }
}

// A new directory in `notes`; names are in the order of time.
fs::path new_note(const fs::path& notes) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    char number[32];
    std::snprintf(
        number, sizeof number, "%020lld",
        static_cast<long long>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count()));
    std::string pattern = notes / (std::string(number) + "-XXXXXX");
    return ::mkdtemp(pattern.data()) ? fs::path(pattern) : fs::path();
}

// The pid, or minus the error number.
pid_t start_tool(const std::string& file, std::vector<std::string> words, int out, int err) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (out >= 0) posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
    if (err >= 0) posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO);
    std::vector<char*> arguments;
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t pid = 0;
    const int error =
        ::posix_spawnp(&pid, file.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? pid : -error;
}

}  // namespace

void write_recorders(const Place& place, const fs::path& directory, const fs::path& vendor_tools,
                     const fs::path& notes,
                     const std::function<bool(const fs::path& file)>& is_refused) {
    const auto script = directory / ".recorder";
    write_script(script, recorder(place, notes, "'' \"${0##*/}\""));
    std::set<std::string> seen(std::begin(kFilters), std::end(kFilters));
    std::istringstream directories(place.directory.string() + ":" + place.search_path);
    for (std::string one; std::getline(directories, one, ':');) {
        if (one.empty() || one.front() != '/') continue;
        std::error_code error;
        for (fs::directory_iterator entry(one, error), end; !error && entry != end;
             entry.increment(error)) {
            const auto name = entry->path().filename().string();
            if (name.front() == '.' || seen.contains(name) || !is_program(entry->path())) continue;
            // Of several files the shell takes the first one.
            seen.insert(name);
            if (!is_refused(entry->path())) fs::create_symlink(script, directory / name);
        }
    }
    std::vector<std::string> builds;
    for (const auto& entry : fs::directory_iterator(vendor_tools)) {
        if (is_program(entry.path())) builds.push_back(entry.path().filename().string());
    }
    for (const auto& build : builds) {
        const auto behind = place.notes / ("behind-" + build);
        fs::rename(vendor_tools / build, behind);
        write_script(vendor_tools / build,
                     recorder(place, notes,
                              shell_quoted(behind) + " " +
                                  shell_quoted(std::string(kVendorTools) + "/" + build)));
    }
}

// NOTES SEARCH_PATH FILE TOOL ARGUMENT...; without a FILE the tool is looked for.
int record_stand_in(const StandInArguments& given) {
    constexpr std::size_t kOwn = 4;
    if (given.arguments.size() < kOwn) return 2;
    const auto& tool = given.arguments[3];
    const auto& file = given.arguments[2].empty() ? tool : given.arguments[2];
    ::setenv("PATH", given.arguments[1].c_str(), 1);
    std::vector<std::string> words{file};
    words.insert(words.end(), given.arguments.begin() + kOwn, given.arguments.end());

    const auto note = new_note(given.arguments[0]);
    if (note.empty()) return start_instead(words);
    std::string command = tool;
    for (std::size_t i = 1; i < words.size(); ++i) command += '\0' + words[i];
    write_new_file(note / "command", command);

    const Way out(STDOUT_FILENO), err(STDERR_FILENO);
    Descriptor printed;
    if (out.is_pipe) printed = create_private(note / "stdout", O_RDWR | O_APPEND);
    const bool is_merged = out.is_pipe && err.is_same(out);
    const auto begin = std::chrono::steady_clock::now();
    const pid_t pid = start_tool(file, words, printed.get(), is_merged ? printed.get() : -1);
    if (pid < 0) {
        std::error_code ignored;
        fs::remove_all(note, ignored);
        return start_instead(words);
    }
    ::signal(SIGPIPE, SIG_IGN);
    int status = 0;
    off_t passed_on = 0;
    for (bool is_read = true;;) {
        const pid_t ended = ::waitpid(pid, &status, printed ? WNOHANG : 0);
        if (ended < 0 && errno != EINTR) return 1;
        if (printed && is_read && !pass_on(printed.get(), passed_on)) {
            // As the tool would have met it.
            is_read = false;
            ::kill(pid, SIGPIPE);
        }
        if (ended == pid) break;
        if (printed) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    if (out.is_host_file) keep(STDOUT_FILENO, out.size, note / "stdout");
    if (err.is_host_file && !err.is_same(out)) keep(STDERR_FILENO, err.size, note / "stderr");
    char end[64];
    std::snprintf(end, sizeof end, "%d %d %.3f\n", WIFEXITED(status) ? WEXITSTATUS(status) : 0,
                  WIFSIGNALED(status) ? WTERMSIG(status) : 0, took.count());
    write_new_file(note / "end", end);
    return end_as(status);
}

std::vector<ToolNote> notes_in(const fs::path& notes) {
    std::vector<fs::path> directories;
    for (const auto& entry : fs::directory_iterator(notes)) directories.push_back(entry.path());
    std::sort(directories.begin(), directories.end());
    std::vector<ToolNote> all;
    for (const auto& directory : directories) {
        ToolNote note;
        note.directory = directory;
        std::ifstream end(directory / "end");
        if (!(end >> note.exit >> note.signal >> note.seconds)) continue;
        std::ifstream command(directory / "command", std::ios::binary);
        std::stringstream bytes;
        bytes << command.rdbuf();
        const auto text = bytes.str();
        note.tool = text.substr(0, text.find('\0'));
        for (auto at = text.find('\0'); at != std::string::npos;) {
            const auto next = text.find('\0', at + 1);
            note.arguments.push_back(text.substr(at + 1, next - at - 1));
            at = next;
        }
        note.has_output = fs::exists(directory / "stdout");
        note.has_errors = fs::exists(directory / "stderr");
        all.push_back(std::move(note));
    }
    return all;
}

}  // namespace qvhost::compat
