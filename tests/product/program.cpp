#include "program.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace test {

namespace fs = std::filesystem;

namespace {

// After so long something hangs: on a busy machine, and under memcheck, all takes many times as long.
constexpr auto kLongestWait = std::chrono::minutes(10);

int number(const std::string& text) {
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

bool is_alive(pid_t pid) {
    const auto stat = read_file("/proc/" + std::to_string(pid) + "/stat");
    const auto name_end = stat.rfind(')');
    return name_end != std::string::npos && name_end + 2 < stat.size() &&
           stat[name_end + 2] != 'Z' && stat[name_end + 2] != 'X';
}

void open_as(int fd, const std::string& file, int flags) {
    const int opened = ::open(file.c_str(), flags, 0600);
    if (opened < 0) ::_exit(99);
    if (opened == fd) return;
    ::dup2(opened, fd);
    ::close(opened);
}

std::string read_terminal(int terminal) {
    std::string text;
    char block[4096];
    for (ssize_t n = 0; (n = ::read(terminal, block, sizeof block)) > 0;)
        text.append(block, static_cast<std::size_t>(n));
    return text;
}

}  // namespace

fs::path plugin(const std::string& name) { return fs::path(QV_PLUGINS) / (name + ".so"); }

void ProductTest::SetUp() {
    std::string pattern = fs::temp_directory_path() / "qvhost-test-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    dir_ = pattern;
}

void ProductTest::TearDown() {
    for (const pid_t pid : family()) ::kill(pid, SIGKILL);
    fs::remove_all(dir_);
}

pid_t ProductTest::start(const Invocation& invocation) {
    const auto number = std::to_string(runs_++);
    Files files{dir_ / ("out" + number), dir_ / ("err" + number)};
    int terminal = -1;
    if (invocation.terminal) {
        winsize size{};
        size.ws_row = 24;
        size.ws_col = 20;
        if (::openpty(&files.terminal, &terminal, nullptr, nullptr, &size) != 0)
            throw std::runtime_error("no terminal");
    }

    auto texts = invocation.program;
    if (texts.empty()) texts.emplace_back(QV_PROGRAM);
    texts.insert(texts.end(), invocation.arguments.begin(), invocation.arguments.end());
    std::vector<char*> arguments;
    for (auto& text : texts) arguments.push_back(text.data());
    arguments.push_back(nullptr);

    const pid_t pid = ::fork();
    if (pid == 0) {
        ::umask(invocation.mask);
        if (!invocation.directory.empty() && ::chdir(invocation.directory.c_str()) != 0)
            ::_exit(99);
        ::setenv("QV_TEST_RUN", dir_.c_str(), 1);
        ::setenv("LC_TIME", "de_DE.UTF-8", 1);
        for (const char* name : {"COLUMNS", "NO_COLOR"}) ::unsetenv(name);
        for (const auto& [name, value] : invocation.environment)
            ::setenv(name.c_str(), value.c_str(), 1);
        for (const auto& name : invocation.unset) ::unsetenv(name.c_str());
        open_as(0, "/dev/null", O_RDONLY);
        open_as(1, invocation.out_file.empty() ? files.out.string() : invocation.out_file,
                O_WRONLY | O_CREAT | O_TRUNC);
        if (terminal >= 0) {
            ::dup2(terminal, 2);
            ::close(files.terminal);
            ::close(terminal);
        } else {
            open_as(2, files.err.string(), O_WRONLY | O_CREAT | O_TRUNC);
        }
        for (const int fd : invocation.closed) ::close(fd);
        ::execvp(arguments[0], arguments.data());
        ::_exit(99);
    }
    if (terminal >= 0) ::close(terminal);
    running_[pid] = files;
    return pid;
}

pid_t ProductTest::child_of(pid_t parent) const {
    for (const pid_t pid : family()) {
        const auto proc = "/proc/" + std::to_string(pid);
        const auto status = read_file(proc + "/status");
        if (status.find("\nPPid:\t" + std::to_string(parent) + "\n") == std::string::npos) continue;
        // Not what a leak checker starts at the end of the program, which waits for it.
        if (read_file(proc + "/cmdline").find("collecting-child") != std::string::npos) return pid;
    }
    return 0;
}

Outcome ProductTest::finish(pid_t pid) {
    int status = 0;
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    while (::waitpid(pid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ADD_FAILURE() << "the program does not end";
            ::kill(pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    const auto files = running_.at(pid);
    Outcome outcome;
    if (WIFEXITED(status)) outcome.exit = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) outcome.signal = WTERMSIG(status);
    outcome.out = read_file(files.out);
    outcome.err = files.terminal >= 0 ? read_terminal(files.terminal) : read_file(files.err);
    if (files.terminal >= 0) ::close(files.terminal);
    return outcome;
}

Outcome ProductTest::run(const Invocation& invocation) { return finish(start(invocation)); }

std::vector<pid_t> ProductTest::family() const {
    const std::string mark = "QV_TEST_RUN=" + dir_.string() + '\0';
    std::vector<pid_t> found;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        const pid_t pid = number(entry.path().filename().string());
        if (pid == 0 || pid == ::getpid()) continue;
        if (read_file(entry.path() / "environ").find(mark) != std::string::npos && is_alive(pid))
            found.push_back(pid);
    }
    return found;
}

std::vector<std::string> ProductTest::collect(const std::string& name,
                                              const std::vector<std::string>& more) const {
    std::vector<std::string> arguments{"collect",  "--log-dir",           log_dir().string(),
                                       "--plugin", plugin(name).string(), "--plug-in-only"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

void expect_end_of_hit(const Outcome& outcome, int signal) {
    EXPECT_TRUE(outcome.exit == 0 || outcome.exit == 1 || outcome.exit == 3 ||
                outcome.signal == signal)
        << outcome.exit << outcome.err;
}

void wait_until(const std::string& what, const std::function<bool()>& is_so) {
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    while (!is_so()) {
        if (std::chrono::steady_clock::now() > deadline) {
            ADD_FAILURE() << "waited in vain: " << what;
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

std::string read_file(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    // A file of /proc whose process ends while it is read gives an error; what was read counts.
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void write_file(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

}  // namespace test
