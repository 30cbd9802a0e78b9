// Each stand-in on systems that are made up: what it changes, and that it changes nothing else.
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "system.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

// A tool that is not there is not found, with the shell's own words.
TEST_F(SystemTest, WithoutToolsNothingIsFound) {
    for (const auto& entry : fs::directory_iterator(system())) fs::remove(entry);
    for (const char* command :
         {"uname -i", "ipmitool sensor", "sosreport --batch", "supportconfig -R /tmp",
          "service ipmi start", "service ipmi stop x", "mv a b"}) {
        const auto expected = bare(command);
        const auto found = with_layer(command);
        EXPECT_EQ(found.exit, 127) << command;
        EXPECT_EQ(found.out, expected.out) << command;
        EXPECT_EQ(found.err, expected.err) << command;
    }
}

// Nor one that goes while the collection runs.
TEST_F(SystemTest, ToolsThatVanishAreNotFound) {
    for (const char* tool : {"ipmitool", "supportconfig", "service"}) has(tool);
    with_layer("true");
    for (const char* tool : {"ipmitool", "supportconfig", "service", "uname", "mv"})
        fs::remove(system() / tool);
    for (const char* command :
         {"ipmitool sensor", "uname -i", "supportconfig -R /tmp", "service ipmi start", "mv a b"}) {
        const auto expected = bare(command);
        const auto found = with_layer(command);
        EXPECT_EQ(found.exit, 127) << command;
        EXPECT_EQ(found.err, expected.err) << command;
    }
}

using Uname = SystemTest;

TEST_F(Uname, AnswersTheMachineForUnknown) {
    has("uname", "case $* in -i) echo unknown;; -m) echo x86_64;; *) echo Linux; exit 3;; esac");
    const auto answered = with_layer("uname -i");
    EXPECT_EQ(answered.out, "x86_64\n");
    EXPECT_EQ(answered.exit, 0);
    EXPECT_EQ(notes(), (Texts{"uname -i: unknown; answered x86_64"}));
    const auto other = with_layer("uname -s");
    EXPECT_EQ(other.out, "Linux\n");
    EXPECT_EQ(other.exit, 3);
}

TEST_F(Uname, ThatKnowsIsLeftAlone) {
    has("uname", "echo i386; echo a warning >&2; exit 4");
    const auto found = with_layer("uname -i");
    EXPECT_EQ(found.out, "i386\n");
    EXPECT_EQ(found.err, "a warning\n");
    EXPECT_EQ(found.exit, 4);
    EXPECT_EQ(notes(), Texts{});
}

using Service = SystemTest;

TEST_F(Service, IsLeftAloneWhereTheDriverWorks) {
    has("service");
    fs::create_symlink("/dev/null", dir() / "ipmi0");  // a character device
    EXPECT_EQ(with_layer("service ipmi start").exit, 0);
    EXPECT_EQ(with_layer("service ipmi stop").exit, 0);
    EXPECT_EQ(calls(), Texts{});
    EXPECT_EQ(notes(),
              (Texts{"service ipmi start: the IPMI driver works already",
                     "service ipmi stop: not passed on, since the driver was there before"}));
}

TEST_F(Service, StartsAndStopsWhatIsCalledIpmi) {
    has("service", "case $* in 'ipmi start'|'ipmi stop') exit 0;; esac; exit 3");
    EXPECT_EQ(with_layer("service ipmi start").exit, 0);
    EXPECT_EQ(calls(), (Texts{"service ipmi status", "service ipmi start"}));
    EXPECT_EQ(with_layer("service ipmi stop").exit, 0);
    EXPECT_EQ(calls(), (Texts{"service ipmi stop"}));
    EXPECT_EQ(with_layer("service ipmi stop").exit, 0) << "once is enough";
    EXPECT_EQ(calls(), Texts{});
}

TEST_F(Service, StaysWhileTheHostAsks) {
    has("service", "case $* in 'ipmi start'|'ipmi stop') exit 0;; esac; exit 3");
    qvhost::compat::keep_driver(place_.notes);
    EXPECT_FALSE(qvhost::compat::release_driver(place_.notes)) << "there is no layer yet";
    EXPECT_EQ(with_layer("service ipmi start").exit, 0);
    qvhost::compat::keep_driver(place_.notes);
    EXPECT_EQ(with_layer("service ipmi stop").exit, 0);
    EXPECT_EQ(calls(), (Texts{"service ipmi status", "service ipmi start"}));
    EXPECT_TRUE(qvhost::compat::release_driver(place_.notes));
    EXPECT_EQ(with_layer("service ipmi stop").exit, 0);
    EXPECT_EQ(calls(), (Texts{"service ipmi stop"}));
    qvhost::compat::keep_driver(place_.notes);
    EXPECT_FALSE(qvhost::compat::release_driver(place_.notes)) << "nothing is started";
}

