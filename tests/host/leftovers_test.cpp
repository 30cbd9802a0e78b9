// Which directories of killed programs are removed.
#include "files/leftovers.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <set>

#include <gtest/gtest.h>

#include "files/temporary_directory.h"
#include "place.h"

namespace qvhost {

namespace {

namespace fs = std::filesystem;

class Leftovers : public test::Place {
protected:
    // A directory with one file in a folder of it, as old as that, in seconds.
    fs::path left(const std::string& name, const std::string& folder, long age,
                  mode_t mode = 0700) const {
        const auto directory = dir / name;
        fs::create_directories(directory / folder);
        std::ofstream(directory / folder / "file") << "text";
        ::chmod(directory.c_str(), mode);
        make_old(directory, age);
        return directory;
    }

    static void make_old(const fs::path& directory, long age) {
        const timespec time{.tv_sec = std::time(nullptr) - age, .tv_nsec = 0};
        const timespec times[] = {time, time};
        EXPECT_EQ(::utimensat(AT_FDCWD, directory.c_str(), times, 0), 0);
    }

    std::set<std::string> names() const {
        std::set<std::string> found;
        for (const auto& entry : fs::directory_iterator(dir))
            found.insert(entry.path().filename().string());
        return found;
    }
};

TEST_F(Leftovers, OnlyWhatIsCertainlyLeftIsRemoved) {
    left("tool-aaaaaa", "log", 700);
    left("other-bbbbbb", "log", 1'000'000);
    const std::set<std::string> stay{"tool-young1",  "tool-public", "tool-foreig",
                                     "tool-held00",  "tool-link00", "tool-short",
                                     "tool-longer1", "toolaaaaaaa", "another-aaaaaa"};
    left("tool-young1", "log", 500);
    left("tool-public", "log", 700, 0755);
    left("tool-foreig", "mine", 700);
    const auto held = hold_directory(left("tool-held00", "log", 700));
    left("tool-short", "log", 700);
    left("tool-longer1", "log", 700);
    left("toolaaaaaaa", "log", 700);
    fs::create_directory_symlink(left("another-aaaaaa", "log", 700), dir / "tool-link00");
    remove_leftovers(dir, {{"tool", {"log", "bin"}}, {"other", {"log"}}});
    EXPECT_EQ(names(), stay);
}

// As a killed program leaves them.
TEST_F(Leftovers, OfEachKindAreRemoved) {
    for (const char* const kind : {"run", "replay", "doctor"})
        left("qvhost-" + std::string(kind) + "-aaaaaa", "bin", 700);
    left("qvhost-check-aaaaaa", "log", 700);
    left("qvhost-record-aaaaaa", "replay", 700);
    left("qvhost-store-aaaaaa", "", 700);
    fs::rename(dir / "qvhost-store-aaaaaa" / "file", dir / "qvhost-store-aaaaaa" / "report.sqlite");
    const auto page = left("qvhost-page-aaaaaa", "data", 700);
    make_old(dir / "qvhost-store-aaaaaa", 700);
    EXPECT_EQ(names().size(), throw_away_directories().size() + 1);
    remove_leftovers(dir);
    EXPECT_EQ(names(), std::set<std::string>{page.filename()});
}

TEST_F(Leftovers, ATemporaryDirectoryIsHeld) {
    ::setenv("TMPDIR", dir.c_str(), 1);
    const TemporaryDirectory place("qvhost-check");
    ::unsetenv("TMPDIR");
    make_old(place.path(), 700);
    remove_leftovers(dir);
    EXPECT_TRUE(fs::exists(place.path()));
}

TEST_F(Leftovers, ADirectoryWhoseProgramRunsStays) {
    const auto directory = left("tool-aaaaaa", "tools", 700);
    const auto sleep = fs::canonical(directory) / "tools" / "sleep";
    fs::copy_file("/bin/sleep", sleep);
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::execl(sleep.c_str(), "sleep", "600", nullptr);
        ::_exit(127);
    }
    ASSERT_GT(pid, 0);
    const auto program = fs::path("/proc") / std::to_string(pid) / "exe";
    for (std::error_code error; fs::read_symlink(program, error) != sleep && !error;)
        ::usleep(1000);
    remove_leftovers(dir, {{"tool", {"tools"}}});
    EXPECT_EQ(names(), std::set<std::string>{"tool-aaaaaa"});
    ::kill(pid, SIGKILL);
    ::waitpid(pid, nullptr, 0);
    remove_leftovers(dir, {{"tool", {"tools"}}});
    EXPECT_EQ(names(), std::set<std::string>());
}

}  // namespace

}  // namespace qvhost
