// What a fleet stores of the bundles that it is given.
#include <algorithm>
#include <fstream>
#include <limits>
#include <thread>

#include "fixture.h"
#include "fleet/print.h"
#include "fleet/schema.h"
#include "fleet/times.h"
#include "setting.h"

namespace test {
namespace {

using namespace qvhost::fleet;

// "2026-11-0N": the days of a month.
std::string day(int number) { return "2026-11-0" + std::to_string(number) + "T01:00:00Z"; }

// Four runs of a host: things change, come, go and come back.
std::vector<Report> four_runs(const std::string& name) {
    std::vector<Report> runs;
    for (int i = 1; i <= 4; ++i) runs.push_back(healthy_report(name, day(i)));
    runs[1].inventory.drives[0].media_errors = 3;  // and none again in the third
    runs[2].inventory.drives.pop_back();           // back in the fourth
    runs[3].inventory.memory_modules[1].serial = "another";
    runs[2].events.push_back(runs[2].events[0]);  // the same twice
    for (std::size_t i = 1; i < 4; ++i) {
        // A new event before the others, which moves them.
        auto event = runs[i].events[0];
        event.text = "event of run " + std::to_string(i);
        runs[i].events.insert(runs[i].events.begin(), event);
    }
    return runs;
}

std::vector<std::filesystem::path> bundles_of(const std::vector<Report>& reports,
                                              const std::filesystem::path& dir,
                                              const std::string& name) {
    std::vector<std::filesystem::path> bundles;
    for (std::size_t i = 0; i < reports.size(); ++i)
        bundles.push_back(bundle_of(reports[i], dir, name + std::to_string(i)));
    return bundles;
}

TEST_P(FleetTest, StoresARunOnce) {
    const auto file = bundle(healthy_report("web1", day(1)), "web1");
    const auto first = import({file});
    EXPECT_EQ(first.out, file.string() + ": web1, new host\n");
    EXPECT_EQ(first.err, "");
    EXPECT_EQ(first.summary.imported, 1u);
    EXPECT_GT(first.summary.rows, 10u);
    EXPECT_EQ(first.summary.stored, first.summary.rows);
    const auto before = dump(place());
    const auto second = import({file, file});
    EXPECT_EQ(second.out + second.err, "");
    EXPECT_EQ(second.summary.there_already, 2u);
    EXPECT_EQ(second.summary.stored, 0u);
    EXPECT_EQ(dump(place()), before);
}

TEST_P(FleetTest, StoresOnlyWhatChanged) {
    auto report = healthy_report("web1", day(1));
    import({bundle(report, "first")});
    report.meta["started"] = day(2);
    report.inventory.drives[1].media_errors = 7;
    const auto second = import({bundle(report, "second")}).summary;
    EXPECT_EQ(second.imported, 1u);
    EXPECT_EQ(second.stored, 1u);
    EXPECT_EQ(
        answer(
            "SELECT slot, media_errors, until = 9223372036854775807 AS holds FROM drives ORDER BY slot, run"),
        "slot,media_errors,holds\r\n0,0,1\r\n1,0,0\r\n1,7,1\r\n");
}

TEST_P(FleetTest, GivesBackEachRunAsItWas) {
    const auto reports = four_runs("web1");
    import(bundles_of(reports, dir(), "web1"));
    for (std::size_t i = 0; i < reports.size(); ++i) {
        // The same run alone in a database of its own.
        const auto alone = new_place(GetParam(), dir());
        import_into(alone, {dir() / ("web1" + std::to_string(i) + ".tar.zst")});
        for (const auto& history : histories()) {
            std::ostringstream there;
            std::string names;
            for (std::size_t column = 0; column < history.names.size(); ++column) {
                if (static_cast<int>(column) != history.place)
                    names += (names.empty() ? "" : ", ") + history.names[column];
            }
            const auto sql = "SELECT digest, " + names + " FROM " + history.name +
                             "_by_run WHERE started = '" + day(static_cast<int>(i) + 1) +
                             "' ORDER BY digest";
            const auto of_alone = [&] {
                std::ostringstream out;
                print_query(*open_database(alone, false), sql, {.format = "csv", .raw = true}, out);
                return out.str();
            }();
            EXPECT_EQ(answer(sql), of_alone) << history.name << ", run " << i;
        }
    }
}

TEST_P(FleetTest, TheOrderOfRunsDoesNotMatter) {
    const auto bundles = bundles_of(four_runs("web1"), dir(), "web1");
    import(bundles);
    const auto tables_of = [&](const std::string& of) {
        std::string all;
        for (const auto& table : tables()) {
            // The line of an event is the one in some run that tells it.
            if (table.name != "events") all += dump(of, table.name);
        }
        return all;
    };
    const auto expected = tables_of(place());
    std::vector<std::size_t> order{0, 1, 2, 3};
    // A few of them, every day.
    for (int tried = 0; std::next_permutation(order.begin(), order.end()); ++tried) {
        if (tried % setting("QV_FLEET_ORDERS", 9, 1) != 0) continue;
        const auto other = new_place(GetParam(), dir());
        for (const auto i : order) import_into(other, {bundles[i]});
        EXPECT_EQ(tables_of(other), expected) << order[0] << order[1] << order[2] << order[3];
    }
}

TEST_P(FleetTest, SeveralAtATimeGiveTheSame) {
    std::vector<std::filesystem::path> bundles;
    for (const auto* name : {"web1", "web2", "web3"}) {
        const auto some = bundles_of(four_runs(name), dir(), name);
        bundles.insert(bundles.end(), some.begin(), some.end());
    }
    for (const auto& one : bundles) import({one});
    const auto expected = dump(place(), "drives") + dump(place(), "runs") + dump(place(), "hosts");
    const auto other = new_place(GetParam(), dir());
    auto backwards = bundles;
    std::reverse(backwards.begin(), backwards.end());
    {
        std::jthread first([&] { import_into(other, bundles, 4); });
        std::jthread second([&] { import_into(other, backwards, 4); });
    }
    EXPECT_EQ(dump(other, "drives") + dump(other, "runs") + dump(other, "hosts"), expected);
}

TEST_P(FleetTest, AHostIsNotItsName) {
    auto report = healthy_report("web1", day(1));
    import({bundle(report, "first")});
    report.meta["host"] = "mail1";
    report.meta["started"] = day(2);
    EXPECT_EQ(import({bundle(report, "renamed")}).out, "");
    report.meta["machine_id"] = "another";
    report.meta["started"] = day(3);
    const auto installed = import({bundle(report, "installed")}).out;
    EXPECT_NE(
        installed.find(": mail1, new installation of mail1, last seen 2026-11-02T01:00:00Z\n"),
        std::string::npos)
        << installed;
    report.inventory.systems[0].serial = "SN-new";
    report.meta["started"] = day(4);
    const auto board = import({bundle(report, "board")}).out;
    EXPECT_NE(board.find(": mail1, new board in mail1, last seen 2026-11-03T01:00:00Z\n"),
              std::string::npos)
        << board;
    EXPECT_EQ(answer("SELECT change, host_name, earlier_name FROM host_changes ORDER BY since_run"),
              "change,host_name,earlier_name\r\nnew installation,mail1,mail1\r\nnew "
              "board,mail1,mail1\r\n");
    // Another host of the same name is another host.
    const auto other = import({bundle(
        [] {
            auto one = healthy_report("web9", day(5));
            one.meta["host"] = "mail1";
            return one;
        }(),
        "other")});
    EXPECT_NE(other.out.find(": mail1, new host\n"), std::string::npos) << other.out;
}

TEST_P(FleetTest, NamesAndSkipsWhatIsBroken) {
    const auto good = bundle(healthy_report("web1", day(1)), "good");
    const auto cut = dir() / "cut.tar.zst";
    std::filesystem::copy_file(bundle(healthy_report("web2", day(1)), "web2"), cut);
    std::filesystem::resize_file(cut, std::filesystem::file_size(cut) / 2);
    const auto text = dir() / "text.zip";
    std::ofstream(text) << "no archive\n";
    auto nobody = healthy_report("web3", day(1));
    nobody.meta.erase("machine_id");
    nobody.inventory.systems.clear();
    auto never = healthy_report("web4", "yesterday");
    const auto bare = bare_bundle(healthy_report("web5", day(1)), dir(), "bare");
    const std::vector<std::filesystem::path> all{
        cut,  text, dir() / "missing.zip", bundle(nobody, "nobody"), bundle(never, "never"), bare,
        good, bare};
    const auto result = import(all);
    EXPECT_EQ(result.summary.imported, 1u);
    EXPECT_EQ(result.summary.skipped, 7u);
    for (const auto& [name, why] : std::map<std::string, std::string>{
             {"cut.tar.zst", "it is damaged, or no bundle"},
             {"text.zip", "it is damaged, or no bundle"},
             {"bare.tar.zst", "it holds no report"},
             {"missing.zip", "No such file or directory"},
             {"nobody.tar.zst", "it tells neither machine id nor serial number"},
             {"never.tar.zst", "it does not tell when it was collected"}}) {
        const auto line = "qvfleet: " + (dir() / name).string() + ": " + why;
        EXPECT_NE(result.err.find(line), std::string::npos) << line << "\n" << result.err;
    }
    EXPECT_EQ(answer("SELECT name FROM hosts"), "name\r\nweb1\r\n");
}

TEST_P(FleetTest, KeepsAnyText) {
    auto report = healthy_report("web1", day(1));
    const std::string odd("\\N \\. \t'\";--\n\r\\ \xc3\xa4 \xff \x01");
    report.inventory.drives[0].model = odd + std::string("\0end", 4);
    report.inventory.drives[1].model = "\\N";
    report.inventory.drives[1].state = "";
    report.inventory.sensors[0].reading = 1e-300;
    report.inventory.sensors[1].reading = std::numeric_limits<double>::infinity();
    report.inventory.drives[0].capacity_bytes = std::numeric_limits<std::int64_t>::max();
    report.inventory.drives[0].media_errors = std::numeric_limits<std::int64_t>::min();
    const auto result = import({bundle(report, "odd")});
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(answer("SELECT media_errors, capacity_bytes FROM drives WHERE slot = 0"),
              "media_errors,capacity_bytes\r\n-9223372036854775808,9223372036854775807\r\n");
    EXPECT_EQ(answer("SELECT reading FROM sensors ORDER BY name"), "reading\r\n1e-300\r\n\"\"\r\n");
    EXPECT_EQ(answer("SELECT model, state FROM drives WHERE slot = 1"),
              "model,state\r\n\\N,\"\"\r\n");
    std::string kept;
    open_database(place(), false)
        ->each("SELECT model FROM drives WHERE slot = 0", {},
               [&](const Row& row) { kept = std::get<std::string>(row[0]); });
    std::string expected = odd;
    expected.replace(expected.find('\xff'), 1, "\xef\xbf\xbd");
    EXPECT_EQ(kept, expected +
                        "\xef\xbf\xbd"
                        "end");
}

TEST_P(FleetTest, LeavesTheFirstOfTwoBundlesOfARun) {
    auto report = healthy_report("web1", day(1));
    import({bundle(report, "first")});
    const auto before = dump(place());
    report.captures["lspci.txt"] = "other\n";
    const auto second = import({bundle(report, "second")});
    EXPECT_NE(second.err.find("this run is there already, from another bundle"), std::string::npos);
    EXPECT_EQ(dump(place()), before);
}

INSTANTIATE_TEST_SUITE_P(Sqlite, FleetTest, testing::Values(Dialect::sqlite));
INSTANTIATE_TEST_SUITE_P(Postgresql, FleetTest, testing::Values(Dialect::postgresql));

}  // namespace
}  // namespace test