TEST_F(Service, DoesNotStopWhatWasRunning) {
    has("service", "case $* in 'ipmi status'|'ipmi start') exit 0;; esac; exit 3");
    EXPECT_EQ(with_layer("service ipmi start").exit, 0);
    EXPECT_EQ(with_layer("service ipmi stop").exit, 0);
    EXPECT_EQ(calls(), (Texts{"service ipmi status", "service ipmi start"}));
}

TEST_F(Service, IsCalledOpenipmiElsewhere) {
    has("service", "case $* in 'openipmi start') exit 0;; 'openipmi stop') exit 7;; esac; exit 5");
    has("modprobe");
    EXPECT_EQ(with_layer("service ipmi start").exit, 0);
    EXPECT_EQ(calls(), (Texts{"service ipmi status", "service ipmi start",
                              "service openipmi status", "service openipmi start"}));
    EXPECT_EQ(with_layer("service ipmi stop").exit, 7);
    EXPECT_EQ(calls(), (Texts{"service openipmi stop"}));
}

TEST_F(Service, LoadsTheDriverWhereThereIsNone) {
    for (const bool has_service : {true, false}) {
        if (has_service) has("service", "exit 5");
        has("modprobe");
        EXPECT_EQ(with_layer("service ipmi start").exit, 0);
        const auto called = calls();
        const Texts expected{"modprobe ipmi_si", "modprobe ipmi_devintf"};
        EXPECT_NE(std::search(called.begin(), called.end(), expected.begin(), expected.end()),
                  called.end());
        EXPECT_EQ(with_layer("service ipmi stop").exit, 0);
        EXPECT_EQ(calls(), (Texts{"modprobe -r ipmi_devintf ipmi_si"}));
        fs::remove(system() / "service");
    }
}

// The status is that of the service that the plug-in asked for.
TEST_F(Service, FailsAsItDidIfNothingHelps) {
    has("service", "case $1 in ipmi) exit 5;; esac; exit 6");
    has("modprobe", "exit 1");
    EXPECT_EQ(with_layer("service ipmi start").exit, 5);
    EXPECT_EQ(with_layer("service ipmi stop").exit, 0);
    fs::remove(system() / "service");
    const auto missing = with_layer("service ipmi start");
    EXPECT_EQ(missing.exit, 127);
    EXPECT_EQ(missing.err, bare("service ipmi start").err);
}

TEST_F(Service, OfOtherNamesIsPassedOn) {
    has("service", "echo said; exit 9");
    const auto other = with_layer("service cron start");
    EXPECT_EQ(other.exit, 9);
    EXPECT_EQ(other.out, "said\n");
    EXPECT_EQ(calls(), (Texts{"service cron start"}));
}

class Ipmitool : public SystemTest {
protected:
    // What a capture has after this redirection, with the layer and without it.
    std::pair<std::string, std::string> captures(const std::string& redirection) {
        const auto file = dir() / "capture";
        fs::remove(file);
        const auto quoted = "'" + file.string() + "'";
        std::string command = "ipmitool a 'b  c' " + redirection;
        for (auto at = command.find('F'); at != std::string::npos;
             at = command.find('F', at + quoted.size()))
            command.replace(at, 1, quoted);
        const auto bares = bare(command);
        const auto expected = read_file(file);
        fs::remove(file);
        const auto found = with_layer(command);
        EXPECT_EQ(found.exit, bares.exit);
        EXPECT_EQ(found.out, bares.out) << redirection;
        EXPECT_EQ(found.err, bares.err) << redirection;
        return {read_file(file), expected};
    }
};

TEST_F(Ipmitool, KeepsItsRemarkApart) {
    has("ipmitool",
        "echo 'IANA PEN registry open failed: No such file or directory' >&2\n"
        "echo 'CPU | 40'; echo 'no reading' >&2; echo 'Fan | 4200'; exit 1");
    const auto found = with_layer("ipmitool sensor 1>'" + (dir() / "c").string() + "' 2>&1");
    EXPECT_EQ(found.exit, 1);
    EXPECT_EQ(read_file(dir() / "c"), "CPU | 40\nno reading\nFan | 4200\n");
    EXPECT_EQ(notes(),
              (Texts{"ipmitool: IANA PEN registry open failed: No such file or directory"}));
}

