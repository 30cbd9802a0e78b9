// How the page's data files share a table's rows: none grows past what the page reads without a pause.
#include <nlohmann/json.hpp>

#include "page/data_file.h"
#include "page/event_data.h"
#include "page/table_data.h"
#include "place.h"
#include "verdict/inventory_tables.h"

using namespace qvhost;

namespace {

class DataFiles : public test::Place {
protected:
    using Rows = std::vector<std::size_t>;

    Store store(Store::Mode mode) const { return {dir / "report.sqlite", mode}; }
    Store new_store() const {
        std::filesystem::remove(dir / "report.sqlite");
        std::filesystem::remove_all(dir / "data");
        std::filesystem::create_directory(dir / "data");
        return store(Store::Mode::create);
    }

    // How many rows each file has that the overview of a table names.
    Rows rows_of(const nlohmann::ordered_json& table) const {
        Rows rows;
        for (const std::string file : table["chunks"]) {
            const auto script = test::content(dir / file);
            constexpr std::string_view kCount = R"({"count":)";
            const auto at = script.find(kCount);
            rows.push_back(std::stoul(script.substr(at + kCount.size())));
        }
        return rows;
    }

    Rows rows_of_table(std::size_t records, const std::string& text) const {
        {
            auto made = new_store();
            made.add_module("M", "M");
            made.add_table("M", "ROWS");
            for (std::size_t i = 0; i < records; ++i)
                made.add({"ROWS", "row", static_cast<int>(i), {{"a", "A", text}}});
            made.commit();
        }
        const auto read = store(Store::Mode::read);
        const auto module = read.modules().at(0);
        return rows_of(
            page::write_table(read, module, module.tables.at(0), "", dir / "data", "rows"));
    }

    Rows rows_of_events(std::size_t records, const std::string& text) const {
        {
            auto made = new_store();
            EventWriter events(made);
            for (std::size_t i = 0; i < records; ++i)
                events.add({{}, "kernel", {}, {}, inventory::Severity::info, {}, text});
            made.commit();
        }
        return rows_of(page::write_events(store(Store::Mode::read), dir / "data"));
    }
};

TEST_F(DataFiles, HaveOnlySoManyRows) {
    EXPECT_EQ(rows_of_table(page::kRowsAFile, "x"), Rows{page::kRowsAFile});
    EXPECT_EQ(rows_of_table(page::kRowsAFile + 1, "x"), (Rows{page::kRowsAFile, 1}));
    EXPECT_EQ(rows_of_events(page::kRowsAFile + 1, "x"), (Rows{page::kRowsAFile, 1}));
}

TEST_F(DataFiles, HaveOnlySoManyBytes) {
    const std::string half(page::kBytesAFile / 2, 'x');
    EXPECT_EQ(rows_of_table(3, half), (Rows{2, 1}));
    EXPECT_EQ(rows_of_events(3, half), (Rows{2, 1}));
}

}  // namespace
