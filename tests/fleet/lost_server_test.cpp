// A server, or the program, that dies in the middle of an import.
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <pqxx/pqxx>
#include <thread>

#include "cluster.h"
#include "fixture.h"
#include "fleet/schema.h"
#include "processes/processes.h"

namespace test {
namespace {

using namespace qvhost::fleet;

std::vector<std::filesystem::path> some_bundles(const std::filesystem::path& dir) {
    std::vector<std::filesystem::path> bundles;
    for (int i = 0; i < 12; ++i) {
        const auto name = "web" + std::to_string(i);
        bundles.push_back(bundle_of(healthy_report(name, "2026-11-01T00:00:00Z"), dir, name));
    }
    return bundles;
}

// Somebody who holds a table, in which an import has then to wait in its middle: rows of other tables are there.
class Holder {
public:
    Holder(const std::string& place, const std::string& table)
        : connection_(place), holding_(connection_) {
        holding_.exec("LOCK TABLE " + table + " IN EXCLUSIVE MODE");
    }

    // Until somebody waits for the table.
    static void wait_for_waiter() {
        for (int tried = 0; tried < 30'000; ++tried) {
            pqxx::connection connection(cluster().administrator());
            pqxx::nontransaction asking(connection);
            if (!asking
                     .exec("SELECT 1 FROM pg_stat_activity WHERE usename = 'fleet' AND"
                           " wait_event_type = 'Lock'")
                     .empty())
                return;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        FAIL() << "nobody waits for the table";
    }

private:
    pqxx::connection connection_;
    pqxx::work holding_;
};

TEST(PostgresqlLost, AnImportGoesOnWhenTheServerIsBack) {
    const qvhost::TemporaryDirectory dir("qvfleet-test");
    const auto bundles = some_bundles(dir.path());
    const auto undisturbed = new_place(Dialect::postgresql, dir.path());
    import_into(undisturbed, bundles);

    const auto place = new_place(Dialect::postgresql, dir.path());
    import_into(place, {bundles[0]});
    Import result;
    {
        auto holder = std::make_unique<Holder>(place, "memory_modules");
        std::jthread importing([&] { result = import_into(place, bundles); });
        Holder::wait_for_waiter();
        cluster().crash();
        cluster().start();
        try {
            holder.reset();
        } catch (const pqxx::failure&) {
            // Its connection is gone as well.
        }
    }
    EXPECT_NE(result.err.find("the connection is lost, and tried anew"), std::string::npos)
        << result.err;
    EXPECT_EQ(result.summary.skipped, 0u) << result.err;
    EXPECT_EQ(result.summary.imported + result.summary.there_already, bundles.size());
    EXPECT_EQ(dump(place), dump(undisturbed));
}

TEST(PostgresqlLost, AProgramThatIsKilledLeavesNothingHalfDone) {
    const qvhost::TemporaryDirectory dir("qvfleet-test");
    const auto bundles = some_bundles(dir.path());
    const auto undisturbed = new_place(Dialect::postgresql, dir.path());
    import_into(undisturbed, bundles);

    const auto place = new_place(Dialect::postgresql, dir.path());
    import_into(place, {bundles[0]});
    const auto before = dump(place);
    {
        const Holder holder(place, "memory_modules");
        const auto program = qvhost::start_process(
            {.program = QV_FLEET,
             .arguments = {"--db", place, "import", "--jobs", "1", dir.path().string()}});
        Holder::wait_for_waiter();
        ::kill(program, SIGKILL);
        EXPECT_EQ(WTERMSIG(qvhost::wait_for_process(program)), SIGKILL);
    }
    EXPECT_EQ(dump(place), before);
    import_into(place, bundles);
    EXPECT_EQ(dump(place), dump(undisturbed));
}

TEST(PostgresqlLost, AnImportEndsWhenTheServerStaysAway) {
    const qvhost::TemporaryDirectory dir("qvfleet-test");
    const auto place = new_place(Dialect::postgresql, dir.path());
    cluster().crash();
    EXPECT_THROW(import_into(place, some_bundles(dir.path())), std::runtime_error);
    cluster().start();
}

TEST(PostgresqlRights, NoDatabaseIsMadeAndRunsAreInMonths) {
    const qvhost::TemporaryDirectory dir("qvfleet-test");
    const auto place = new_place(Dialect::postgresql, dir.path());
    {
        pqxx::connection connection(place);
        EXPECT_THROW(pqxx::nontransaction(connection).exec("CREATE DATABASE more"),
                     pqxx::insufficient_privilege);
    }
    import_into(place, {bundle_of(healthy_report("a", "2026-11-30T23:59:59Z"), dir.path(), "a"),
                        bundle_of(healthy_report("b", "2026-12-01T00:00:00Z"), dir.path(), "b")});
    pqxx::connection connection(place);
    const auto rows = pqxx::nontransaction(connection)
                          .exec("SELECT tableoid::regclass::text, name FROM runs ORDER BY name");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0][0].c_str(), std::string("runs_2026_11"));
    EXPECT_EQ(rows[1][0].c_str(), std::string("runs_2026_12"));
}

TEST(PostgresqlAndSqlite, HaveTheSameTablesAndViews) {
    const qvhost::TemporaryDirectory dir("qvfleet-test");
    const auto bundles = some_bundles(dir.path());
    const auto server = new_place(Dialect::postgresql, dir.path());
    const auto file = new_place(Dialect::sqlite, dir.path());
    import_into(server, bundles);
    import_into(file, bundles);
    EXPECT_EQ(dump(server), dump(file));
    EXPECT_EQ(dump_views(server), dump_views(file));
}

}  // namespace
}  // namespace test