TEST_F(Ipmitool, PrintsTheSameOtherwise) {
    has("ipmitool",
        "echo \"$# $1 $2\"; echo 'IANA PEN registry open failed' >&2; i=0\n"
        "while [ $i -lt 300 ]; do echo \"row $i\"; [ $((i % 7)) -ne 0 ] || echo \"message $i\" >&2;\n"
        "i=$((i + 1)); done; printf 'no end'; printf ' of a line' >&2; exit 3");
    for (const char* redirection : {"", "1>F", "2>F", "1>F 2>&1", ">F 2>/dev/null", "2>&1",
                                    "1>/dev/null 2>&1", ">>F 2>>F", "2>&1 | cat >F"}) {
        const auto [found, expected] = captures(redirection);
        EXPECT_EQ(found, expected) << redirection;
    }
}

// "1>F 2>F": the answer lies over the messages that were printed before it.
TEST_F(Ipmitool, OverwritesItsMessagesAsBefore) {
    has("ipmitool", "echo 'a longer message' >&2; echo 'FRU'");
    const auto [found, expected] = captures("1>F 2>F");
    EXPECT_EQ(expected, "FRU\nnger message\n");
    EXPECT_EQ(found, expected);
}

TEST_F(Ipmitool, PassesMuchAndAnyByte) {
    has("ipmitool",
        "i=0; while [ $i -lt 3000 ]; do printf 'x\\000\\377IANA PEN registry \\n%0800d' $i; i=$((i + 1)); done");
    const auto [found, expected] = captures("1>F 2>&1");
    EXPECT_EQ(found.size(), expected.size());
    EXPECT_TRUE(found == expected);
}

TEST_F(Ipmitool, EndsAsTheToolDid) {
    has("ipmitool", "echo answer; kill -9 $$");
    const auto killed = with_layer("ipmitool sensor; echo $?");
    EXPECT_NE(killed.out.find("answer\n137\n"), std::string::npos) << killed.out;
}

// The end of the tool counts, not that of what it leaves behind.
TEST_F(Ipmitool, DoesNotWaitForWhatTheToolLeaves) {
    fs::create_symlink("/usr/bin/sleep", system() / "sleep");
    has("ipmitool", "sleep 600 & echo answer");
    EXPECT_EQ(with_layer("ipmitool sensor 2>&1").out, "answer\n");
}

TEST_F(Ipmitool, ThatCannotBeRunSaysWhy) {
    write_file(system() / "ipmitool", "#!/nonexistent/interpreter\n");
    fs::permissions(system() / "ipmitool", fs::perms::owner_all);
    const auto found = with_layer("ipmitool sensor");
    EXPECT_EQ(found.exit, bare("ipmitool sensor").exit);
    EXPECT_NE(found.err.find("not found"), std::string::npos) << found.err;
}

