// Vendors' tools under the names and in the places where people have them.
#include <unistd.h>

#include "compat/vendor_tools.h"
#include "system.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using namespace qvhost::compat;

class VendorTools : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        fs::create_directories(installed());
        fs::create_directories(scripts());
        fs::create_directories(place_.notes);
    }
    fs::path installed() const { return dir() / "installed"; }
    fs::path scripts() const { return dir() / "qv_tools"; }

    void tool(const fs::path& file, const std::string& says,
              fs::perms perms = fs::perms{0755}) const {
        write_file(file, "#!/bin/sh\necho \"" + says + " $0 $*\"\n");
        fs::permissions(file, perms);
    }

    std::vector<VendorFile> find(const std::string& untrusted = "") const {
        return find_vendor_tools({{"storcli", {"storcli_x32", "storcli_x64"}},
                                  {"sas2ircu", {"sas2ircu", "sas2ircu"}},
                                  {"ipmiutil", {"ipmiutil_x64_nh"}}},
                                 installed(), place_.search_path, [&](const fs::path& file) {
                                     return file.filename() == untrusted ? "others can write to it"
                                                                         : "";
                                 });
    }

    // BUILD -> the file that answers, without the test's directory.
    std::map<std::string, std::string> answers(const std::string& untrusted = "") const {
        std::map<std::string, std::string> found;
        for (const auto& file : find(untrusted)) {
            if (!file.answers.empty()) found[file.build] = file.answers.lexically_relative(dir());
        }
        return found;
    }
};

using Answers = std::map<std::string, std::string>;

TEST_F(VendorTools, AnswerUnderTheirUsualNames) {
    EXPECT_EQ(answers(), Answers{});
    has("storcli64");
    has("ipmiutil");  // a program of that name in the system is another one
    EXPECT_EQ(answers(), (Answers{{"storcli_x64", "system/storcli64"}}));
    tool(installed() / "storcli", "any");
    tool(installed() / "ipmiutil", "any");
    tool(installed() / "perccli64", "another");
    EXPECT_EQ(answers(), (Answers{{"ipmiutil_x64_nh", "installed/ipmiutil"},
                                  {"perccli64", "installed/perccli64"},
                                  {"storcli", "installed/storcli"},
                                  {"storcli_x32", "installed/storcli"},
                                  {"storcli_x64", "installed/storcli"},
                                  {"ipmiutil", "installed/ipmiutil"}}));
    tool(installed() / "storcli64", "64");
    EXPECT_EQ(answers()["storcli_x64"], "installed/storcli64");
    tool(installed() / "storcli_x64", "own");
    EXPECT_EQ(answers()["storcli_x64"], "installed/storcli_x64");
}

TEST_F(VendorTools, ThatOthersCanWriteAreNotRun) {
    tool(installed() / "storcli_x64", "own");
    has("storcli64");
    EXPECT_EQ(answers("storcli_x64")["storcli_x64"], "system/storcli64");
    for (const auto& file : find("storcli_x64")) {
        if (file.build != "storcli_x64" || file.tool != "storcli") continue;
        ASSERT_EQ(file.refused.size(), 1u);
        EXPECT_EQ(file.refused[0].file, installed() / "storcli_x64");
        EXPECT_EQ(file.refused[0].why_not, "others can write to it");
    }
}

TEST_F(VendorTools, AreStartedByScripts) {
    const auto quoted = installed() / "it's\" $here";
    tool(quoted / "storcli64", "64");
    place_.search_path = quoted.string() + ":" + place_.search_path;
    tool(installed() / "sas2ircu", "delivered", fs::perms{0644});
    write_vendor_scripts(find(), place_, scripts());

    for (const auto& entry : fs::directory_iterator(scripts()))
        EXPECT_TRUE(entry.is_regular_file() && !entry.is_symlink()) << entry.path();
    const auto storcli = "'" + (scripts() / "storcli_x64").string() + "' ";
    EXPECT_EQ(bare(storcli + "'/c0  x' show").out,
              "64 " + (quoted / "storcli64").string() + " /c0  x show\n");
    EXPECT_EQ(bare("'" + (scripts() / "sas2ircu").string() + "' 0").out.substr(0, 10),
              "delivered ");
    EXPECT_EQ(fs::status(installed() / "sas2ircu").permissions(), fs::perms{0644});

    fs::remove(quoted / "storcli64");
    const auto gone = bare(storcli + "show");
    EXPECT_EQ(gone.exit, 127);
    EXPECT_NE(gone.err.find("storcli64: not found"), std::string::npos) << gone.err;
}

TEST_F(VendorTools, ADirectoryIsNoTool) {
    fs::create_directories(installed() / "storcli_x64");
    write_vendor_scripts(find(), place_, scripts());
    const auto found = bare("'" + (scripts() / "storcli_x64").string() + "' show");
    EXPECT_EQ(found.exit, 126);
}

}  // namespace

}  // namespace test
