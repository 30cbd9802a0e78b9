#include "fixture.h"

#include <pqxx/pqxx>

#include "cluster.h"
#include "fleet/migrate.h"
#include "fleet/print.h"
#include "fleet/schema.h"

namespace test {

using namespace qvhost::fleet;

std::string new_place(Dialect dialect, const std::filesystem::path& dir) {
    static int made = 0;
    const auto name = "fleet" + std::to_string(++made);
    if (dialect == Dialect::sqlite) return dir / (name + ".sqlite");
    pqxx::connection connection(cluster().administrator());
    pqxx::nontransaction(connection)
        .exec("CREATE SCHEMA " + name + "; GRANT USAGE, CREATE ON SCHEMA " + name + " TO fleet");
    return cluster().role_in(name);
}

std::string dump(const std::string& place, const std::string& relation) {
    const auto db = open_database(place, false);
    prepare_schema(*db, false);
    std::ostringstream out;
    print_relation(*db, relation, {.format = "csv", .raw = true}, out);
    return out.str();
}

std::string dump(const std::string& place) {
    std::string all;
    for (const auto& table : tables()) all += table.name + "\n" + dump(place, table.name);
    return all;
}

std::string dump_views(const std::string& place) {
    std::string all;
    for (const auto& view : views()) all += view.name + "\n" + dump(place, view.name);
    return all;
}

Import import_into(const std::string& place, const std::vector<std::filesystem::path>& bundles,
                   unsigned jobs) {
    std::ostringstream out;
    std::ostringstream err;
    const auto summary = import_bundles({.bundles = bundles,
                                         .place = place,
                                         .jobs = jobs,
                                         .reconnect_timeout = std::chrono::minutes(5)},
                                        out, err);
    return {summary, out.str(), err.str()};
}

std::string FleetTest::answer(const std::string& sql) {
    std::ostringstream out;
    print_query(*open_database(place(), false), sql, {.format = "csv", .raw = true}, out);
    return out.str();
}

}  // namespace test
