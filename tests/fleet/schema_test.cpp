// The schema: every format is written down in formats/, and leads to today's.
#include "fleet/schema.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "fixture.h"
#include "fleet/migrate.h"

namespace test {
namespace {

using namespace qvhost::fleet;

std::filesystem::path file_of(int format, Dialect dialect) {
    return std::filesystem::path(QV_FORMATS) /
           (std::to_string(format) + (dialect == Dialect::sqlite ? ".sqlite" : ".postgresql") +
            ".sql");
}

std::string read(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

std::string joined(const std::vector<std::string>& statements) {
    std::string text;
    for (const auto& statement : statements) text += statement + ";\n";
    return text;
}

class SchemaTest : public FleetTest {};

// What a database of that format was, with a host in it.
void make(Database& db, int format) {
    db.execute(read(file_of(format, db.dialect())));
    db.execute("INSERT INTO fleet_format VALUES (" + std::to_string(format) + ")");
    db.execute(
        "INSERT INTO hosts (host, machine_id, serial, name, first_run, last_run)"
        " VALUES (5, 'id', 'SN', 'web1', 1793494800000, 1793494800000)");
    if (db.dialect() == Dialect::postgresql) db.execute(partition_statement(1793494800000));
    db.execute("INSERT INTO runs (host, run, status) VALUES (5, 1793494800000, 'complete')");
    db.execute(
        "INSERT INTO drives (host, digest, run, until, slot, model)"
        " VALUES (5, 17, 1793494800000, 9223372036854775807, 3, 'EX4000')");
}

TEST_P(SchemaTest, OfTodayIsWrittenDown) {
    const auto today = joined(table_statements(GetParam()));
    const auto file = file_of(kFormat, GetParam());
    if (read(file) == today) return;
    const auto actual = std::filesystem::temp_directory_path() / file.filename();
    std::ofstream(actual) << today;
    FAIL() << "The tables are not those of " << file << "; today's are in " << actual
           << ".\nA change that is out needs a format of its own and a migration.";
}

TEST_P(SchemaTest, EveryFormatLeadsToTodays) {
    for (int format = 1; format <= kFormat; ++format) {
        const auto place = new_place(GetParam(), dir());
        {
            const auto db = open_database(place, true);
            make(*db, format);
            // A database of today has its views; those of earlier ones may be others.
            for (const auto& view : view_statements()) {
                if (format == kFormat) db->execute(view);
            }
            prepare_schema(*db, false);
            for (const auto& table : tables()) {
                for (const auto& column : table.indexed)
                    EXPECT_TRUE(db->has(table.name + "_" + column)) << format << ": " << column;
            }
        }
        // All columns of today are there, the host is, and it can have another run.
        EXPECT_NE(dump(place, "current_drives").find(",3,,"), std::string::npos)
            << dump(place, "current_drives");
        EXPECT_EQ(dump(place, "fleet_format"), "format\r\n" + std::to_string(kFormat) + "\r\n");
        const auto result =
            import_into(place, {bundle(healthy_report("web1", "2026-11-02T00:00:00Z"),
                                       "web" + std::to_string(format))});
        EXPECT_EQ(result.summary.imported, 1u) << result.err;
        EXPECT_NE(dump_views(place).find("EX4000"), std::string::npos);
    }
}

TEST_P(SchemaTest, OfALaterFormatIsRefused) {
    open_database(place(), true);
    {
        const auto db = open_database(place(), true);
        prepare_schema(*db, true);
        db->execute("UPDATE fleet_format SET format = " + std::to_string(kFormat + 1));
    }
    const auto db = open_database(place(), false);
    EXPECT_THROW(prepare_schema(*db, true), std::runtime_error);
}

TEST_P(SchemaTest, IsMadeByAnImportAlone) {
    { open_database(place(), true)->execute("SELECT 1"); }
    const auto db = open_database(place(), false);
    EXPECT_THROW(prepare_schema(*db, false), std::runtime_error);
    EXPECT_FALSE(db->has("hosts"));
    prepare_schema(*db, true);
    EXPECT_TRUE(db->has("hosts"));
}

TEST(Schema, EveryKeyBeginsWithTheHost) {
    for (const auto& table : tables()) {
        if (table.name == "fleet_format") continue;
        EXPECT_EQ(table.columns[0].name, "host") << table.name;
        EXPECT_GE(table.keys, 1u);
    }
}

INSTANTIATE_TEST_SUITE_P(Sqlite, SchemaTest, testing::Values(Dialect::sqlite));
INSTANTIATE_TEST_SUITE_P(Postgresql, SchemaTest, testing::Values(Dialect::postgresql));

}  // namespace
}  // namespace test
