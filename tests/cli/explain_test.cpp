// "qvhost explain": all that a report and the runs before it know of one finding.
#include "report_under_test.h"
#include "store/store.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using qvhost::findings::Finding;
using qvhost::findings::Severity;
using qvhost::findings::Subsystem;

class Explain : public ReportTest {
protected:
    Outcome explain(const fs::path& report, const std::string& finding) {
        return run({"explain", report, finding});
    }
    // A log directory whose report has one finding with this evidence.
    fs::path report_with(const std::vector<qvhost::findings::Place>& evidence,
                         const std::string& rule = "drive_other_errors",
                         const std::string& site_rules = "") {
        fs::create_directories(log_dir() / "report");
        qvhost::Store store(log_dir() / "report" / "report.sqlite", qvhost::Store::Mode::create);
        store.set_meta("status", "complete");
        store.set_meta("rules", site_rules);
        qvhost::write_inventory(store, {});
        Finding finding;
        finding.id = rule + ":Z1";
        finding.rule = rule;
        finding.subsystem = Subsystem::storage;
        finding.subject = "Drive Z1";
        finding.says = "3 other errors";
        finding.evidence = evidence;
        qvhost::findings::Verdict verdict;
        verdict.findings.push_back(finding);
        verdict.health.push_back({});
        qvhost::write_verdict(store, verdict);
        store.commit();
        return log_dir();
    }
};

// The site's rules are those that the report was judged by.
TEST_F(Explain, TellsTheRuleAsTheSiteHasIt) {
    const auto report =
        report_with({}, "drive_other_errors",
                    "severity drive_other_errors warning\nthreshold drive_other_errors 7\n");
    const auto told = explain(report, "drive_other_errors:Z1").out;
    EXPECT_NE(told.find("drive has other errors (warning)"), std::string::npos) << told;
    EXPECT_NE(told.find("threshold  more than 7\n"), std::string::npos) << told;
}

const std::string kDrive = "drive_failed_no_redundancy:EX420102";
const std::string kServer = "x86_64-kp420-two-megaraid";

TEST_F(Explain, TellsAllThatIsKnown) {
    const auto report = replayed(kServer);
    const auto outcome = explain(report, kDrive);
    EXPECT_EQ(outcome.exit, 0) << outcome.err;
    EXPECT_EQ(
        outcome.out,
        kDrive +
            "\n"
            "  critical  Drive 134:2 of controller 1, EX8000NM0075, serial EX420102: state Failed; "
            "SMART alert; 2 predicted failures; 41 media errors; 3 other errors\n"
            "\n"
            "Rule\n"
            "  name      drive_failed_no_redundancy\n"
            "  says      failed drive in a volume without redundancy (critical)\n"
            "  looks at  drives.state and its volume\n"
            "  why       the next drive that fails takes data with it\n"
            "  source    the volume's state decides\n"
            "  Redfish   StorageDevice.DriveFailure\n"
            "\n"
            "Evidence\n"
            "  c1_showall.txt\n"
            "    81 | "
            "----------------------------------------------------------------------------\n"
            "    82 | 134:0     0 Onln    0 7.276 TB SAS  HDD N   N  4 KB EX8000NM0075     U  -    "
            "\n"
            "    83 | 134:1     1 Onln    0 7.276 TB SAS  HDD N   N  4 KB EX8000NM0075     U  -    "
            "\n"
            "  > 84 | 134:2     2 Failed  0 7.276 TB SAS  HDD N   N  4 KB EX8000NM0075     U  -    "
            "\n"
            "    85 | 134:3     3 Onln    0 7.276 TB SAS  HDD N   N  4 KB EX8000NM0075     U  -    "
            "\n"
            "    86 | "
            "----------------------------------------------------------------------------\n"
            "    87 | \n"
            "  host_storcli_c1_drives.txt\n"
            "    220 | Drive /c1/e134/s2 State :\n"
            "    221 | =======================\n"
            "    222 | Shield Counter = 0\n"
            "  > 223 | Media Error Count = 41\n"
            "  > 224 | Other Error Count = 3\n"
            "    225 | Drive Temperature =  34C (93.20 F)\n"
            "  > 226 | Predictive Failure Count = 2\n"
            "  > 227 | S.M.A.R.T alert flagged by drive = Yes\n"
            "    228 | \n"
            "    229 | \n"
            "    230 | Drive /c1/e134/s2 Device attributes :\n"
            "\n"
            "Since when\n"
            "  first seen    not known\n"
            "  earlier runs  there is none\n"
            "  events        4 tell of it\n"
            "  the first     2026-11-19T22:40:17  controller 1: Unexpected sense: PD 02(e0x86/s2) "
            "Path 5002200000420012, CDB: 88 00 00 00 00 02 41 93 18 00 00 00 00 08 00 00, Sense: "
            "3/11/00\n"
            "                2026-11-19T22:40:21  controller 1: Predictive failure: PD "
            "02(e0x86/s2)\n"
            "                2026-11-19T23:05:58  controller 1: Error on PD 02(e0x86/s2) (Error "
            "f0)\n"
            "                2026-11-19T23:06:03  controller 1: State change on PD 02(e0x86/s2) "
            "from ONLINE(18) to FAILED(11)\n"
            "\n"
            "What people do\n"
            "  Light the drive's own light first: storcli /cX/eY/sZ start locate.\n"
            "    (StorCLI reference manual, locate commands)\n"
            "  See that the drive and its cables are seated firmly; then replace the drive.\n"
            "    (DMTF Redfish, message registry StorageDevice: resolution of DriveFailure)\n");

    const auto list = run({"explain", report}).out;
    EXPECT_NE(list.find(kDrive + " "), std::string::npos) << list;
    const auto wrong = explain(report, "drive_failed_no_redundancy:EX420103");
    EXPECT_EQ(wrong.exit, 1);
    EXPECT_EQ(wrong.err,
              "qvhost: the report has no finding \"drive_failed_no_redundancy:EX420103\"; did you "
              "mean " +
                  kDrive + "?\n");
    // The store alone has no captures.
    const auto store = explain(report / "report" / "report.sqlite", kDrive).out;
    EXPECT_NE(
        store.find("Evidence\n  c1_showall.txt, line 84\n  host_storcli_c1_drives.txt, line "),
        std::string::npos)
        << store;
    EXPECT_NE(store.find("(to see the lines name the directory of the report)"), std::string::npos);
}

