// Log directories and tools that others could reach into, and file systems that do not take anything.
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include "server.h"

namespace test {

namespace {

namespace fs = std::filesystem;

constexpr uid_t kSomebody = 12345;

class Places : public ServerTest {
protected:
    void refused(const std::string& why) {
        const auto outcome = collect_storage();
        EXPECT_EQ(outcome.exit, 1);
        EXPECT_NE(outcome.err.find(why), std::string::npos) << outcome.err;
        EXPECT_FALSE(fs::exists(log_dir() / "report")) << "nothing was collected";
        EXPECT_FALSE(fs::exists(log_dir() / "c0_showall.txt"));
    }
};

TEST_F(Places, ALinkIsRefused) {
    fs::create_directory(dir() / "elsewhere");
    fs::create_directory_symlink(dir() / "elsewhere", log_dir());
    refused("it is a symbolic link");
    EXPECT_TRUE(fs::is_empty(dir() / "elsewhere"));
}

TEST_F(Places, AnotherUsersDirectoryIsRefused) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can give a directory away";
    fs::create_directory(log_dir());
    ASSERT_EQ(::chown(log_dir().c_str(), kSomebody, kSomebody), 0);
    refused("it belongs to another user");
}

TEST_F(Places, ADirectoryThatOthersCanWriteToIsRefused) {
    fs::create_directory(log_dir());
    for (const mode_t mode : {0777u, 01777u, 0703u}) {
        ASSERT_EQ(::chmod(log_dir().c_str(), mode), 0);
        refused("others can write to it");
    }
}

TEST_F(Places, AWayThatOthersCanReplaceIsRefused) {
    fs::create_directories(log_dir());
    ASSERT_EQ(::chmod(dir().c_str(), 0777), 0);
    refused("can be written by others, who could replace it");
    ASSERT_EQ(::chmod(dir().c_str(), 01777), 0);  // as /tmp
    EXPECT_EQ(collect_storage().exit, 0);
    ASSERT_EQ(::chmod(dir().c_str(), 0700), 0);
}

// The value of an access control list, acl(5): its owner reads and writes, and user 12345 does.
std::string list_for_somebody() {
    std::string value("\x02\0\0\0", 4);
    const struct {
        std::uint16_t tag, permissions;
        std::uint32_t id;
    } entries[] = {{0x01, 7, 0xffffffff},
                   {0x02, 7, kSomebody},
                   {0x04, 0, 0xffffffff},
                   {0x10, 7, 0xffffffff},
                   {0x20, 0, 0xffffffff}};
    value.append(reinterpret_cast<const char*>(entries), sizeof entries);
    return value;
}

TEST_F(Places, AListThatLetsOthersWriteIsSeen) {
    const auto list = list_for_somebody();
    const auto give = [&](const fs::path& place, const char* name) {
        return ::setxattr(place.c_str(), name, list.data(), list.size(), 0) == 0;
    };
    fs::create_directory(log_dir());
    if (!give(log_dir(), "system.posix_acl_access"))
        GTEST_SKIP() << "no lists here: " << std::strerror(errno);
    refused("others can write to it");
    fs::remove(log_dir());

    fs::create_directory(log_dir());
    ASSERT_TRUE(give(log_dir(), "system.posix_acl_default"));
    refused("others can write to what is made in it");
    fs::remove(log_dir());

    const auto way = dir() / "way";
    fs::create_directories(way / "log");
    ASSERT_TRUE(give(way, "system.posix_acl_access"));
    auto invocation = collecting();
    invocation.arguments[2] = way / "log";
    EXPECT_NE(run(invocation).err.find("can be written by others, who could replace it"),
              std::string::npos);

    ASSERT_TRUE(give(tools(), "system.posix_acl_access"));
    refused("nothing is run from there: " + tools().string() + " can be written by others");
}

// A new directory takes no rights over from the one above it.
TEST_F(Places, ANewDirectoryIsTheUsersAlone) {
    const auto list = list_for_somebody();
    if (::setxattr(dir().c_str(), "system.posix_acl_default", list.data(), list.size(), 0) != 0)
        GTEST_SKIP() << "no lists here: " << std::strerror(errno);
    EXPECT_EQ(collect_storage().exit, 0);
    for (const auto& place : {log_dir(), log_dir() / "report"}) {
        for (const char* name : {"system.posix_acl_access", "system.posix_acl_default"})
            EXPECT_LT(::getxattr(place.c_str(), name, nullptr, 0), 0) << place;
    }
}

// What is written is what the way leads to, not what its words promise.
TEST_F(Places, TheWayIsWalkedNotRead) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can give a directory away";
    const auto others = dir() / "others";
    fs::create_directories(others / "log");
    ASSERT_EQ(::chown(others.c_str(), kSomebody, kSomebody), 0);
    fs::create_directory_symlink(others, dir() / "way");
    auto invocation = collecting();
    invocation.arguments[2] = dir() / "way" / "log";
    const auto into_others = run(invocation);
    EXPECT_EQ(into_others.exit, 1);
    EXPECT_NE(into_others.err.find("others belongs to another user, who could replace it"),
              std::string::npos)
        << into_others.err;

