#include "qvfleet/commands.h"

#include <charconv>
#include <iostream>

#include "fleet/forget.h"
#include "fleet/migrate.h"
#include "fleet/status.h"
#include "show/visible.h"

namespace qvhost::fleet {

namespace {

// A fleet that is there.
std::unique_ptr<Database> open_fleet(const Options& options) {
    auto db = open_database(options.place, false);
    prepare_schema(*db, false);
    return db;
}

// "90min", "36h", "8d", "2w"
Milliseconds duration_of(const std::string& text) {
    constexpr struct {
        std::string_view unit;
        Milliseconds length;
    } kUnits[] = {
        {"min", 60'000     },
        {"h",   3'600'000  },
        {"d",   86'400'000 },
        {"w",   604'800'000}
    };
    constexpr Milliseconds kMost = 100'000;
    Milliseconds number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const std::string_view unit(end, static_cast<std::size_t>(text.data() + text.size() - end));
    for (const auto& [name, length] : kUnits) {
        if (error == std::errc() && unit == name && number >= 0 && number <= kMost)
            return number * length;
    }
    throw WrongUse("--silent-after: \"" + text + "\" is no time such as 90min, 36h, 8d or 2w");
}

Milliseconds time_given(const char* option, const std::string& text) {
    if (const auto time = time_of(text)) return *time;
    throw WrongUse(std::string(option) + ": \"" + text +
                   "\" is no time such as 2026-11-22 or 2026-11-22T12:00:00Z");
}

std::string counted(std::size_t count, const char* one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

}  // namespace

int import_command(const Options& options) {
    auto import = options.import;
    import.place = options.place;
    const auto [imported, there, skipped, rows, stored] =
        import_bundles(import, std::cout, std::cerr);
    std::cout << counted(imported, "run") << " imported, " << there << " there already, " << skipped
              << " skipped; " << counted(rows, "row") << " read, " << stored << " stored\n";
    return skipped == 0 ? kDone : imported + there == 0 ? kCouldNot : kSomeSkipped;
}

int status_command(const Options& options) {
    const auto silent_after = duration_of(options.silent_after);
    const auto time = options.as_of.empty() ? now() : time_given("--as-of", options.as_of);
    const auto db = open_fleet(options);
    const auto status = status_of(*db, time, silent_after);
    std::vector<std::vector<std::string>> rows;
    for (const auto& host : status.hosts)
        rows.push_back({host.state + (host.is_silent ? ", silent" : ""), host.name,
                        age_text(host.age), std::to_string(host.findings), host.worst});
    print_texts({"state", "host", "age", "findings", "worst"}, rows, options.printing, std::cout);
    if (status.replaced > 0)
        std::cerr << "qvfleet: " << counted(status.replaced, "host")
                  << " left out that got a new board or a new installation; \"qvfleet export "
                     "host_changes\" tells which\n";
    return kDone;
}

int query_command(const Options& options) {
    print_query(*open_fleet(options), options.sql, options.printing, std::cout);
    return kDone;
}

int export_command(const Options& options) {
    print_relation(*open_fleet(options), options.relation, options.printing, std::cout);
    return kDone;
}

int forget_command(const Options& options) {
    if (options.forgotten.empty() && options.before.empty())
        throw WrongUse("forget: name a HOST, or give --before");
    const auto db = open_fleet(options);
    if (!options.before.empty()) {
        const auto gone = forget_runs_before(*db, time_given("--before", options.before));
        std::cout << counted(gone, "run") << " forgotten\n";
        return kDone;
    }
    std::vector<std::int64_t> hosts;
    for (const auto& name : options.forgotten) {
        const auto found = hosts_named(*db, name);
        if (found.empty()) throw std::runtime_error("there is no host \"" + name + "\"");
        if (found.size() > 1) {
            std::string keys;
            for (const auto key : found) keys += " " + std::to_string(key);
            throw std::runtime_error("\"" + name +
                                     "\" are several hosts; name one by its key:" + keys);
        }
        hosts.push_back(found[0]);
    }
    forget_hosts(*db, hosts);
    std::cout << counted(hosts.size(), "host") << " forgotten\n";
    return kDone;
}

}  // namespace qvhost::fleet
