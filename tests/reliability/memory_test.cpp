// Memory does not grow with what the tools print. QV_TEST_CAPTURE says how many MiB each of them prints.
#include "lanes.h"
#include "peak.h"
#include "setting.h"

namespace test {

namespace {

constexpr long kMost = 64 * 1024;  // KiB

class Memory : public LanesTest {
protected:
    void SetUp() override {
        LanesTest::SetUp();
        if (!kMemoryTells) GTEST_SKIP() << "the sanitizer keeps what is freed";
        become(sample("x86_64-kp220-healthy"));
    }

    // Prints such lines until nobody takes more; {I} stands for their number.
    static std::string endless(const std::string& lines) {
        std::string format, numbers;
        for (std::size_t at = 0; at < lines.size(); ++at) {
            if (lines.compare(at, 3, "{I}") == 0) {
                format += "%d";
                numbers += ", i";
                at += 2;
            } else if (lines[at] == '\n') {
                format += "\\n";
            } else {
                format += lines[at];
            }
        }
        return "exec /usr/bin/awk 'BEGIN { for (i = 1; ; i++) printf \"" + format + "\"" + numbers +
               " }'";
    }

    // Nothing that is printed comes back: it would count as this process's.
    void expect_small(std::vector<std::string> arguments) {
        const auto what = arguments[0] + " " + arguments.back().substr(0, 20);
        const auto ended = run({.arguments = std::move(arguments), .out_file = "/dev/null"});
        EXPECT_EQ(ended.exit, 0) << what << ended.err.substr(0, 500);
        EXPECT_LE(peak_so_far(), kMost) << what;
    }
};

TEST_F(Memory, OfNoProcessGrowsWithTheCaptures) {
    const std::string event =
        "seqNum: 0x{I}\nTime: Sat Nov 21 04:05:06 2026\nCode: 0x72\nClass: 2\nLocale: 0x02\n"
        "Event Description: State change on PD 0d(e0xfc/s{I}) from ONLINE(18) to FAILED(11)\n"
        "Event Data:\n===========\nDevice ID: {I}\n";
    const std::string drive =
        "Drive /c0/e252/s{I} :\n===\n\n---\nEID:Slt DID State DG Size Intf Med SED PI SeSz Model Sp\n---\n"
        "252:{I} {I} Onln 0 930.390 GB SATA HDD N N 512B MODEL{I} U\n---\n\n"
        "Drive /c0/e252/s{I} - Detailed Information :\nDrive /c0/e252/s{I} State :\n"
        "Media Error Count = {I}\nDrive /c0/e252/s{I} Device attributes :\nSN = S{I}\n\n";
    storcli_is("case \"$*\" in '/c0 show events') " + endless(event) +
               ";; '/c0/eall/sall show all') " + endless(drive) + ";; esac\n{OLD}");
    is("path/ipmitool",
       "case \"$1\" in sensor) " +
           endless("T{I} | {I}.000 | degrees C | cr | na | na | na | 80.000 | 85.000 | 90.000\n") +
           ";; fru) " +
           endless("FRU Device Description : F{I} (ID {I})\n Board Serial : S{I}\n\n") +
           ";; esac\n{OLD}");
    is("path/ipmiutil",
       endless(
           "{I} 11/21/26 04:05:06 CRT BMC Memory #{I} Uncorrectable ECC, DIMM({I}) 6f [a1 00 0b]\n"));
    is("path/dmesg",
       endless("[{I}.000000] blk_update_request: I/O error, dev sd{I}, sector {I}\n"));
    const auto size = std::to_string(setting("QV_TEST_CAPTURE", 4, 64));

    const auto ended = run(collecting({"--capture-size", size}));
    EXPECT_EQ(ended.exit, 3) << ended.err;
    EXPECT_LE(peak_so_far(), kMost) << "collect";
    for (const auto& command : commands()) {
        if (command.text.find("ipmitool sensor") == std::string::npos) continue;
        EXPECT_EQ(command.stopped_by, "size") << command.text;
    }
    expect_small({"show", log_dir(), "--no-pager"});
    expect_small({"show", log_dir(), "--no-pager", "EVENTLOG1"});
    expect_small({"show", log_dir(), "--no-pager", "events"});
    expect_small({"explain", log_dir()});
    expect_small({"export", log_dir(), "--format", "json", "--output", dir() / "all.json"});
    expect_small({"export", log_dir(), "--format", "csv", "--output", dir() / "all.csv"});
    expect_small({"query", log_dir(), "SELECT * FROM events ORDER BY text, line DESC"});
}

}  // namespace

}  // namespace test
