#include "fleet/forget.h"

#include <map>

#include "fleet/schema.h"
#include "store/typed_value.h"

namespace qvhost::fleet {

namespace {

// For each host with runs before that time, the first run that stays.
std::map<std::int64_t, std::int64_t> first_kept_runs(Database& db, Milliseconds time) {
    std::map<std::int64_t, std::int64_t> runs;
    db.each(
        "SELECT r.host, coalesce(min(CASE WHEN r.run >= $1 THEN r.run END), max(r.run))"
        " FROM runs r GROUP BY r.host HAVING min(r.run) <"
        " coalesce(min(CASE WHEN r.run >= $1 THEN r.run END), max(r.run))",
        {time}, [&](const Row& row) { runs[integer_of(row[0])] = integer_of(row[1]); });
    return runs;
}

}  // namespace

std::vector<std::int64_t> hosts_named(Database& db, const std::string& name) {
    std::vector<std::int64_t> hosts;
    db.each(
        "SELECT host FROM hosts WHERE name = $1 OR serial = $1 OR machine_id = $1"
        " OR CAST(host AS TEXT) = $1 ORDER BY host",
        {name}, [&](const Row& row) { hosts.push_back(integer_of(row[0])); });
    return hosts;
}

void forget_hosts(Database& db, const std::vector<std::int64_t>& hosts) {
    Transaction transaction(db);
    db.lock(hosts);
    for (const auto host : hosts) {
        const auto of_host = " WHERE host = " + std::to_string(host);
        for (const auto& history : histories()) db.execute("DELETE FROM " + history.name + of_host);
        for (const auto* table : {"runs", "hosts"})
            db.execute(std::string("DELETE FROM ") + table + of_host);
    }
    transaction.commit();
}

std::size_t forget_runs_before(Database& db, Milliseconds time) {
    Transaction transaction(db);
    std::size_t gone = 0;
    for (const auto& [host, kept] : first_kept_runs(db, time)) {
        db.lock({host});
        const auto of_host = " WHERE host = " + std::to_string(host);
        const auto run = std::to_string(kept);
        db.each("SELECT count(*) FROM runs" + of_host + " AND run < " + run, {},
                [&](const Row& row) { gone += static_cast<std::size_t>(integer_of(row[0])); });
        db.execute("DELETE FROM runs" + of_host + " AND run < " + run);
        for (const auto& history : histories()) {
            db.execute("DELETE FROM " + history.name + of_host + " AND until <= " + run);
            db.execute("UPDATE " + history.name + " SET run = " + run + of_host + " AND run < " +
                       run);
        }
        db.execute("UPDATE hosts SET first_run = " + run + of_host);
    }
    transaction.commit();
    return gone;
}

}  // namespace qvhost::fleet