TEST_F(Explain, CountsTheEarlierRunsThatHaveIt) {
    const auto told = [&](const std::string& finding) {
        const auto text = explain(dir() / kServer, finding).out;
        const auto begin = text.find("  earlier runs  ");
        return text.substr(begin + 16, text.find('\n', begin) - begin - 16);
    };
    const auto collect_from = [&](const std::string& server) {
        const auto outcome = run({"replay", fs::path(QV_SAMPLES) / server, "--log-dir",
                                  dir() / kServer, "--quiet", "--module", "sampleModule2"});
        ASSERT_EQ(outcome.exit, 0) << outcome.err;
    };
    ASSERT_NO_FATAL_FAILURE(collect_from(kServer));
    const std::string id = "volume_no_redundancy:c1_v0";
    ASSERT_NO_FATAL_FAILURE(collect_from("x86_64-kp220-healthy"));
    ASSERT_NO_FATAL_FAILURE(collect_from(kServer));
    EXPECT_EQ(told(id), "in 1 of 2; not in the one before");
    ASSERT_NO_FATAL_FAILURE(collect_from(kServer));
    const auto runs = told(id);
    EXPECT_TRUE(runs.starts_with("in 2 of 3; without a gap since 20")) << runs;
    EXPECT_NE(runs.find("Z (runs/20"), std::string::npos) << runs;
}

TEST_F(Explain, ShowsLinesOnceAndNothingThatActsOnATerminal) {
    std::string text;
    for (int i = 1; i <= 20; ++i) text += "line " + std::to_string(i) + "\n";
    const auto report = report_with(
        {{"a.txt", 2}, {"a.txt", 5}, {"a.txt", 20}, {"b.txt", 1}, {"c.txt", 9}, {"d.txt", 0}});
    write_file(report / "a.txt", text);
    write_file(report / "b.txt", "\x1b[31mred");
    write_file(report / "c.txt", "one line\n");
    const auto out = explain(report, "drive_other_errors:Z1").out;
    EXPECT_NE(out.find("\nEvidence\n"
                       "  a.txt\n"
                       "     1 | line 1\n"
                       "  >  2 | line 2\n"
                       "     3 | line 3\n"
                       "     4 | line 4\n"
                       "  >  5 | line 5\n"
                       "     6 | line 6\n"
                       "     7 | line 7\n"
                       "     8 | line 8\n"
                       "    ...\n"
                       "    17 | line 17\n"
                       "    18 | line 18\n"
                       "    19 | line 19\n"
                       "  > 20 | line 20\n"
                       "  b.txt\n"
                       "  > 1 | \\x1b[31mred\n"
                       "  c.txt\n"
                       "    it has no such line\n"
                       "  d.txt\n\n"),
              std::string::npos)
        << out;
}

// What a store says is anybody's text: it leads to no file outside the log directory.
TEST_F(Explain, ReadsNothingOutsideTheDirectory) {
    write_file(dir() / "secret", "a secret\n");
    fs::create_directories(log_dir());
    fs::create_symlink(dir() / "secret", log_dir() / "link.txt");
    fs::create_directory_symlink(dir(), log_dir() / "folder");
    const auto report = report_with({{"../secret", 1},
                                     {dir() / "secret", 1},
                                     {"link.txt", 1},
                                     {"folder/secret", 1},
                                     {std::string("a\0b", 3), 1},
                                     {"no such file", 1}});
    const auto out = explain(report, "drive_other_errors:Z1").out;
    EXPECT_EQ(out.find("a secret"), std::string::npos) << out;
    EXPECT_NE(out.find("  folder/secret\n    it cannot be read\n"), std::string::npos) << out;
}

TEST_F(Explain, SaysWhereNobodyKnows) {
    const auto report = report_with({}, "a_rule_of_tomorrow");
    const auto out = explain(report, "a_rule_of_tomorrow:Z1").out;
    EXPECT_NE(out.find("a_rule_of_tomorrow  a rule that this version does not have"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("Evidence\n  none is named\n"), std::string::npos) << out;
    EXPECT_NE(out.find("What people do\n  no source says\n"), std::string::npos) << out;
}

}  // namespace

}  // namespace test
