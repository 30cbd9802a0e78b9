// /etc/qvhost.conf, and the limits of single tools.
#include <unistd.h>

#include "report.h"
#include "store/store.h"
#include "system.h"

namespace test {

namespace {

namespace fs = std::filesystem;

class Settings : public SystemTest {
protected:
    Outcome with(const std::string& text, std::vector<std::string> arguments) {
        write_file(file(), text);
        return run(Invocation{
            .arguments = std::move(arguments),
            .environment = {{"QVHOST_CONF", file().string()}, {"PATH", system().string()}}});
    }
    fs::path file() const { return dir() / "qvhost.conf"; }
};

TEST_F(Settings, AreInForceAndSayWhere) {
    const auto shown = with(
        "# a comment\n\n tool-timeout=50 # so long\nlimit = ipmitool=900\n"
        "run-size = 1536MiB\n",
        {"config"});
    EXPECT_EQ(shown.exit, 0) << shown.err;
    for (const std::string& row : {"tool-timeout     50            " + file().string() + ":3",
                                   "limit            ipmitool=900  " + file().string() + ":4",
                                   "run-size         1536MiB       " + file().string() + ":5",
                                   std::string("archive-size     1536MiB       follows from"),
                                   std::string("capture-size     256MiB        default"),
                                   std::string("silence-timeout  50            follows from"),
                                   std::string("module-timeout   3600          default")})
        EXPECT_NE(shown.out.find(row), std::string::npos) << row << "\n" << shown.out;

    const auto log = (dir() / "new").string();
    const auto plan =
        with("log-dir = " + log + "\ntool-timeout = 50\nquiet = yes\n", {"collect", "--dry-run"});
    EXPECT_EQ(plan.exit, 0) << plan.err;
    EXPECT_NE(plan.out.find(log), std::string::npos);
    EXPECT_NE(plan.out.find("at most 50 s"), std::string::npos) << plan.out;
    const auto given = with("tool-timeout = 50\n",
                            {"collect", "--dry-run", "--log-dir", log, "--tool-timeout", "60"});
    EXPECT_NE(given.out.find("at most 60 s"), std::string::npos) << given.out;
    EXPECT_EQ(given.out.find("at most 50 s"), std::string::npos) << given.out;
}

TEST_F(Settings, ThatAreWrongAreErrorsByNumber) {
    const struct {
        const char* text;
        const char* line;
    } rows[] = {
        {"tool-timeout\n", "1: it is not NAME = VALUE"},
        {"\nbogus = 1\n", "2: there is no option \"bogus\""},
        {"search-path = /x\n", "1: there is no option"},
        {"tool-timeout = 0\n", "1: --tool-timeout: "},
        {"run-size = 1.5G\n", "1: --run-size: 1.5G is no size from 1MiB to 1TiB"},
        {"limit = ipmitool\n", "1: --limit ipmitool is not"},
        {"tool-timeout =\n", "1: tool-timeout has no value"},
        {"run-timeout = 9\nrun-timeout = 8\n", "2: run-timeout stands in line 1"},
        {"quiet = perhaps\n", "1: "},
    };
    for (const auto& [text, line] : rows) {
        for (const std::vector<std::string>& command :
             {std::vector<std::string>{"collect", "--log-dir", (dir() / "new").string()},
              {"config"}}) {
            const auto outcome = with(text, command);
            EXPECT_EQ(outcome.exit, command[0] == "config" ? 1 : 2) << text;
            EXPECT_NE(outcome.err.find(file().string() + ":" + line), std::string::npos)
                << text << outcome.err;
        }
    }
    EXPECT_FALSE(fs::exists(dir() / "new"));
}

TEST_F(Settings, OfOthersAreNotUsed) {
    write_file(file(), "");
    fs::permissions(file(), fs::perms{0666});
    const auto outcome = with("tool-timeout = 50\n", {"collect", "--dry-run", "--log-dir", "x"});
    EXPECT_EQ(outcome.exit, 2);
    EXPECT_NE(outcome.err.find("the settings are not used: "), std::string::npos) << outcome.err;
}

TEST_F(Settings, LimitASingleTool) {
    has("dmidecode", "sleep 60");
    has("supportconfig");
    const auto outcome =
        with("limit = dmidecode=1\n", {"collect", "--log-dir", log_dir().string(), "--quiet",
                                       "--plug-in-only", "--module", "BMC_Info"});
    bool stopped = false;
    for (const auto& command :
         qvhost::Store(store_in(log_dir()), qvhost::Store::Mode::read).commands()) {
        if (command.text.starts_with("dmidecode >"))
            stopped = qvhost::outcome(command).find("time limit") != std::string::npos;
    }
    EXPECT_TRUE(stopped) << outcome.err;
}

}  // namespace

}  // namespace test