    // Somebody's link, in a directory where everybody may make one.
    fs::remove(dir() / "way");
    fs::create_directories(dir() / "private" / "log");
    fs::create_directory_symlink(dir() / "private", dir() / "way");
    ASSERT_EQ(::lchown((dir() / "way").c_str(), kSomebody, kSomebody), 0);
    const auto by_others = run(invocation);
    EXPECT_EQ(by_others.exit, 1);
    EXPECT_NE(by_others.err.find("way is a link of another user's"), std::string::npos)
        << by_others.err;
    EXPECT_TRUE(fs::is_empty(dir() / "private" / "log"));

    ASSERT_EQ(::lchown((dir() / "way").c_str(), 0, 0), 0);
    EXPECT_EQ(run(invocation).exit, 0) << "root's own link is followed";
    EXPECT_TRUE(fs::exists(dir() / "private" / "log" / "report" / "index.html"));
}

// A link on the way that turns elsewhere while tools run takes nothing along.
TEST_F(Places, ALinkThatTurnsIsNotFollowed) {
    for (const char* place : {"first", "second"}) fs::create_directories(dir() / place / "log");
    write_file(dir() / "second" / "log" / "raidevents.txt", "precious");
    fs::create_directory_symlink("first", dir() / "way");
    events_do("ln -sfn second '" + (dir() / "way").string() + "'; cat \"$recorded/c0_events.txt\"");
    auto invocation = collecting();
    invocation.arguments[2] = dir() / "way" / "log";
    EXPECT_EQ(run(invocation).exit, 0);
    EXPECT_EQ(fs::read_symlink(dir() / "way"), "second") << "it has turned";
    EXPECT_EQ(read_file(dir() / "second" / "log" / "raidevents.txt"), "precious");
    EXPECT_TRUE(fs::exists(dir() / "first" / "log" / "report" / "index.html"));
    EXPECT_FALSE(fs::exists(dir() / "second" / "log" / "report"));
}

TEST_F(Places, ALinkInItIsRefusedAndNotWrittenThrough) {
    write_file(dir() / "passwd", "root\n");
    for (const char* name : {"raidevents.txt", "qvhost.log", "console.txt"}) {
        fs::create_directory(log_dir());
        fs::create_symlink(dir() / "passwd", log_dir() / name);
        refused(std::string(name) + " in it is a symbolic link");
        EXPECT_EQ(read_file(dir() / "passwd"), "root\n");
        fs::remove_all(log_dir());
    }
}