// Collections of other tests look for archives in /tmp too. Where the system lets it, these tests have a /tmp of their
// own; there they are alone in any case.
class SupportArchive : public SystemTest {
protected:
    void SetUp() override {
        if (::unshare(CLONE_NEWNS) == 0 &&
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0) {
            ASSERT_EQ(::mount("tmpfs", "/tmp", "tmpfs", 0, "mode=1777"), 0);
        }
        SystemTest::SetUp();
    }
    void TearDown() override {
        for (const auto& file : made_) fs::remove(file);
        SystemTest::TearDown();
    }
    // A name in /tmp that no other test has.
    fs::path in_tmp(const std::string& name) {
        made_.push_back("/tmp/" + name + dir().filename().string());
        return made_.back();
    }
    std::string move_to_log() const { return " '" + (dir() / "log").string() + "/'"; }
    Texts moved() const {
        Texts names;
        for (const auto& entry : fs::directory_iterator(dir() / "log")) {
            if (entry.path().filename() != "qvhost.log") names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::vector<fs::path> made_;
};

TEST_F(SupportArchive, OfSosComesByItsRealName) {
    const auto archive = in_tmp("sosreport-host-OSlogs-2026-");
    has("sos", "[ \"$1\" = report ] && [ \"$PWD\" ] && echo packed >'" + archive.string() + "'");
    const auto packed = with_layer("sosreport --batch --name=OSlogs --tmp-dir=/tmp");
    EXPECT_EQ(packed.exit, 0) << packed.err;
    EXPECT_EQ(calls(), (Texts{"sos report --batch --name=OSlogs --tmp-dir=/tmp"}));
    const auto moving = with_layer("mv /tmp/sosreport-OSlogs-*" + move_to_log());
    EXPECT_EQ(moving.exit, 0) << moving.err;
    EXPECT_EQ(moved(), (Texts{archive.filename()}));
    EXPECT_FALSE(fs::exists(archive));
    EXPECT_EQ(fs::status(dir() / "log" / archive.filename()).permissions(), fs::perms{0600});
}

TEST_F(SupportArchive, OfSupportconfigComesWithItsChecksum) {
    const auto archive = in_tmp("scc_host_");
    const auto checksum = in_tmp("scc_host.md5_");
    has("supportconfig",
        "echo packed >'" + archive.string() + "'; echo sum >'" + checksum.string() + "'; exit 2");
    EXPECT_EQ(with_layer("supportconfig -R /tmp").exit, 2);
    EXPECT_EQ(with_layer("mv /tmp/nts_linux*" + move_to_log()).exit, 0);
    EXPECT_EQ(moved(), (Texts{checksum.filename(), archive.filename()}));
    EXPECT_EQ(read_file(dir() / "log" / archive.filename()), "packed\n");
}

TEST_F(SupportArchive, OfSomebodyElseStaysWhereItIs) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make files of other users";
    const auto earlier = in_tmp("nts_linux_earlier_");
    write_file(earlier, "packed before");
    const auto link = in_tmp("nts_linux_link_");
    const auto pipe = in_tmp("nts_linux_pipe_");
    const auto others = in_tmp("nts_linux_others_");
    const auto second = in_tmp("nts_linux_second_");
    has("supportconfig", "exit 1");
    with_layer("supportconfig -R /tmp");
    fs::create_symlink("/etc/hostname", link);
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0666), 0);
    write_file(others, "forged");
    ASSERT_EQ(::chown(others.c_str(), 65534, 65534), 0);
    write_file(dir() / "secret", "linked");
    fs::create_hard_link(dir() / "secret", second);

    const auto moving = with_layer("mv /tmp/nts_linux*" + move_to_log());
    EXPECT_EQ(moving.exit, 1);
    EXPECT_EQ(moving.err, "mv: cannot stat '/tmp/nts_linux*': No such file or directory\n");
    EXPECT_EQ(moved(), Texts{});
    auto said = notes();
    std::sort(said.begin(), said.end());
    const auto left = [](const fs::path& file, const char* why) {
        return file.filename().string() + " in /tmp is left there: " + why;
    };
    for (const auto& expected :
         {left(earlier, "it was there before"), left(link, "it is no file"),
          left(pipe, "it is no file"), left(others, "it belongs to user 65534"),
          left(second, "it has other names")})
        EXPECT_TRUE(std::binary_search(said.begin(), said.end(), expected)) << expected;
}

TEST_F(SupportArchive, IsNotLookedForWhereNoToolPacksOne) {
    with_layer("true");
    const auto others = in_tmp("scc_packed_by_hand_");
    write_file(others, "packed");
    EXPECT_EQ(with_layer("mv /tmp/nts_linux*" + move_to_log()).exit, 1);
    EXPECT_EQ(moved(), Texts{});
    EXPECT_EQ(notes(), (Texts{others.filename().string() +
                              " in /tmp is left there: no tool that packs such archives is "
                              "installed"}));
}

// The tool has a /tmp of its own, if it does not lie in the common one.
TEST_F(SupportArchive, IsPackedWhereNobodyElseWrites) {
    if (::geteuid() != 0 ||
        run(Invocation{.arguments = {"-m", "true"}, .program = {"unshare"}}).exit != 0)
        GTEST_SKIP() << "this system gives no mounts of one's own";
    const fs::path tools = "/var/tmp/" + dir().filename().string();
    fs::create_directories(tools);
    fs::copy_file("/bin/sh", tools / "supportconfig");  // with a script as its argument
    place_.search_path = tools.string() + ":" + place_.search_path;
    write_file("/tmp/nts_linux_mine", "not seen");
    const auto packed = with_layer(
        "supportconfig -c 'echo packed >/tmp/scc_private_1; [ ! -e /tmp/nts_linux_mine ]'");
    fs::remove_all(tools);
    fs::remove("/tmp/nts_linux_mine");
    EXPECT_EQ(packed.exit, 0) << packed.err;
    EXPECT_FALSE(fs::exists("/tmp/scc_private_1"));
    EXPECT_EQ(with_layer("mv /tmp/nts_linux*" + move_to_log()).exit, 0);
    EXPECT_EQ(moved(), (Texts{"scc_private_1"}));
}

TEST_F(SupportArchive, IsNotMeantByAnotherMv) {
    write_file(dir() / "a", "text");
    EXPECT_EQ(with_layer("mv '" + (dir() / "a").string() + "'" + move_to_log()).exit, 0);
    EXPECT_EQ(moved(), (Texts{"a"}));
}

}  // namespace

}  // namespace test
