// Whole collections with and without the layer.
#include <algorithm>

#include "expressions.h"
#include "report.h"
#include "store/store.h"
#include "system.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using qvhost::Store;
using Texts = std::vector<std::string>;

// A server with a BMC and a controller, on the system that is made up.
class Server : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        const fs::path program = QV_PROGRAM;
        fs::create_directories(dir() / "server" / "bin" / "qv_tools");
        fs::copy_file(program, dir() / "server" / "bin" / "qvhost");
        fs::create_directory_symlink(program.parent_path().parent_path() / "lib",
                                     dir() / "server" / "lib");
        fs::create_directory_symlink(program.parent_path().parent_path() / "share",
                                     dir() / "server" / "share");
        for (const char* tool : {"cat", "rm", "mv"}) fs::remove(system() / tool);
        has("uname", "case $* in -i) echo unknown;; *) echo x86_64;; esac");
        has("dmidecode", "echo 'Product Name: KP220 Rack Server'");
        has("lsmod", "echo ipmi_devintf");
        has("service");
        has("modprobe");
        has("lspci");
        has("dmesg");
        has("supportconfig");
        has("ipmitool",
            "echo 'IANA PEN registry open failed: No such file or directory' >&2; echo 'CPU | 40'");
        for (const char* build : {"storcli_x64", "storcli_x32"}) {
            write_file(tools() / build, "#!/bin/sh\necho 'Controller Count = 0'\n");
            fs::permissions(tools() / build, fs::perms{0755});
        }
    }
    fs::path tools() const { return dir() / "server" / "bin" / "qv_tools"; }

    Outcome collect_here(const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments{"collect", "--quiet", "--plug-in-only", "--log-dir",
                                           log_dir()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(Invocation{.arguments = arguments,
                              .environment = {{"PATH", system().string()}},
                              .program = {dir() / "server" / "bin" / "qvhost"}});
    }

    // The commands of the plug-in, under one name of the directory that they have the tools in.
    Texts commands() const {
        Texts texts;
        for (const auto& command : Store(store_in(log_dir()), Store::Mode::read).commands())
            texts.push_back(replaced(command.text, "'[^']*/bin/qv_tools", "'{P}qv_tools"));
        return texts;
    }

    long commands_with(const std::string& words) const {
        const auto all = commands();
        return std::count_if(all.begin(), all.end(), [&](const std::string& text) {
            return text.find(words) != std::string::npos;
        });
    }
};

TEST_F(Server, IsAskedTheSameWithAndWithoutTheLayer) {
    has("uname", "echo x86_64");
    ASSERT_EQ(collect_here().exit, 0);
    const auto with_layer = commands();
    fs::remove_all(log_dir());
    ASSERT_EQ(collect_here({"--no-compat"}).exit, 0);
    EXPECT_EQ(with_layer, commands());
    EXPECT_GT(with_layer.size(), 20u);
}

// What the layer starts is stopped once, when the host has asked its own questions.
TEST_F(Server, KeepsItsDriverForTheHostsQuestions) {
    has("hostname");
    has("service", "case $* in *status) exit 3;; esac; exit 0");
    const auto asked = [&](const std::vector<std::string>& options) {
        std::vector<std::string> arguments{"collect", "--quiet", "--log-dir", log_dir()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        EXPECT_EQ(run(Invocation{.arguments = arguments,
                                 .environment = {{"PATH", system().string()}},
                                 .program = {dir() / "server" / "bin" / "qvhost"}})
                      .exit,
                  0);
        Texts texts;
        for (const auto& call : calls()) {
            if (call.starts_with("service ") || call == "hostname ") texts.push_back(call);
        }
        fs::remove_all(log_dir());
        return texts;
    };
    EXPECT_EQ(asked({}), (Texts{"service ipmi status", "service ipmi start", "hostname ",
                                "service ipmi stop"}));
    EXPECT_EQ(asked({"--plug-in-only"}),
              (Texts{"service ipmi status", "service ipmi start", "service ipmi stop"}));
}

TEST_F(Server, OfDebianIsCollected) {
    ASSERT_EQ(collect_here().exit, 0);
    EXPECT_EQ(counts(store_in(log_dir())).at("SENSORINFO"), 1);
    EXPECT_EQ(commands_with("storcli_x32"), 0);
    EXPECT_GT(commands_with("storcli_x64"), 0);
    const auto report = report_json(log_dir());
    EXPECT_EQ(report["compatibility"]["stand_ins"],
              (nlohmann::ordered_json{"uname", "supportconfig", "mv", "service", "ipmitool"}));
    EXPECT_EQ(read_file(log_dir() / "sensorinfo.txt"), "CPU | 40\n");
    EXPECT_EQ(report["compatibility"]["vendor_tools"]["storcli_x64"],
              (tools() / "storcli_x64").string());
    EXPECT_EQ(fs::status(tools() / "storcli_x64").permissions(), fs::perms{0755})
        << "the installed tools are not written";
}

TEST_F(Server, WithoutTheLayerIsBare) {
    ASSERT_EQ(collect_here({"--no-compat"}).exit, 0);
    EXPECT_GT(commands_with("storcli_x32"), 0);
    EXPECT_EQ(report_json(log_dir())["compatibility"]["stand_ins"], (nlohmann::ordered_json{"mv"}));
}

TEST_F(Server, PlanTellsWhatStandsIn) {
    fs::rename(tools() / "storcli_x64", tools() / "storcli64");
    const auto plan = collect_here({"--dry-run"});
    EXPECT_EQ(plan.exit, 0);
    EXPECT_NE(plan.out.find("\nipmitool  "), std::string::npos) << plan.out;
    EXPECT_NE(plan.out.find((tools() / "storcli64").string()), std::string::npos) << plan.out;
    EXPECT_EQ(calls(), Texts{}) << "something was run";
    const auto bare_plan = collect_here({"--dry-run", "--no-compat"});
    EXPECT_EQ(bare_plan.out.find("\nipmitool  "), std::string::npos) << bare_plan.out;
}

TEST_F(Server, WithoutTemporaryDirectoryRunsElsewhere) {
    // The directory for temporary files is none; another does.
    auto outcome = run(Invocation{
        .arguments = {"collect", "--quiet", "--log-dir", log_dir(), "--module", "sampleModule1"},
        .environment = {{"PATH", system().string()}, {"TMPDIR", (dir() / "nowhere").string()}},
        .program = {dir() / "server" / "bin" / "qvhost"}});
    EXPECT_EQ(outcome.exit, 0) << outcome.err;
}

}  // namespace

}  // namespace test