TEST_F(Places, APipeInItIsRefusedAndNotWaitedFor) {
    fs::create_directory(log_dir());
    ASSERT_EQ(::mkfifo((log_dir() / "console.txt").c_str(), 0600), 0);
    refused("console.txt in it is neither a file nor a directory");
}

// What the program opens by itself it opens through no link, even one that came a moment ago.
// strace: "openat(AT_FDCWD, "/x/console.txt", O_WRONLY|O_CREAT|..., 0600) = 3"
TEST_F(Places, ItsOwnFilesAreOpenedThroughNoLink) {
    auto invocation = collecting({"--quiet"});
    invocation.environment = {{"LSAN_OPTIONS", "detect_leaks=0"}};  // it cannot, when traced
    const auto trace = dir() / "trace";
    invocation.program.insert(invocation.program.begin(),
                              {"strace", "-f", "-qq", "-o", trace, "-e", "trace=openat,open"});
    ASSERT_EQ(run(invocation).exit, 0);
    for (const char* name : {"/console.txt", "/qvhost.log", "/commands.log", "/collection.journal",
                             "/index.html", "/overview.js"}) {
        const auto lines = lines_of(read_file(trace));
        const auto first = std::find_if(lines.begin(), lines.end(), [&](const auto& line) {
            return line.find(log_dir().string()) != std::string::npos &&
                   line.find(name) != std::string::npos &&
                   line.find("|O_CREAT") != std::string::npos;
        });
        ASSERT_NE(first, lines.end()) << name;
        EXPECT_TRUE(first->find("O_NOFOLLOW") != std::string::npos ||
                    first->find("O_EXCL") != std::string::npos)
            << *first;
    }
}

// A power cut behind "Report: ..." loses nothing.
// strace -y: "123 fsync(5</x/report/report.json>) = 0"
TEST_F(Places, TheDiskHasTheReportBeforeItIsTold) {
    auto invocation = collecting({"--quiet"});
    invocation.environment = {{"LSAN_OPTIONS", "detect_leaks=0"}};
    const auto trace = dir() / "trace";
    invocation.program.insert(
        invocation.program.begin(),
        {"strace", "-f", "-y", "-s", "4096", "-qq", "-o", trace, "-e", "trace=fsync,write"});
    ASSERT_EQ(run(invocation).exit, 0);
    const auto lines = lines_of(read_file(trace));
    const auto told = std::find_if(lines.begin(), lines.end(), [](const auto& line) {
        return line.find("Report: ") != std::string::npos;
    });
    ASSERT_NE(told, lines.end());
    for (const char* name :
         {"", "/raidevents.txt", "/qvhost.log", "/report", "/report/report.sqlite",
          "/report/report.json", "/report/index.html", "/report/data", "/report/data/overview.js",
          "/report/assets/page.js"}) {
        const auto call = "<" + log_dir().string() + name + ">)";
        EXPECT_TRUE(std::any_of(lines.begin(), told, [&](const auto& line) {
            return line.find("fsync(") != std::string::npos &&
                   line.find(call) != std::string::npos && line.ends_with("= 0");
        })) << name;
    }
}

TEST_F(Places, AnExportThatIsKilledLeavesNothing) {
    ASSERT_EQ(collect_storage().exit, 0);
    auto invocation = Invocation{
        .arguments = {"export", log_dir(), "--format", "json", "--output", dir() / "r.json"}};
    invocation.program = {"strace",        "-qq", "-o",
                          dir() / "trace", "-e",  "inject=write,writev:signal=SIGKILL:when=1",
                          QV_PROGRAM};
    run(invocation);
    EXPECT_NE(read_file(dir() / "trace").find("killed by SIGKILL"), std::string::npos);
    for (const auto& entry : fs::directory_iterator(dir()))
        EXPECT_FALSE(entry.path().filename().string().starts_with("r.json")) << entry;
}

