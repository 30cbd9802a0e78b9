// Installations under long paths: the plug-in holds the program's path in 255 bytes.
#include <unistd.h>

#include "program.h"
#include "report.h"

namespace test {

namespace {

namespace fs = std::filesystem;

class ProgramPath : public ProductTest {
protected:
    // The built program once more, under a path of this many bytes.
    fs::path installed(std::size_t size) const {
        const std::string behind = "/bin/qvhost";
        const auto prefix =
            dir() / std::string(size - dir().native().size() - 1 - behind.size(), 'd');
        const fs::path built = QV_PROGRAM;
        fs::create_directories(prefix / "bin");
        fs::copy_file(built, prefix / "bin" / "qvhost");
        fs::create_directory_symlink(built.parent_path().parent_path() / "lib", prefix / "lib");
        return prefix / "bin" / "qvhost";
    }

    // A tool of another user where a path that is cut off leads, and in the current directory.
    void plant_tools(const fs::path& program) const {
        for (const std::string& directory :
             {program.native().substr(0, 256), dir().native() + "/"}) {
            for (const char* name : {"storcli_x64", "storcli_x32", "ipmiutil_x64_nh"}) {
                const auto file = directory + "qv_tools/" + name;
                write_file(file, "#!/bin/sh\ntouch '" + ran().string() + "'\n");
                fs::permissions(file, fs::perms{0755});
                if (::geteuid() == 0) {
                    ASSERT_EQ(::chown(file.c_str(), 65534, 65534), 0);
                }
            }
        }
    }
    fs::path ran() const { return dir() / "ran"; }

    Outcome run_as(const fs::path& program, const std::vector<std::string>& arguments) {
        return run(Invocation{
            .arguments = arguments, .directory = dir().string(), .program = {program.string()}});
    }
};

TEST_F(ProgramPath, Of255BytesCollects) {
    const auto program = installed(255);
    const auto outcome = run_as(program, collect("calm"));
    EXPECT_EQ(outcome.exit, 0) << outcome.err;
    EXPECT_EQ(counts(store_in(log_dir())).at("VALUES"), 3);
}

TEST_F(ProgramPath, BeyondThemIsRefusedBeforeAnythingRuns) {
    for (const std::size_t size : {256u, 257u}) {
        const auto program = installed(size);
        plant_tools(program);
        for (const std::vector<std::string>& more : {std::vector<std::string>{}, {"--dry-run"}}) {
            std::vector<std::string> arguments{"collect", "--log-dir", log_dir().string()};
            arguments.insert(arguments.end(), more.begin(), more.end());
            const auto outcome = run_as(program, arguments);
            EXPECT_EQ(outcome.exit, 1);
            EXPECT_EQ(outcome.out, "");
            EXPECT_EQ(outcome.err, "qvhost: the path of the collecting program has " +
                                       std::to_string(size) +
                                       " bytes, and the plug-in takes 255: use a directory with a "
                                       "shorter name than " +
                                       program.string() + "\n");
            EXPECT_FALSE(fs::exists(log_dir()));
            EXPECT_FALSE(fs::exists(ran())) << "a tool was run";
        }
    }
}

// A link with a short name does not help: the system tells the program's own path.
TEST_F(ProgramPath, LinksAreFollowed) {
    fs::create_symlink(installed(256), dir() / "qvhost");
    const auto refused = run_as(dir() / "qvhost", collect("calm"));
    EXPECT_EQ(refused.exit, 1);
    EXPECT_NE(refused.err.find("256 bytes"), std::string::npos) << refused.err;
}

// A replay runs a copy of the program from the directory for temporary files.
TEST_F(ProgramPath, OfAReplayCountsWhereItRuns) {
    const auto machine = fs::path(QV_SAMPLES) / "x86_64-virtual-machine";
    const std::vector<std::string> arguments{"replay", machine, "--log-dir", log_dir(), "--quiet"};
    const auto temporary = dir() / std::string(250 - dir().native().size(), 't');
    fs::create_directories(temporary);
    const auto refused =
        run(Invocation{.arguments = arguments, .environment = {{"TMPDIR", temporary.string()}}});
    EXPECT_EQ(refused.exit, 1);
    EXPECT_NE(refused.err.find("the plug-in takes 255"), std::string::npos) << refused.err;
    EXPECT_TRUE(fs::is_empty(temporary));

    const auto outcome = run_as(installed(260), arguments);
    EXPECT_EQ(outcome.exit, 0) << outcome.err;
}

}  // namespace

}  // namespace test
