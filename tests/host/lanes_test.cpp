// Which modules are asked side by side, and how what the lanes leave becomes one.
#include "qvhost/collect/lanes.h"

#include <boost/algorithm/string/join.hpp>

#include "place.h"
#include "qvhost/finish/commands.h"
#include "qvhost/finish/lane_files.h"
#include "runner/shell_words.h"

namespace qvhost {

namespace {

using Texts = std::vector<std::string>;

// Each module has one table, of its own name in capital letters.
const Offer kOffer{
    {"raid", "", {"RAID"}},   {"drives", "", {"DRIVES"}}, {"bmc", "", {"BMC"}},
    {"disks", "", {"DISKS"}}, {"notes", "", {"NOTES"}},
};

DeclaredTable table(const std::string& id, const std::string& tool, const std::string& capture) {
    DeclaredTable made;
    made.id = id;
    made.tool = tool;
    made.capture = capture;
    return made;
}

std::vector<DeclaredTable> declared() {
    return {table("RAID", "storcli", "raid.txt"), table("DRIVES", "storcli", "drives.txt"),
            table("BMC", "ipmitool", "bmc.txt"), table("DISKS", "smartctl", "disks.txt"),
            table("NOTES", "", "")};
}

// "raid drives | bmc"
std::string lanes(const std::vector<DeclaredTable>& tables, const CollectOptions& options = {}) {
    Texts texts;
    for (const auto& lane : lanes_of(kOffer, options, tables)) {
        Texts names;
        for (const auto& module : lane) names.push_back(module.name);
        texts.push_back(boost::join(names, " "));
    }
    return boost::join(texts, " | ");
}

TEST(LanesOf, AreCutWhereNothingIsShared) {
    auto tables = declared();
    EXPECT_EQ(lanes(tables), "raid drives | bmc | disks notes");
    tables[3].tool = "ipmitool";
    EXPECT_EQ(lanes(tables), "raid drives | bmc disks notes");
    tables[3].tool = "storcli";
    EXPECT_EQ(lanes(tables), "raid drives bmc disks notes") << "what lies between comes along";
    tables[3].tool = "smartctl";
    tables[3].capture = "bmc.txt";
    EXPECT_EQ(lanes(tables), "raid drives | bmc disks notes") << "a capture is shared";
    tables = declared();
    tables[1].tool = "arcconf";
    EXPECT_EQ(lanes(tables), "raid | drives | bmc | disks notes");
    tables[0] = table("RAID", "", "");
    EXPECT_EQ(lanes(tables), "raid drives | bmc | disks notes") << "it runs nothing";
    tables = declared();
    tables[3].tool = "ipmiutil";
    EXPECT_EQ(lanes(tables), "raid drives | bmc disks notes") << "both tools ask the BMC";
}

TEST(LanesOf, AreOneWhereNothingElseIsSafeOrWanted) {
    const std::string one = "raid drives bmc disks notes";
    auto tables = declared();
    tables.pop_back();
    EXPECT_EQ(lanes(tables), one) << "nobody knows what it runs";
    EXPECT_EQ(lanes({}), one);
    CollectOptions serial;
    serial.serial = true;
    EXPECT_EQ(lanes(declared(), serial), one);
    CollectOptions also;
    also.also = {"pmc"};
    EXPECT_EQ(lanes(declared(), also), one);
    CollectOptions replayed;
    replayed.replayed = true;
    EXPECT_EQ(lanes(declared(), replayed), one);
}

TEST(LanesOf, AreOfTheModulesThatAreCollected) {
    CollectOptions options;
    options.modules = {"drives", "bmc"};
    EXPECT_EQ(lanes(declared(), options), "drives | bmc");
    options.modules = {"bmc"};
    EXPECT_EQ(lanes(declared(), options), "bmc");
    CollectOptions health;
    health.profile = kHealthProfile;
    EXPECT_EQ(lanes_of(kOffer, health, declared()), std::vector<Lane>{Lane()});
}

TEST(LanesOf, AreNeverMoreThanThereAreFilesFor) {
    Offer offer;
    std::vector<DeclaredTable> tables;
    for (unsigned i = 0; i < kMostLanes + 3; ++i) {
        const auto id = std::to_string(i);
        offer.push_back({"m" + id, "", {id}});
        tables.push_back(table(id, "tool" + id, ""));
    }
    const auto found = lanes_of(offer, {}, tables);
    ASSERT_EQ(found.size(), kMostLanes);
    EXPECT_EQ(found.back().size(), 4u);
}

TEST(NamedInDirectory, AreFilesThatTheShellWritesAndTheDirectoryItself) {
    const struct {
        const char* command;
        Texts files;
        bool itself;
    } cases[] = {
        {"ipmitool sensor >'/log/sensor.txt' 2>&1", {"sensor.txt"}, false},
        {"lspci | grep SAS2308 | wc -l > b.txt", {"b.txt"}, false},
        {"tool >/log/a.txt 2>'/log/b.txt'", {"a.txt", "b.txt"}, false},
        {"tool >/logs/a.txt", {}, false},
        {"tool /log/a.txt", {}, false},
        {"mv /tmp/nts_linux* '/log/'", {}, true},
        {"cp -rf /var/log/Support/Firmware /log", {}, true},
        {"cp /log/../other /tmp", {}, false},
        {"", {}, false},
    };
    for (const auto& [command, files, itself] : cases) {
        SCOPED_TRACE(command);
        const auto named = runner::named_in_directory(command, "/log");
        EXPECT_EQ(named.files, files);
        EXPECT_EQ(named.itself, itself);
    }
}

class LaneFiles : public test::Place {
protected:
    void SetUp() override { std::filesystem::create_directory(log_dir.report()); }

