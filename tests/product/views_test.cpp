// What the store says of the collection beside its records: the machine, and the commands.
#include <algorithm>

#include "program.h"
#include "report.h"
#include "store/store.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using qvhost::Store;

class Views : public ProductTest {
protected:
    void replay(const fs::path& machine, std::vector<std::string> options = {}) {
        std::vector<std::string> arguments{"replay", machine, "--log-dir", log_dir()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto outcome = run(arguments);
        ASSERT_TRUE(outcome.exit == 0 || outcome.exit == 3) << outcome.err;
    }
    void replay_sample(const char* name) { replay(fs::path(QV_SAMPLES) / name); }

    Store store() const { return {store_in(log_dir()), Store::Mode::read}; }

    // How the commands ended that have these words in their line.
    std::vector<std::string> outcomes(const std::string& words) const {
        std::vector<std::string> found;
        for (const auto& command : store().commands()) {
            if (command.text.find(words) != std::string::npos) found.push_back(outcome(command));
        }
        return found;
    }
};

using Texts = std::vector<std::string>;

TEST_F(Views, TheMachineInAFewLines) {
    replay_sample("x86_64-kp220-megaraid");
    std::vector<std::string> facts;
    for (const auto& [label, value, source] : store().facts())
        facts.push_back(label + "=" + value + " (" + source + ")");
    const Texts expected{
        "Product=Example Systems KP220 Rack Server (dmidecode.log)",
        "Serial number=EXS0002201 (dmidecode.log)",
        "Firmware=BWG2E14 (dmidecode.log)",
        "BMC=firmware 2.71, IPMI 2.0 (mcinfo.txt)",
        "BMC self test=passed (selfinfo.txt)",
        "Kernel=Linux 5.14.21-150500.55-default (dmesg.log)",
        "Processors=2 x Example CPU E5-2630 v3 @ 2.40GHz, 32 threads (dmidecode.log)",
        "Memory=128 GB: 8 x 16 GB, 8 slots empty (dmidecode.log)",
    };
    EXPECT_EQ(facts, expected);
}

TEST_F(Views, WhatNoCaptureTellsIsLeftOut) {
    write_file(dir() / "machine" / "machine.json",
               R"({"description": "", "uname": "x86_64", "commands": []})");
    replay(dir() / "machine");
    EXPECT_TRUE(store().facts().empty());
}

TEST_F(Views, CommandsAreToldInOrderWithTheirEnds) {
    replay_sample("x86_64-kp120-tools-killed");
    EXPECT_EQ(outcomes("dmidecode >"), Texts{""});
    EXPECT_EQ(outcomes("dorvanoem ver"), Texts{"exit code 1"});
    EXPECT_EQ(outcomes("dorvanoem mc "), Texts{"exit code 139: killed by signal 11"});
    EXPECT_EQ(outcomes("show termlog"), Texts{"exit code 127: not installed"});
    const auto commands = store().commands();
    const auto place = [&](const char* words) {
        return std::find_if(commands.begin(), commands.end(), [&](const auto& command) {
            return command.text.find(words) != std::string::npos;
        });
    };
    EXPECT_LT(place("show ctrlcount"), place("dorvanoem mc "));
    EXPECT_LT(place("dorvanoem mc "), place("ipmitool sensor"));
    ASSERT_EQ(commands.size(), 38u);
    EXPECT_EQ(commands.front().text, "uname -i");
    EXPECT_EQ(commands[36].text, "service ipmi stop 1>/dev/null 2>&1");
    EXPECT_EQ(commands[37].text, "lspci >'" + (log_dir() / "host_lspci.txt").string() + "'")
        << "the host's own questions come last";
    EXPECT_FALSE(fs::exists(log_dir() / "report" / "commands.log"));
}

// The plug-in counts SAS2308 controllers in a pipeline, whose end says nothing of lspci's.
TEST_F(Views, ThatThereIsNoControllerIsSaidOnlyIfLspciWorked) {
    const struct {
        const char* lspci;
        Texts options;
        const char* why;
    } cases[] = {
        {R"({"tool": "lspci"})", {}, "no SAS2308 controller"},
        {R"({"tool": "lspci", "stderr": "lspci: no access\n", "exit": 1})",
         {},
         "not asked: lspci failed with code 1: lspci: no access"},
        {R"({"tool": "lspci", "stderr": "lspci: no access\n", "exit": 1})",
         {"--plug-in-only"},
         "not asked: lspci | grep SAS2308 | wc -l said: lspci: no access"},
        {R"({"tool": "lspci", "stderr": "lspci: one device is odd\n"})",
         {},
         "no SAS2308 controller"},
    };
    for (const auto& [lspci, options, why] : cases) {
        write_file(
            dir() / "machine" / "machine.json",
            std::string(R"({"description": "", "uname": "x86_64", "commands": [)") + lspci + "]}");
        replay(dir() / "machine", options);
        EXPECT_EQ(reasons(store_in(log_dir())).at("SAS2IRLOG"), why) << lspci;
    }
}

TEST_F(Views, ACommandThatWasStoppedAtItsLimitIsCalledPartial) {
    write_file(dir() / "machine" / "machine.json", R"({"description": "", "uname": "x86_64",
        "commands": [{"tool": "dmesg", "args": "", "stdout": "half.txt", "seconds": 60}]})");
    write_file(dir() / "machine" / "half.txt", "half\n");
    replay(dir() / "machine", {"--tool-timeout", "4"});
    EXPECT_EQ(outcomes("dmesg >"), Texts{"stopped at its time limit"});
}

}  // namespace

}  // namespace test
