// What a fleet answers: its views, the state of its hosts, what is left when hosts are forgotten.
#include "fixture.h"
#include "fleet/forget.h"
#include "fleet/print.h"
#include "fleet/status.h"

namespace test {
namespace {

using namespace qvhost::fleet;
using qvhost::findings::Severity;
using qvhost::findings::Subsystem;

std::string day(int number) {
    return std::string("2026-11-") + (number < 10 ? "0" : "") + std::to_string(number) +
           "T01:00:00Z";
}

void add_finding(Report& report, Severity severity, const std::string& rule,
                 const std::string& subject, std::size_t drive) {
    report.verdict.findings.push_back(
        {.id = rule + ":" + subject,
         .rule = rule,
         .severity = severity,
         .subsystem = Subsystem::storage,
         .subject = subject,
         .says = "state Failed",
         .time = {},
         .evidence = {{"c0_drives.txt", 5}},
         .entities = {{"drives", static_cast<std::int64_t>(drive) + 1}}});
    using qvhost::findings::HealthWord;
    report.verdict.health[0].health =
        severity == Severity::critical ? HealthWord::critical : HealthWord::warning;
}

// Three hosts of one product: one with a failed drive, one with a worn one and old firmware, one that is well.
class AnswersTest : public FleetTest {
protected:
    void SetUp() override {
        std::vector<std::filesystem::path> bundles;
        for (int run = 1; run <= 3; ++run) {
            auto db1 = healthy_report("db1", day(run));
            auto db2 = healthy_report("db2", day(run));
            auto db3 = healthy_report("db3", day(run));
            db1.inventory.drives[1].media_errors = run * run;
            db1.inventory.memory_modules[0].serial = "MM-" + std::to_string(run);
            db2.inventory.systems[0].firmware = "1.9";
            db2.inventory.drives[0].firmware = "0003";
            if (run == 3) {
                add_finding(db1, Severity::critical, "drive state", "Drive 252:1", 1);
                add_finding(db2, Severity::warning, "drive state", "Drive 252:0", 0);
            }
            for (const auto& [name, report] :
                 {std::pair("db1", db1), std::pair("db2", db2), std::pair("db3", db3)}) {
                if (std::string(name) == "db3" && run > 1) continue;  // it falls silent
                bundles.push_back(bundle(report, name + std::to_string(run)));
            }
        }
        const auto imported = import(bundles);
        ASSERT_EQ(imported.err, "");
        ASSERT_EQ(imported.summary.imported, 7u);
    }
};

TEST_P(AnswersTest, Views) {
    const struct {
        const char* sql;
        const char* rows;
    } kCases[] = {
        {"SELECT model, firmware, failing, on_hosts, of_drives FROM failing_drives ORDER BY firmware",
         "model,firmware,failing,on_hosts,of_drives\r\nEX4000,0003,1,1,1\r\nEX4000,0004,1,1,5\r\n"},
        {"SELECT host_name, serial, first_errors, last_errors, growth FROM media_error_growth",
         "host_name,serial,first_errors,last_errors,growth\r\ndb1,DR-db1-1,1,9,8\r\n"},
        {"SELECT kind, host_name, item, firmware, commonest, has_commonest, of_all FROM firmware_off ORDER BY kind",
         "kind,host_name,item,firmware,commonest,has_commonest,of_all\r\n"
         "drive,db2,DR-db2-0,0003,0004,5,6\r\nsystem,db2,SN-db2,1.9,2.1,2,3\r\n"},
        {"SELECT host_name, slot, modules FROM memory_replaced_twice",
         "host_name,slot,modules\r\ndb1,DIMM_A0,3\r\n"},
        {"SELECT product, rule, severity, hosts, of_hosts FROM findings_on_siblings",
         "product,rule,severity,hosts,of_hosts\r\n"},
        {"SELECT host_name, critical, warning, findings, product, replaced FROM host_status ORDER BY host_name",
         "host_name,critical,warning,findings,product,replaced\r\n"
         "db1,1,0,1,EX100,0\r\ndb2,0,1,1,EX100,0\r\ndb3,0,0,0,EX100,0\r\n"},
        {"SELECT * FROM netbox_devices ORDER BY name",
         "name,manufacturer,device_type,serial,status\r\ndb1,Example,EX100,SN-db1,active\r\n"
         "db2,Example,EX100,SN-db2,active\r\ndb3,Example,EX100,SN-db3,active\r\n"},
        {"SELECT * FROM netbox_inventory_items WHERE device = 'db3' ORDER BY name",
         "device,name,manufacturer,part_id,serial,discovered,description\r\n"
         "db3,DIMM DIMM_A0,Example,EXM16,MM-db3-0,true,DDR4\r\n"
         "db3,DIMM DIMM_A1,Example,EXM16,MM-db3-1,true,DDR4\r\n"
         "db3,Drive 0:252:0,,EX4000,DR-db3-0,true,firmware 0004\r\n"
         "db3,Drive 0:252:1,,EX4000,DR-db3-1,true,firmware 0004\r\n"},
        {"SELECT count(*) AS runs FROM drives_by_run", "runs\r\n14\r\n"},
        {"SELECT host_name, slot FROM current_drives WHERE media_errors > 0",
         "host_name,slot\r\ndb1,1\r\n"},
    };
    for (const auto& [sql, expected] : kCases) EXPECT_EQ(answer(sql), expected) << sql;
}

TEST_P(AnswersTest, TheSameFindingOnSiblings) {
    auto report = healthy_report("db4", day(3));
    add_finding(report, Severity::warning, "drive state", "Drive 252:1", 1);
    import({bundle(report, "db4")});
    EXPECT_EQ(
        answer(
            "SELECT product, rule, severity, hosts, of_hosts, first_host FROM findings_on_siblings"),
        "product,rule,severity,hosts,of_hosts,first_host\r\nEX100,drive state,warning,2,4,db2\r\n");
}

TEST_P(AnswersTest, StatusIsWorstFirst) {
    import({bundle(healthy_report("db0", day(3)), "db0")});
    const auto db = open_database(place(), false);
    const auto now = *time_of("2026-11-04T01:00:00Z");
    const auto words = [&](Milliseconds silent_after) {
        std::string all;
        for (const auto& host : status_of(*db, now, silent_after).hosts)
            all += host.state + (host.is_silent ? " silent " : " ") + host.name + " " +
                   age_text(host.age) + " " + std::to_string(host.findings) + " " + host.worst +
                   "\n";
        return all;
    };
    EXPECT_EQ(words(2 * Milliseconds{86'400'000}),
              "critical db1 24 h 1 Drive 252:1: state Failed\nok silent db3 3 d 0 \n"
              "warning db2 24 h 1 Drive 252:0: state Failed\nok db0 24 h 0 \n");
    EXPECT_EQ(words(9 * Milliseconds{86'400'000}),
              "critical db1 24 h 1 Drive 252:1: state Failed\n"
              "warning db2 24 h 1 Drive 252:0: state Failed\nok db0 24 h 0 \nok db3 3 d 0 \n");
}

TEST_P(AnswersTest, AHostThatIsAnotherOneNowIsLeftOut) {
    auto report = healthy_report("db3", day(4));
    report.meta["machine_id"] = "anew";
    import({bundle(report, "anew")});
    const auto status = status_of(*open_database(place(), false), *time_of("2026-11-04"), 1);
    EXPECT_EQ(status.replaced, 1u);
    EXPECT_EQ(status.hosts.size(), 3u);
}

TEST_P(AnswersTest, AForgottenHostIsGone) {
    const auto before = rows("drives");
    import({bundle(healthy_report("db9", day(1)), "db9")});
    const auto db = open_database(place(), false);
    EXPECT_NE(rows("drives"), before);
    const auto hosts = hosts_named(*db, "db9");
    ASSERT_EQ(hosts.size(), 1u);
    EXPECT_EQ(hosts_named(*db, "SN-db9"), hosts);
    EXPECT_EQ(hosts_named(*db, "id-db9"), hosts);
    EXPECT_EQ(hosts_named(*db, std::to_string(hosts[0])), hosts);
    EXPECT_TRUE(hosts_named(*db, "db").empty());
    forget_hosts(*db, hosts);
    EXPECT_EQ(rows("drives"), before);
    EXPECT_EQ(answer("SELECT count(*) AS n FROM hosts"), "n\r\n3\r\n");
}

TEST_P(AnswersTest, ForgettingOldRunsIsAsIfTheyHadNeverBeen) {
    const auto alone = new_place(GetParam(), dir());
    std::vector<std::filesystem::path> later;
    for (const auto* name : {"db12", "db13", "db22", "db23", "db31"})
        later.push_back(dir() / (std::string(name) + ".tar.zst"));
    import_into(alone, later);
    const auto db = open_database(place(), false);
    EXPECT_EQ(forget_runs_before(*db, *time_of("2026-11-02")), 2u);  // not the only one of db3
    EXPECT_EQ(forget_runs_before(*db, *time_of("2026-11-02")), 0u);
    EXPECT_EQ(dump(place()), dump(alone));
}

TEST_P(AnswersTest, AQueryReadsAlone) {
    for (const auto* sql :
         {"DELETE FROM hosts", "DROP VIEW host_status", "SELECT 1; DROP TABLE hosts",
          "INSERT INTO hosts (host) VALUES (1)", "", "SELECT nothing FROM hosts"})
        EXPECT_THROW(answer(sql), std::runtime_error) << sql;
    EXPECT_EQ(answer("SELECT count(*) AS n FROM hosts"), "n\r\n3\r\n");
}

TEST_P(AnswersTest, ExportKnowsItsTables) {
    EXPECT_THROW(rows("sqlite_master"), std::runtime_error);
    EXPECT_THROW(rows("hosts; DROP TABLE hosts"), std::runtime_error);
    EXPECT_EQ(rows("failing_drives").substr(0, 15), "model,firmware,");
}

INSTANTIATE_TEST_SUITE_P(Sqlite, AnswersTest, testing::Values(Dialect::sqlite));
INSTANTIATE_TEST_SUITE_P(Postgresql, AnswersTest, testing::Values(Dialect::postgresql));

}  // namespace
}  // namespace test
