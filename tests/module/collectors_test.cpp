#include "rbmcinfo/collectors.h"

#include <cerrno>

#include "bench.h"
#include "bmc_notes.h"
#include "tools/tools.h"

using namespace marlox::repository;

namespace {

class Collectors : public Bench {
protected:
    Collectors() {
        for (const char* name : {"sosreport", "supportconfig", "mv"}) tool(name, "exit 0");
    }
    static void release_files(bool redhat, bool nxbr) {
        fake_system.exists = {{"/etc/redhat-release", redhat}, {"/etc/NXBR-release", nxbr}};
    }
};

TEST_F(Collectors, CommandsNameTheLogDirectoryInQuotes) {
    struct Case {
        int (*collect)();
        const char* note;
    };
    const Case cases[] = {
        {mingling, "$ cat /proc/cmdline >'/var/log/x/cmdline.log'\n"},
        {cpuinfo, "$ cat /proc/cpuinfo >'/var/log/x/cpuinfo.log'\n"},
        {dmesg, "$ dmesg >'/var/log/x/dmesg.log'\n"},
        {dmidecode, "$ dmidecode >'/var/log/x/dmidecode.log'\n"},
        {interrupts, "$ cat /proc/interrupts >'/var/log/x/interrupts.log'\n"},
    };
    fakehost::log_dir = "/var/log/x/";
    fake_system.spawn_error = [](std::string_view) { return EAGAIN; };
    for (const auto& [collect, note] : cases) {
        EXPECT_EQ(collect(), -1);
        EXPECT_EQ(noted(), note);
    }
}

TEST_F(Collectors, CapturesHoldWhatTheCommandsPrint) {
    struct Case {
        int (*collect)();
        const char* file;
        const char* content;
    };
    const Case cases[] = {
        {mingling, "cmdline.log", "cat /proc/cmdline\n"},
        {cpuinfo, "cpuinfo.log", "cat /proc/cpuinfo\n"},
        {dmesg, "dmesg.log", "dmesg\n"},
        {dmidecode, "dmidecode.log", "dmidecode\n"},
        {interrupts, "interrupts.log", "cat /proc/interrupts\n"},
    };
    for (const char* name : {"cat", "dmesg", "dmidecode"})
        tool(name, "echo ${0##*/} $*; echo trouble >&2; exit 3");
    for (const auto& [collect, file, content] : cases) {
        EXPECT_EQ(collect(), 3 << 8);
        EXPECT_EQ(log_file(file), content);
    }
}

TEST_F(Collectors, ArchiveByDistribution) {
    const std::string redhat = bmc_notes(R"(
3 Redhat linux, using sosreport command to collect sos info
$ sosreport --batch --name=OSlogs --tmp-dir=/tmp
$ mv /tmp/sosreport-OSlogs-* 'L/'
)");
    const std::string suse = bmc_notes(R"(
3 SUSE linux, using supportconfig command to collect sos info
$ supportconfig -R /tmp
$ mv /tmp/nts_linux* 'L/'
)");
    struct Case {
        bool redhat;
        bool nxbr;
        int status;
        std::string notes;
    };
    const Case cases[] = {
        {true, false, 7 << 8, redhat},
        {true, true, 7 << 8, redhat},
        {false, true, 0, ""},
        {false, false, 7 << 8, suse},
    };
    // Also where the distribution's tool is not installed; moving tells the status.
    for (const char* name : {"sosreport", "supportconfig"}) tool(name, "exit 127");
    tool("mv", "exit 7");
    for (const auto& c : cases) {
        release_files(c.redhat, c.nxbr);
        EXPECT_EQ(sos(), c.status);
        EXPECT_EQ(noted(), c.notes);
    }
}

TEST_F(Collectors, ArchiveIsSilentBelowLevel3) {
    fakehost::min_log_level = 2;
    EXPECT_EQ(sos(), 0);
    release_files(true, false);
    EXPECT_EQ(sos(), 0);
    EXPECT_EQ(noted(),
              "$ supportconfig -R /tmp\n$ mv /tmp/nts_linux* 'L/'\n"
              "$ sosreport --batch --name=OSlogs --tmp-dir=/tmp\n"
              "$ mv /tmp/sosreport-OSlogs-* 'L/'\n");
}

TEST_F(Collectors, BiosSettingsNeedAReleaseFile) {
    struct Case {
        bool redhat;
        bool nxbr;
        int status;
        const char* commands;
    };
    const char* command = "$ 'P/qv_tools/SCELNX_64' /o /s 'L/bios_settings.txt'\n";
    const Case cases[] = {
        {false, false, -1, ""},
        {false, true, 5 << 8, command},
        {true, false, 5 << 8, command},
        {true, true, 5 << 8, command},
    };
    vendor_tool("SCELNX_64", "exit 5");
    for (const auto& c : cases) {
        release_files(c.redhat, c.nxbr);
        EXPECT_EQ(get_bios_settings(), c.status);
        EXPECT_EQ(noted({"$"}), c.commands);
    }
}

TEST_F(Collectors, BiosSettingsFollowTheWordSizeExactly) {
    release_files(false, true);
    for (const char* build : {"32", "64"}) {
        vendor_tool(std::string("SCELNX_") + build,
                    std::string("[ \"$1 $2\" = '/o /s' ] && echo ") + build + " > \"$3\"");
        linux_x32_x64 = std::stoi(build);
        EXPECT_EQ(get_bios_settings(), 0);
        EXPECT_EQ(log_file("bios_settings.txt"), std::string(build) + "\n");
        const auto line =
            std::string("'P/qv_tools/SCELNX_") + build + "' /o /s 'L/bios_settings.txt'\n";
        EXPECT_EQ(noted(),
                  bmc_notes("4 get bios settings, the final command line:" + line + "$ " + line));
    }
    linux_x32_x64 = 16;  // what is left names no tool
    EXPECT_EQ(get_bios_settings(), 127 << 8);
    EXPECT_EQ(noted({"$"}), "$ 'P/L/bios_settings.txt'\n");
}

}  // namespace