// A report that another user, or an archive of somebody's, left for root to look at.
TEST_F(Places, ABrokenOffCollectionOfOthersIsNotCompleted) {
    const auto elsewhere = dir() / "elsewhere";
    write_file(elsewhere / "data" / "precious", "kept");
    write_file(elsewhere / "collection.journal", "");
    const auto expect_refused = [&](const std::string& why) {
        const auto outcome = run({"show", log_dir()});
        EXPECT_EQ(outcome.exit, 1);
        EXPECT_NE(outcome.err.find("cannot be completed: " + why), std::string::npos)
            << outcome.err;
        EXPECT_EQ(read_file(elsewhere / "data" / "precious"), "kept");
    };
    fs::create_directory(log_dir());
    fs::create_directory_symlink(elsewhere, log_dir() / "report");
    expect_refused("report in it is a symbolic link");

    fs::remove(log_dir() / "report");
    write_file(log_dir() / "report" / "collection.journal", "");
    fs::create_symlink(elsewhere / "other.sqlite", log_dir() / "report" / "report.sqlite");
    expect_refused("report.sqlite in it is a symbolic link");
    EXPECT_FALSE(fs::exists(elsewhere / "other.sqlite"));

    fs::remove(log_dir() / "report" / "report.sqlite");
    ASSERT_EQ(::chmod(log_dir().c_str(), 0777), 0);
    expect_refused("others can write to it");
    ASSERT_EQ(::chmod(log_dir().c_str(), 0700), 0);
    EXPECT_EQ(run({"show", log_dir()}).exit, 0) << "the user's own is";
}

TEST_F(Places, ToolsThatOthersCanReplaceAreNotRun) {
    for (const auto& place : {tools(), tools() / "storcli_x64"}) {
        const auto before = fs::status(place).permissions();
        fs::permissions(place, fs::perms::others_write, fs::perm_options::add);
        refused("nothing is run from there: " + place.string() + " can be written by others");
        fs::permissions(place, before);
        if (::geteuid() != 0) continue;
        ASSERT_EQ(::chown(place.c_str(), kSomebody, kSomebody), 0);
        refused("nothing is run from there: " + place.string() + " belongs to another user");
        ASSERT_EQ(::chown(place.c_str(), 0, 0), 0);
    }
    EXPECT_EQ(collect_storage().exit, 0);
}

TEST_F(Places, AProgramThatOthersCanReplaceIsNotRun) {
    const auto bin = dir() / "server" / "bin";
    const auto lib = dir() / "server" / "lib";
    const auto built = fs::read_symlink(lib);
    fs::remove(lib);
    fs::copy(built, lib);
    // The plug-in's own checks stand behind those of the program.
    for (const auto& place : {bin, bin / "qvhost", lib, lib / "librepository.so",
                              lib / "liblogger.so.2.7", lib / "librepository_qvmodule.so"}) {
        ASSERT_TRUE(fs::exists(place)) << place;
        const auto before = fs::status(place).permissions();
        fs::permissions(place, fs::perms::others_write, fs::perm_options::add);
        const auto outcome = collect_storage();
        EXPECT_EQ(outcome.exit, 1) << place;
        EXPECT_NE(outcome.err.find("nothing is run from there: " + place.string() +
                                   " can be written by others"),
                  std::string::npos)
            << place << outcome.err;
        fs::permissions(place, before);
        fs::remove_all(log_dir());
    }
    EXPECT_EQ(collect_storage().exit, 0);
}

// ulimit -f, which the system also tells by a signal that ends whoever does not expect it.
TEST_F(Places, ALimitOnTheSizeOfFilesIsTold) {
    for (const char* bytes : {"10000", "100000", "400000"}) {
        fs::remove_all(log_dir());
        auto invocation = collecting();
        auto& program = invocation.program;
        program.insert(program.begin(), {"prlimit", std::string("--fsize=") + bytes});
        const auto outcome = run(invocation);
        EXPECT_EQ(outcome.exit, 1) << bytes << " signal " << outcome.signal;
        EXPECT_NE(outcome.err.find(log_dir().string()), std::string::npos) << bytes << outcome.err;
        EXPECT_EQ(family(), std::vector<pid_t>());
    }
}