    void has(const std::filesystem::path& file, const std::string& text) const {
        std::ofstream(file) << text;
    }

    LogDir log_dir{dir};
};

// "1 storcli /c0 show >'/d/c0.txt': c0.txt"
Texts told(const CommandLog& log, const std::string& dir) {
    Texts texts;
    for (const auto& command : log.commands) {
        auto text = std::to_string(command.lane) + " " + command.text + ":";
        for (auto at = text.find(dir); at != std::string::npos; at = text.find(dir))
            text.replace(at, dir.size(), "DIR");
        for (const auto& capture : command.captures) text += " " + capture;
        if (!command.stopped_by.empty()) text += " (" + command.stopped_by + ")";
        texts.push_back(text);
    }
    return texts;
}

// While a command runs, files of the other lane change: both logs tell of them.
TEST_F(LaneFiles, ACaptureIsOfTheLaneThatHasTheSurestClaim) {
    const auto at = log_dir.path().string();
    has(log_dir.commands(),
        "= module a\n> sas2ircu upload\n+ logir.log\n+ bmc.txt\n+ sos.tar\n+ "
        "odd.txt\n< 1 0\n> decode logir.log >'" +
            at +
            "/ir.txt'\n+ ir.txt\n< 1 0\n"
            "> storcli show\n"
            "= host\n> lspci >'host_lspci.txt'\n+ host_lspci.txt\n< 1 0\n");
    has(log_dir.commands(2), "= module b\n> ipmitool >'" + at +
                                 "/bmc.txt'\n+ bmc.txt\n+ logir.log\n+ ir.txt\n"
                                 "+ odd.txt\n< 1 0\n> mv /tmp/sos* '" +
                                 at +
                                 "/'\n+ sos.tar\n+ ir.txt\n< 1 0\n"
                                 "> ipmitool fru\n");
    EXPECT_EQ(told(read_commands(log_dir, {"", "user"}), at),
              (Texts{"1 sas2ircu upload: logir.log odd.txt",
                     "1 decode logir.log >'DIR/ir.txt': ir.txt", "1 storcli show:",
                     "2 ipmitool >'DIR/bmc.txt': bmc.txt", "2 mv /tmp/sos* 'DIR/': sos.tar",
                     "2 ipmitool fru: (user)", "1 lspci >'host_lspci.txt': host_lspci.txt"}));
}

TEST_F(LaneFiles, LogsBecomeOneInTheLanesOrder) {
    has(log_dir.log(), "first\n");
    has(log_dir.log(3), "third\n");
    has(log_dir.log(2), "second\n");
    has(log_dir.console(2), "said\n");
    join_lane_logs(log_dir);
    EXPECT_EQ(test::content(log_dir.log()), "first\nsecond\nthird\n");
    EXPECT_EQ(test::content(log_dir.console()), "said\n");
    join_lane_logs(log_dir);
    EXPECT_EQ(test::content(log_dir.log()), "first\nsecond\nthird\n") << "once is enough";
}

TEST_F(LaneFiles, GoAwayButForDamagedJournals) {
    for (const unsigned lane : {1u, 2u, 4u}) {
        has(log_dir.journal(lane), "journal");
        has(log_dir.commands(lane), "commands");
    }
    EXPECT_EQ(lanes_in(log_dir), (std::vector<unsigned>{1, 2, 4}));
    remove_lane_files(log_dir, {2});
    EXPECT_EQ(lanes_in(log_dir), std::vector<unsigned>{1});
    std::vector<std::string> left;
    for (const auto& entry : std::filesystem::directory_iterator(log_dir.report()))
        left.push_back(entry.path().filename());
    EXPECT_EQ(left, std::vector<std::string>{"collection-2.journal.damaged"});
}

}  // namespace

}  // namespace qvhost
