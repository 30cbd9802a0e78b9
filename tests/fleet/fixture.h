// What the tests of a fleet have in common: a database of either kind, empty for each test.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "files/temporary_directory.h"
#include "fleet/database.h"
#include "fleet/import_bundles.h"
#include "reports.h"

namespace test {

// The place of a new database without tables.
std::string new_place(qvhost::fleet::Dialect dialect, const std::filesystem::path& dir);

// All rows of all tables, or those of one table or view, as CSV.
std::string dump(const std::string& place);
std::string dump(const std::string& place, const std::string& relation);
std::string dump_views(const std::string& place);

struct Import {
    qvhost::fleet::ImportSummary summary;
    std::string out, err;
};
Import import_into(const std::string& place, const std::vector<std::filesystem::path>& bundles,
                   unsigned jobs = 2);

// With SQLite, then with PostgreSQL.
class FleetTest : public testing::TestWithParam<qvhost::fleet::Dialect> {
protected:
    std::filesystem::path dir() const { return dir_.path(); }
    std::string place() {
        if (place_.empty()) place_ = new_place(GetParam(), dir());
        return place_;
    }
    std::filesystem::path bundle(const Report& report, const std::string& name) const {
        return bundle_of(report, dir(), name);
    }
    Import import(const std::vector<std::filesystem::path>& bundles) {
        return import_into(place(), bundles);
    }
    std::string rows(const std::string& relation) { return dump(place(), relation); }
    // What a statement gives, as CSV.
    std::string answer(const std::string& sql);

private:
    qvhost::TemporaryDirectory dir_{"qvfleet-test"};
    std::string place_;
};

}  // namespace test
