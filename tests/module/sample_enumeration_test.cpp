// The enumerations of the two sample modules.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "bench.h"
#include "rsamplemodule2/captures.h"
#include "tools/tools.h"

using namespace marlox::repository;

namespace {

class SampleEnumeration : public Bench {
protected:
    SampleEnumeration() {
        fakehost::min_log_level = 3;
        tool("uname", "echo x86_64");
        tool("lspci", "exit 0");
        vendor_tool("storcli_x64", by_arguments({{"show ctrlcount", "echo 'Controller Count = 0'"},
                                                 {"/c0 show", "exit 0"}}));
    }
    // As if storcli printed this count.
    void count(const std::string& text) { vendor_tool("storcli_x64", prints(text)); }

    int linked_controllers() {
        forget_modules();
        enumerate("sampleModule2", "LSILINK");
        const auto links = noted({"add LSILINK"});
        return static_cast<int>(std::count(links.begin(), links.end(), '\n'));
    }
};

std::string four(const std::string& table, const std::string& name, const std::string& group,
                 const std::string& value) {
    std::string text = "add " + table + " \"" + name + "\" -1:";
    for (int i = 1; i <= 4; ++i) {
        const auto n = std::to_string(i);
        text += (i > 1 ? ", " : " ") + group + "PRO" + n + " \"" + group + " PRO " + n + "\"=\"" +
                value + "\"";
    }
    return text + "\n";
}

const std::string kSample1 = four("S1TABLE1", "sample 1 - table 1", "S1T1", "VALUE1") +
                             four("S1TABLE1", "sample 1 - table 1", "S1T1", "VALUE2") +
                             four("S1TABLE2", "sample 1 - table 2", "S1T2", "VALUE1");

std::string sample2_records() {
    std::string records;
    const char* names[] = {"Name", "Reading", "Status", "LCR", "LNR", "UCR"};
    for (int i = 0; i < 6; ++i) {
        records += "add S2TABLE1 \"sample 2 - table 1\" -1:";
        for (int k = 0; k < 6; ++k)
            records += (k ? ", item" : " item") + std::to_string(k + 1) + " \"" + names[k] +
                       "\"=" + std::to_string(i + k);
        records += "\n";
    }
    return records + four("S2TABLE2", "sample 2 - table 2", "S2T2", "VALUE1");
}

TEST_F(SampleEnumeration, Module1InFull) {
    const std::string unit = "log 3 qvmodules/rsamplemodule1: [repo] ";
    for (const char* table : {"RAIDINFO", "S1TABLE1", "PMCINFO"}) enumerate("sampleModule1", table);
    EXPECT_EQ(abs_path, 0);
    const auto pair = unit + "Enter EnumQV1Instances\n" + unit + "Exit EnumQV1Instances\n";
    EXPECT_EQ(noted(),
              unit + "Enter EnumQV1Instances\n" + unit + "Enter EnumXFirmwareInstancesCallback\n" +
                  kSample1 +
                  "$ uname -i\n$ chmod 544 'P/qv_tools'/*\n"
                  "$ 'P/qv_tools/storcli_x64' show ctrlcount > 'L/ctrlcount.txt'\n" +
                  unit +
                  "raidinfo raw path:'P/qv_tools/storcli_x64' /c0 show > 'L/c0_showall.txt'\n"
                  "$ 'P/qv_tools/storcli_x64' /c0 show > 'L/c0_showall.txt'\n" +
                  unit + "Exit EnumXFirmwareInstancesCallback\n" + unit +
                  "Exit EnumQV1Instances\n" + pair + pair);
}

TEST_F(SampleEnumeration, Module1WithoutACountFile) {
    fakehost::min_log_level = 4;
    vendor_tool("storcli_x64", "rm -f '" + log_dir + "ctrlcount.txt'");
    enumerate("sampleModule1", "S1TABLE1");
    const auto all = fakehost::notes;
    EXPECT_EQ(noted({"log"}),
              "log 3 qvmodules/rsamplemodule1: [repo] Enter EnumQV1Instances\n"
              "log 3 qvmodules/rsamplemodule1: [repo] Enter EnumXFirmwareInstancesCallback\n"
              "log 4 qvmodules/rsamplemodule1: [repo] Failed to open raid log file\n"
              "log 3 qvmodules/rsamplemodule1: [repo] Exit EnumQV1Instances\n");
    fakehost::notes = all;
    EXPECT_EQ(noted({"add"}), kSample1);
    enumerate("sampleModule1", "S1TABLE1");
    EXPECT_EQ(noted({"$", "add"}), "");  // collected all the same
}

TEST_F(SampleEnumeration, Module1WithoutAToolStillAsksForTheSummary) {
    std::filesystem::remove(program_dir + "qv_tools/storcli_x64");
    enumerate("sampleModule1", "S1TABLE1");
    EXPECT_NE(noted({"$"}).find("/c0 show > "), std::string::npos);
}

TEST_F(SampleEnumeration, Module2InFull) {
    fakehost::min_log_level = 4;
    const std::string unit3 = "log 3 qvmodules/rsamplemodule2: [repo] ";
    const std::string unit4 = "log 4 qvmodules/rsamplemodule2: [repo] ";
    vendor_tool("storcli_x64", by_arguments({{"show ctrlcount", "echo 'Controller Count = 0'"},
                                             {"/c0 show", "exit 0"},
                                             {"/c0 show events", "exit 0"},
                                             {"/c0 show termlog", "exit 0"},
                                             {"/c0/eall/sall show all", "exit 0"}}));
    enumerate("sampleModule2", "TINFO");
    EXPECT_EQ(abs_path2, 0);
    const std::string command = "'P/qv_tools/storcli_x64' show ctrlcount >'L/ctrlcount.txt'\n";
    const std::string events = "'P/qv_tools/storcli_x64' /c0 show events > 'L/raidevents.txt'\n";
    const std::string termlog = "'P/qv_tools/storcli_x64' /c0 show termlog > 'L/fwtermlog.txt'\n";
    const std::string drives = "'P/qv_tools/storcli_x64' /c0/eall/sall show all > 'L/pdlist.txt'\n";
    const std::string show = "'P/qv_tools/storcli_x64' /c0 show > 'L/c0_showall.txt'\n";
    EXPECT_EQ(noted(),
              unit3 + "Enter EnumQV2Instances\n" + unit3 + "Enter CollectData\n" +
                  sample2_records() + "$ chmod 544 'P/qv_tools'/*\n$ uname -i\n" + unit4 +
                  "ctrlcout path:" + command + "$ " + command + unit4 +
                  "ctrlcout path:L/ctrlcount.txt\n" + unit3 + "raidevent raw path:" + events +
                  "$ " + events + unit3 + "fwterm raw path:" + termlog + "$ " + termlog + unit3 +
                  "fwterm raw path:" + drives + "$ " + drives + unit3 + "raid raw path:" + show +
                  "$ " + show + "$ lspci | grep SAS2308 | wc -l > b.txt\n" + unit3 +
                  "Exit CollectData\n" + unit3 + "Exit EnumQV2Instances\n");
    enumerate("sampleModule2", "VINFO");
    EXPECT_EQ(noted(), unit3 + "Enter EnumQV2Instances\n" + unit3 + "Exit EnumQV2Instances\n");
}

TEST_F(SampleEnumeration, Module2WithoutACountFile) {
    fakehost::min_log_level = 4;
    vendor_tool("storcli_x64", "rm -f '" + log_dir + "ctrlcount.txt'");
    enumerate("sampleModule2", "TINFO");
    const auto all = fakehost::notes;
    EXPECT_EQ(noted({"$"}),
              "$ chmod 544 'P/qv_tools'/*\n$ uname -i\n"
              "$ 'P/qv_tools/storcli_x64' show ctrlcount >'L/ctrlcount.txt'\n");
    fakehost::notes = all;
    EXPECT_EQ(noted({"log 3"}),
              "log 3 qvmodules/rsamplemodule2: [repo] Enter EnumQV2Instances\n"
              "log 3 qvmodules/rsamplemodule2: [repo] Enter CollectData\n"
              "log 3 qvmodules/rsamplemodule2: [repo] Exit EnumQV2Instances\n");
    enumerate("sampleModule2", "TINFO");
    EXPECT_EQ(noted({"$", "add"}), "");
}

// A program path of 256 bytes or more is read cut off, and what lies at the cut-off path is somebody
// else's. Nothing is run from there, nor from the current directory.
TEST_F(SampleEnumeration, AProgramPathThatDoesNotFitRunsNoTool) {
    const auto until = [&](std::size_t size) {
        return std::string(size - root.string().size() - 1, 'd');
    };
    const std::string cut_off[] = {root.string() + "/" + until(255) + "/",  // behind a directory
                                   root.string() + "/" + until(256)};       // within a name
    const auto ran = root / "ran";
    for (const auto& path : cut_off) {
        ASSERT_EQ(path.size(), 256u);
        for (const auto& directory : {path, (root / "cwd/").string()}) {
            std::filesystem::create_directories(directory + "qv_tools");
            for (const char* name : {"storcli_x64", "storcli_x32", "ipmiutil_x64_nh"}) {
                const auto file = directory + "qv_tools/" + name;
                std::ofstream(file) << "#!/bin/sh\ntouch '" << ran.string() << "'\n";
                std::filesystem::permissions(file, std::filesystem::perms{0755});
                if (::geteuid() == 0) {
                    ASSERT_EQ(::chown(file.c_str(), 65534, 65534), 0);
                }
            }
        }
        fake_system.exe_link = path + "programs/host";
        forget_modules();
        testing::internal::CaptureStdout();

        std::string unit = "log 3 qvmodules/rsamplemodule1: [repo] ";
        enumerate("sampleModule1", "RAIDINFO");
        EXPECT_EQ(noted(), unit + "Enter EnumQV1Instances\n" + unit +
                               "Enter EnumXFirmwareInstancesCallback\n" + kSample1 +
                               "$ uname -i\n" + unit + "Failed to get the Marlox path, exit\n" +
                               unit + "Exit EnumQV1Instances\n");
        EXPECT_EQ(abs_path, -1);
        EXPECT_STREQ(current_absolute_path, "");

        unit = "log 3 qvmodules/rsamplemodule2: [repo] ";
        enumerate("sampleModule2", "TINFO");
        EXPECT_EQ(noted(), unit + "Enter EnumQV2Instances\n" + unit + "Enter CollectData\n" +
                               sample2_records() + unit + "Failed to get the Marlox path, exit\n" +
                               unit + "Exit EnumQV2Instances\n");
        EXPECT_EQ(abs_path2, -1);
        EXPECT_STREQ(current_absolute_path2, "");

        enumerate("BMC_Info", "MCINFO");
        EXPECT_EQ(noted({"$", "add"}), "");
        EXPECT_STREQ(current_absolute_path_bmc, "");

        std::fflush(stdout);
        const std::string printed = "Failed to get current absolute path\n";
        EXPECT_EQ(testing::internal::GetCapturedStdout(), printed + printed + printed);
        EXPECT_FALSE(std::filesystem::exists(ran)) << "a tool was run";

        for (const char* name : {"sampleModule1", "sampleModule2", "BMC_Info"}) {
            enumerate(name, module(name).callbacks.begin()->first);
            EXPECT_EQ(noted({"$", "add"}), "") << name << " collects once all the same";
        }
    }
}

TEST_F(SampleEnumeration, OneCharacterIsTheCount) {
    struct Case {
        std::string text;
        int controllers;
    };
    const Case cases[] = {
        {"Controller Count = 0\n", 0},     {"Controller Count = 2\n", 2},
        {"Controller Count = 12\n", 1},    {"Controller Count = 2\nController Count = 1\n", 1},
        {"x Controller Count = 3 y\n", 3}, {"Controller Count = :\n", 10},
        {"Controller Count = A\n", 17},    {"Controller Count = \xc3\n", 0},  // char is signed
        {"Controller Count =\n", 0},       {"Controller Count =", 0},
        {"Controller Count =2\n", 0},  // the character behind the blank is the line's end
        {"Controller Count  = 2\n", 0},    {"", 0},
    };
    for (const auto& [text, controllers] : cases) {
        count(text);
        EXPECT_EQ(linked_controllers(), controllers) << text;
    }
}

TEST_F(SampleEnumeration, EachControllersDrivesAreThoseOfTheFirst) {
    count("Controller Count = 2\n");
    forget_modules();
    enumerate("sampleModule2", "LSILINK");
    const auto commands = noted({"$ 'P/qv_tools/storcli_x64' /c"});
    for (const char* expected :
         {"/c0/eall/sall show all > 'L/c0_pdlist.txt'",
          "/c0/eall/sall show all > 'L/c1_pdlist.txt'", "/c1 show > 'L/c1_showall.txt'",
          "/c1 show events > 'L/c1_raidevents.txt'", "/c1 show termlog > 'L/c1_fwtermlog.txt'"})
        EXPECT_NE(commands.find(expected), std::string::npos) << expected;
}

TEST_F(SampleEnumeration, TheWordSizeIsAskedForByEachModule) {
    vendor_tool("storcli_x32", prints("Controller Count = 0\n"));
    enumerate("sampleModule1", "S1TABLE1");
    noted();
    tool("uname", "echo i686");
    enumerate("sampleModule2", "S2TABLE1");
    EXPECT_NE(noted({"$"}).find("'P/qv_tools/storcli_x32' show ctrlcount >'L/ctrlcount.txt'"),
              std::string::npos);
    EXPECT_EQ(linux_x32_x64, 32);
}

TEST_F(SampleEnumeration, RecordsDoNotDependOnTheLogLevel) {
    count(
        "Controller Count = 1\nseqNum: 1\nController = 0\nFunction Number = 0\nFirmware Term Log Information\n"
        "Needs EKM Attention = No\n");
    vendor_tool("eventslog_convert_x64", "exit 0");
    std::vector<std::string> results;
    for (const unsigned level : {2u, 3u, 4u}) {
        fakehost::min_log_level = level;
        forget_modules();
        std::filesystem::remove_all(log_dir);
        use_log_dir("log");
        std::memset(total_buff, 0, sizeof total_buff);
        enumerate("sampleModule1", "S1TABLE1");
        enumerate("sampleModule2", "S2TABLE1");
        results.push_back(noted({"$", "add"}));
        EXPECT_NE(results.back().find("add EVENTLOG1"), std::string::npos);
        EXPECT_NE(results.back().find("add PDLIST"), std::string::npos);
    }
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(results[1], results[2]);
}

}  // namespace
