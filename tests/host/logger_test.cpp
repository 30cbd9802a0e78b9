#include <sys/stat.h>
#include <sys/wait.h>

#include "logger/control.h"
#include "place.h"

namespace {

class Logger : public test::Place {
protected:
    std::string write(const std::string& log_dir, const std::string& file, int level) {
        const auto out = dir / "out";
        const auto command = std::string("umask 000; '" QV_LOG_WRITER "' '") + log_dir + "' '" +
                             file + "' " + std::to_string(level) + " > '" + out.string() + "'";
        exit_code = WEXITSTATUS(std::system(command.c_str()));
        return test::content(out);
    }
    int exit_code = 0;
};

TEST_F(Logger, OneRecordIsOneLine) {
    const auto file = dir / "log";
    EXPECT_EQ(write("/d/", file, 4), "4 /d/\nfailure: \n");
    auto text = test::content(file);
    // The time, to the millisecond, in UTC.
    for (std::size_t line = 0; line < text.size(); line = text.find('\n', line) + 1) {
        const auto stamp = text.substr(line, 25);
        std::string shape;
        for (const char c : stamp) shape += c >= '0' && c <= '9' ? '9' : c;
        EXPECT_EQ(shape, "9999-99-99T99:99:99.999Z ");
        text.erase(line, 25);
    }
    EXPECT_EQ(text,
              "3 qvmodules/one:12 [repo] Enter 5\n"
              "4 qvmodules/two:7 [repo] a\\nb\\rc\\td\\\\e\\x1b[31m\\x00f {} \xc3\xa4\xff\n");
    struct stat info {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600u);
}

TEST_F(Logger, ADirectoryThatDoesNotFitLeavesAnEmptyText) {
    EXPECT_EQ(write("/567890", dir / "log", 2), "2 /567890\nfailure: \n");
    EXPECT_EQ(write("/5678901", dir / "log", 2), "2 \nfailure: \n");
}

TEST_F(Logger, AFileThatCannotBeOpened) {
    const auto said = write("/d/", dir / "none" / "log", 3);
    EXPECT_EQ(exit_code, 1);
    EXPECT_TRUE(said.starts_with("cannot: ") && said.find("none/log") != std::string::npos) << said;
}

TEST_F(Logger, ALinkIsNotFollowed) {
    std::filesystem::create_symlink(dir / "elsewhere", dir / "log");
    const auto said = write("/d/", dir / "log", 3);
    EXPECT_EQ(exit_code, 1);
    EXPECT_TRUE(said.starts_with("cannot: ") && said.find("/log: ") != std::string::npos) << said;
    EXPECT_FALSE(std::filesystem::exists(dir / "elsewhere"));
}

TEST_F(Logger, AFullDiskIsToldAndNoMore) {
    const auto said = write("/d/", "/dev/full", 3);
    EXPECT_EQ(exit_code, 0);
    EXPECT_NE(said.find("failure: "), std::string::npos);
    EXPECT_EQ(said.find("failure: \n"), std::string::npos) << said;
}

TEST_F(Logger, Escaping) {
    EXPECT_EQ(qvhost::escape_log_text(""), "");
    EXPECT_EQ(qvhost::escape_log_text("plain {} %s \xc3\xa4\xff"), "plain {} %s \xc3\xa4\xff");
    EXPECT_EQ(qvhost::escape_log_text(std::string("\0\x01\x1f\x7f\\\n\r\t", 8)),
              "\\x00\\x01\\x1f\\x7f\\\\\\n\\r\\t");
}

}  // namespace