// A small file system of the test's own.
class SmallPlace : public Places {
protected:
    void mount_here(const char* options, unsigned long flags = 0) {
        fs::create_directory(place());
        if (::mount("none", place().c_str(), "tmpfs", flags, options) != 0)
            GTEST_SKIP() << "no file system can be mounted here: " << std::strerror(errno);
        mounted_ = true;
    }
    void TearDown() override {
        if (mounted_) ::umount2(place().c_str(), MNT_DETACH);
        Places::TearDown();
    }
    fs::path place() const { return dir() / "small"; }
    Outcome collect_there() {
        auto invocation = collecting();
        invocation.arguments[2] = place() / "log";
        return run(invocation);
    }

    // In the words of the system or of SQLite.
    static bool says_full(const std::string& text) {
        for (const char* words : {"No space left", "disk is full", "disk I/O error"}) {
            if (text.find(words) != std::string::npos) return true;
        }
        return false;
    }

private:
    bool mounted_ = false;
};

TEST_F(SmallPlace, AFullDiskIsToldWithTheFile) {
    for (const char* size : {"size=16k", "size=200k", "size=1500k", "size=2m"}) {
        mount_here(size);
        if (IsSkipped()) return;
        const auto outcome = collect_there();
        EXPECT_EQ(outcome.exit, 1) << size;
        EXPECT_NE(outcome.err.find(place().string()), std::string::npos) << outcome.err;
        EXPECT_TRUE(says_full(outcome.err)) << size << outcome.err;
        EXPECT_EQ(family(), std::vector<pid_t>());
        ::umount2(place().c_str(), MNT_DETACH);
    }
}

TEST_F(SmallPlace, AReadOnlyFileSystemIsTold) {
    mount_here("size=1m", MS_RDONLY);
    if (IsSkipped()) return;
    const auto outcome = collect_there();
    EXPECT_EQ(outcome.exit, 1);
    EXPECT_NE(outcome.err.find("Read-only file system"), std::string::npos) << outcome.err;
}

// A collection leaves 5 % of a small disk, and begins nothing where less is free.
TEST_F(SmallPlace, DoctorSaysWhetherThereIsRoom) {
    constexpr off_t kMebibyte = 1 << 20;
    for (const auto& [used, says] :
         {std::pair<off_t, std::string>{1 * kMebibyte, "ok        log directory: "},
          std::pair<off_t, std::string>{92 * kMebibyte, "warning   log directory: "},
          std::pair<off_t, std::string>{97 * kMebibyte, "critical  log directory: "}}) {
        mount_here("size=100m");
        if (IsSkipped()) return;
        const int file = ::open((place() / "used").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        EXPECT_EQ(::posix_fallocate(file, 0, used), 0);
        ::close(file);
        const auto outcome = run({"doctor", "--log-dir", place() / "log"});
        EXPECT_NE(outcome.out.find(says), std::string::npos) << outcome.out;
        // What a warning comes to depends on what the tools say.
        if (!says.starts_with("warning")) {
            EXPECT_EQ(collect_there().exit == 0, says.starts_with("ok")) << says;
        }
        ::umount2(place().c_str(), MNT_DETACH);
    }
}

// What a tool writes until nothing is left is the tool's; what we can still write is there.
TEST_F(SmallPlace, AToolThatFillsTheDisk) {
    mount_here("size=8m");
    if (IsSkipped()) return;
    events_do("cat /dev/zero");
    const auto outcome = collect_there();
    EXPECT_EQ(outcome.exit, 1) << outcome.out;
    EXPECT_TRUE(says_full(outcome.err)) << outcome.err;
    EXPECT_EQ(family(), std::vector<pid_t>());
}

}  // namespace

}  // namespace test
