#include "fleet/import.h"

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <set>
#include <stdexcept>
#include <unordered_map>

#include "fleet/schema.h"
#include "fleet/times.h"
#include "store/typed_value.h"

namespace qvhost::fleet {

namespace {

constexpr std::int64_t kNever = -1;       // before every run
constexpr std::size_t kMostListed = 500;  // digests in one statement
constexpr std::int64_t kMonthsLock = -2;  // held by whoever makes a partition; no host's key

// What a run changes in a history. The run stands between its neighbours: `before` (or kNever) and `after` (or
// kForever). A row is stored from the run where it comes to the run where it is gone.
struct Plan {
    std::vector<std::int64_t> ends;    // true before, not in this run: until this run
    std::vector<std::int64_t> splits;  // the same, and true after it: once more from there on
    std::vector<std::int64_t> moves;   // true from `after` on: from this run on now
    std::unordered_map<std::int64_t, std::int64_t> insertions;  // digest: until
};

struct Planned {
    const IncomingBundle* incoming;
    Imported result;
    std::int64_t before = kNever;
    std::int64_t after = kForever;
    std::int64_t first_run = 0, last_run = 0;  // of the host, with this run
    std::vector<Plan> plans;
};

TypedValue text_or_null(const std::string& text) {
    return text.empty() ? TypedValue() : TypedValue(text);
}

// "new installation of web1"
std::string relation_to_known_hosts(Database& db, const HostIdentity& identity) {
    std::string words = "new host";
    const auto look = [&](const char* column, const std::string& value, const char* what) {
        if (value.empty()) return;
        db.each(std::string("SELECT name, last_run FROM hosts WHERE ") + column +
                    " = $1 ORDER BY last_run, host",
                {value}, [&](const Row& row) {
                    const auto name = text_of(row[0]);
                    words = what + (name.empty() ? "a host without a name" : name) +
                            ", last seen " + utc_text(integer_of(row[1], 0));
                });
    };
    look("machine_id", identity.machine_id, "new board in ");
    look("serial", identity.serial, "new installation of ");
    return words;
}

// Reads the host's row and finds the neighbours of the run.
void look_up(Database& db, Planned& one) {
    const auto& identity = one.incoming->identity();
    const auto run = one.incoming->run();
    bool is_known = false;
    db.each("SELECT machine_id, serial, first_run, last_run FROM hosts WHERE host = $1",
            {identity.host}, [&](const Row& row) {
                is_known = true;
                if (text_of(row[0]) != identity.machine_id || text_of(row[1]) != identity.serial)
                    throw std::runtime_error(one.incoming->bundle().string() +
                                             ": another host has the same key");
                one.first_run = integer_of(row[2], run);
                one.last_run = integer_of(row[3], run);
            });
    one.result.is_new = true;
    if (!is_known) {
        one.result.host = relation_to_known_hosts(db, identity);
        one.first_run = one.last_run = run;
        return;
    }
    if (run > one.last_run) {
        one.before = one.last_run;
    } else {
        db.each("SELECT run, manifest_sha256 FROM runs WHERE host = $1", {identity.host},
                [&](const Row& row) {
                    const auto other = integer_of(row[0], kNever);
                    if (other < run) one.before = std::max(one.before, other);
                    if (other > run) one.after = std::min(one.after, other);
                    if (other != run) return;
                    one.result.is_new = false;
                    one.result.is_other_bundle = text_of(row[1]) != one.incoming->manifest();
                });
    }
    one.first_run = std::min(one.first_run, run);
    one.last_run = std::max(one.last_run, run);
}

// Every row of the host that is true before or after the run, with the number of its history.
std::string neighbours_sql() {
    std::string sql;
    for (std::size_t i = 0; i < histories().size(); ++i)
        sql += (i == 0 ? "SELECT " : " UNION ALL SELECT ") + std::to_string(i) +
               ", digest, run, until FROM " + histories()[i].name +
               " WHERE host = $1 AND until > $2 AND run <= $3";
    return sql;
}

void plan(Database& db, Planned& one) {
    static const auto kSql = neighbours_sql();
    one.plans.resize(histories().size());
    for (std::size_t i = 0; i < one.plans.size(); ++i) {
        const auto& digests = one.incoming->digests(i);
        one.result.rows += digests.size();
        auto& insertions = one.plans[i].insertions;
        insertions.reserve(digests.size());
        for (const auto digest : digests) insertions.emplace(digest, one.after);
    }
    if (one.before == kNever && one.after == kForever) return;
    db.each(kSql, {one.incoming->identity().host, one.before, one.after}, [&](const Row& row) {
        auto& plan = one.plans[static_cast<std::size_t>(integer_of(row[0], 0))];
        const auto digest = integer_of(row[1], 0);
        const auto until = integer_of(row[3], kForever);
        const bool was_true = integer_of(row[2], kNever) <= one.before;
        const auto told = plan.insertions.find(digest);
        if (told == plan.insertions.end()) {
            if (!was_true) return;
            plan.ends.push_back(digest);
            if (until > one.after) plan.splits.push_back(digest);
        } else if (was_true) {
            plan.insertions.erase(told);
        } else {
            told->second = until;
            plan.moves.push_back(digest);
        }
    });
}

// Does `work` with "(1, 2, 3)" of the numbers, some at a time.
void in_lists(const std::vector<std::int64_t>& numbers,
              const std::function<void(const std::string& list)>& work) {
    for (std::size_t begin = 0; begin < numbers.size(); begin += kMostListed) {
        std::string list = "(";
        for (std::size_t i = begin; i < std::min(begin + kMostListed, numbers.size()); ++i)
            list += (list.size() == 1 ? "" : ", ") + std::to_string(numbers[i]);
        work(list + ")");
    }
}

// Rows that are there already.
void change(Database& db, const Planned& one) {
    const auto host = std::to_string(one.incoming->identity().host);
    const auto run = std::to_string(one.incoming->run());
    const auto after = std::to_string(one.after);
    for (std::size_t i = 0; i < histories().size(); ++i) {
        const auto& table = histories()[i].name;
        const auto& told = boost::join(histories()[i].names, ", ");
        const auto of_host = " WHERE host = " + host + " AND digest IN ";
        const auto true_before =
            " AND run < " + run + " AND until >= " + after;  // and so nothing between
        in_lists(one.plans[i].splits, [&](const std::string& list) {
            db.execute("INSERT INTO " + table + " (host, digest, run, until, " + told +
                       ") SELECT host, digest, " + after + ", until, " + told + " FROM " + table +
                       of_host + list + true_before);
        });
        in_lists(one.plans[i].ends, [&](const std::string& list) {
            db.execute("UPDATE " + table + " SET until = " + run + of_host + list + true_before);
        });
        in_lists(one.plans[i].moves, [&](const std::string& list) {
            db.execute("DELETE FROM " + table + of_host + list + " AND run = " + after);
        });
    }
}

// New rows of one history, of all runs together.
void insert(Database& db, std::size_t history, std::vector<Planned>& all) {
    const auto has_new = [&](const Planned& one) {
        return one.result.is_new && !one.plans[history].insertions.empty();
    };
    if (std::none_of(all.begin(), all.end(), has_new)) return;
    const auto insertion =
        db.insertion(histories()[history].name, columns_of(histories()[history]));
    Row stored;
    for (auto& one : all) {
        if (!has_new(one)) continue;
        const auto& digests = one.incoming->digests(history);
        const auto& insertions = one.plans[history].insertions;
        std::size_t at = 0;
        one.incoming->each_row(history, [&](const Row& row) {
            const auto digest = digests.at(at++);
            const auto found = insertions.find(digest);
            if (found == insertions.end()) return;
            stored = {one.incoming->identity().host, digest, one.incoming->run(), found->second};
            stored.insert(stored.end(), row.begin(), row.end());
            insertion->add(stored);
            ++one.result.stored;
        });
    }
    insertion->finish();
}

void insert_runs(Database& db, const std::vector<Planned>& all) {
    const auto& columns = std::find_if(tables().begin(), tables().end(), [](const auto& one) {
                              return one.name == "runs";
                          })->columns;
    std::vector<std::string> names;
    for (const auto& column : columns) names.push_back(column.name);
    const auto insertion = db.insertion("runs", names);
    for (const auto& one : all) {
        if (one.result.is_new) insertion->add(one.incoming->run_row());
    }
    insertion->finish();
}

// The name is that of the latest run.
void note_host(Database& db, const Planned& one) {
    const auto& [machine_id, serial, host] = one.incoming->identity();
    db.each(
        "INSERT INTO hosts (host, machine_id, serial, name, first_run, last_run)"
        " VALUES ($1, $2, $3, $4, $5, $6) ON CONFLICT (host) DO UPDATE SET"
        " name = CASE WHEN excluded.last_run > hosts.last_run OR excluded.first_run ="
        " excluded.last_run THEN excluded.name ELSE hosts.name END,"
        " first_run = excluded.first_run, last_run = excluded.last_run",
        {host, text_or_null(machine_id), text_or_null(serial), text_or_null(one.incoming->name()),
         one.first_run, one.last_run},
        [](const Row&) {});
}

}  // namespace

void prepare_months(Database& db, std::span<const IncomingBundle* const> bundles) {
    if (db.dialect() != Dialect::postgresql) return;
    std::set<std::string> months;
    for (const auto* incoming : bundles) {
        const auto month = month_of(incoming->run()).name;
        if (!months.insert(month).second || db.has("runs_" + month)) continue;
        Transaction transaction(db);
        db.lock({kMonthsLock});
        db.execute(partition_statement(incoming->run()));
        transaction.commit();
    }
}

std::vector<Imported> import(Database& db, std::span<const IncomingBundle* const> bundles) {
    std::vector<Planned> all;
    std::vector<std::int64_t> keys;
    for (const auto* incoming : bundles) {
        all.push_back({.incoming = incoming, .result = {}, .plans = {}});
        keys.push_back(incoming->identity().host);
    }
    std::sort(keys.begin(), keys.end());
    Transaction transaction(db);
    db.lock(keys);
    for (auto& one : all) {
        look_up(db, one);
        if (!one.result.is_new) continue;
        plan(db, one);
        change(db, one);
    }
    for (std::size_t i = 0; i < histories().size(); ++i) insert(db, i, all);
    insert_runs(db, all);
    for (const auto& one : all) {
        if (one.result.is_new) note_host(db, one);
    }
    transaction.commit();
    std::vector<Imported> results;
    for (auto& one : all) results.push_back(std::move(one.result));
    return results;
}

}  // namespace qvhost::fleet
