#include "qvhost/finish/history.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "compare/growth.h"
#include "findings/rules.h"
#include "qvhost/finish/runs.h"
#include "text/utc.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace qvhost {

namespace {

constexpr std::time_t kWindow = std::time_t{findings::kNewsDays} * 24 * 3600;  // seconds
constexpr std::size_t kMostRuns = 100;  // that a beginning is looked for in

compare::Collection collection_of(const Store& store) {
    return {store.meta("host"),    store.meta("machine_id"), store.meta("os"),
            store.meta("kernel"),  store.meta("run_as"),     store.meta("qvhost"),
            store.meta("started"), store.meta("finished")};
}

// Nothing: it is damaged, or an older version's, which holds no verdict.
std::optional<compare::Side> read_run(const std::filesystem::path& run) {
    try {
        const Store store(LogDir(run).store(), Store::Mode::read);
        auto side = side_of(store);
        if (side.verdict.health.empty()) return std::nullopt;
        return side;
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
}

// Whether the run was within the window, by the name of its directory: runs/20261121T012040Z.
bool is_within_window(const std::filesystem::path& run, const std::string& now) {
    const auto latest = seconds_of_utc(now);
    std::tm parts{};
    const auto name = run.filename().string();
    if (!latest || !::strptime(name.c_str(), "%Y%m%dT%H%M%SZ", &parts)) return false;
    return *latest - ::timegm(&parts) <= kWindow;
}

}  // namespace

compare::Side side_of(const Store& store) {
    return {collection_of(store), read_inventory(store), read_verdict(store)};
}

findings::Past past_of(const Store& store, const LogDir& dir,
                       const inventory::Inventory& inventory) {
    const compare::Side now{collection_of(store), inventory, {}};
    findings::Past past;
    past.started = now.collection.started;
    const auto runs = earlier_runs(dir.path());
    if (runs.empty()) return past;
    // The oldest in the window says how much a counter grew; the newest knows what came since, and what was before.
    auto oldest = std::find_if(runs.rbegin(), runs.rend(), [&](const auto& run) {
        return is_within_window(run, now.collection.started);
    });
    std::vector<std::filesystem::path> compared{runs.front()};
    if (oldest != runs.rend() && *oldest != runs.front())
        compared.insert(compared.begin(), *oldest);
    for (const auto& run : compared) {
        const auto side = read_run(run);
        if (!side || compare::machines_of(*side, now) == compare::Machines::two) continue;
        for (auto& one : compare::grown_counters(*side, now)) {
            const bool is_known = std::any_of(
                past.grown.begin(), past.grown.end(), [&](const findings::GrownCounter& other) {
                    return other.entity == one.entity && other.growth.field == one.growth.field;
                });
            if (!is_known) past.grown.push_back(std::move(one));
        }
        const findings::EarlierRun earlier{side->collection.started, side->inventory,
                                           side->verdict};
        past.former_spares.merge(findings::former_spares_of(earlier, inventory));
        if (run == runs.front()) past.unchanged = findings::unchanged_since(earlier, inventory);
    }
    return past;
}

void add_first_seen(const Store& store, const LogDir& dir, const inventory::Inventory& inventory,
                    findings::Verdict& verdict) {
    auto runs = earlier_runs(dir.path());
    if (runs.empty()) return;  // an event has told of the beginning, or nobody knows of it
    if (runs.size() > kMostRuns) runs.resize(kMostRuns);
    const compare::Side now{collection_of(store), inventory, {}};
    auto run = runs.begin();
    findings::add_first_seen(
        store.meta("started"),
        [&]() -> std::optional<findings::EarlierVerdict> {
            while (run != runs.end()) {
                auto side = read_run(*run++);
                if (!side || compare::machines_of(*side, now) == compare::Machines::two) continue;
                return findings::EarlierVerdict{side->collection.started, std::move(side->verdict)};
            }
            return std::nullopt;
        },
        verdict.findings);
}

}  // namespace qvhost
