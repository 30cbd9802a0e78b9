// A report in other formats: every record is in each of them, as it was.
//     input: a byte; even: entries of a store, odd: rows that are put into a sound one
#include "qvhost/present/export.h"

#include <csv.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

#include "any_record.h"
#include "check.h"
#include "odd_rows.h"
#include "outcome.h"
#include "page_data.h"
#include "rows/csv_writer.h"
#include "scratch.h"
#include "sound_store.h"
#include "store/store.h"

using namespace qvhost;
namespace fs = std::filesystem;

namespace {

// Returns the records, in order.
std::vector<Record> fill(Store& store, fuzz::Pieces& input) {
    std::vector<Record> written;
    while (!input.at_end()) {
        switch (input.byte() % 6) {
            case 0: store.add_module(fuzz::text(input), fuzz::text(input)); break;
            case 1: store.add_table(fuzz::text(input), fuzz::text(input)); break;
            case 2: store.set_layout(fuzz::text(input), fuzz::layout(input)); break;
            case 3: store.set_reason(fuzz::text(input), fuzz::text(input)); break;
            default: store.add(written.emplace_back(fuzz::record(input)));
        }
    }
    store.commit();
    return written;
}

bool is_line_end(char c) { return c == '\r' || c == '\n'; }

// Without line ends at its end, and blanks among them.
std::string without_line_ends(const std::string& text) {
    auto kept = text.size();
    for (auto end = text.size(); end > 0; --end) {
        const char c = text[end - 1];
        if (!is_line_end(c) && c != ' ' && c != '\t') break;
        if (is_line_end(c)) kept = end - 1;
    }
    return text.substr(0, kept);
}

std::string cell(const Record& record, const std::string& id, bool raw) {
    for (const auto& property : record.properties) {
        if (property.id != id) continue;
        if (const auto* number = std::get_if<int>(&property.value)) return std::to_string(*number);
        const auto& text = std::get<std::string>(property.value);
        return raw ? text : formula_free(without_line_ends(text));
    }
    return "";
}

std::string guarded(const std::string& text) {
    return cell({"", "", -1, {{"", "", text}}}, "", false);
}

void expect_csv(const fs::path& file, const std::string& table, const std::vector<Record>& written,
                bool raw) {
    const fuzz::Printed printed;
    export_report({file, "csv", {}, {table}, raw});
    const auto rows = test::read_csv(printed.text());
    auto row = rows.begin();
    fuzz::expect(row != rows.end(), "there is a row of names");
    const auto names = *row++;
    for (const auto& record : written) {
        if (record.table != table) continue;
        fuzz::expect(row != rows.end() && row->size() == names.size(),
                     "a record is a row of as many fields as there are names");
        std::vector<std::string> seen;
        for (const auto& property : record.properties) {
            if (std::find(seen.begin(), seen.end(), property.id) != seen.end()) continue;
            seen.push_back(property.id);
            const auto label = raw ? property.id : guarded(property.id);
            const auto name = std::find(names.begin(), names.end(), label);
            fuzz::expect(name != names.end(), "every property has a column");
            if (std::count(names.begin(), names.end(), label) > 1) continue;  // which one?
            fuzz::expect_same((*row)[static_cast<std::size_t>(name - names.begin())],
                              cell(record, property.id, raw), "a field is the value");
        }
        ++row;
    }
    fuzz::expect(row == rows.end(), "there is no row but the records'");
}

void expect_json(const fs::path& file, std::size_t records) {
    const fuzz::Printed printed;
    export_report({file, "json", {}, {}, false});
    const auto json = nlohmann::json::parse(printed.text(), nullptr, false);
    fuzz::expect(!json.is_discarded() && json["records"].size() == records,
                 "report.json is JSON and has every record");
}

void expect_page(const fs::path& page, std::size_t records) {
    std::size_t found = 0;
    std::size_t files = 1;
    const auto overview = fuzz::handed_over(page / "data" / "overview.js", "overview");
    for (const auto& module : overview["modules"]) {
        for (const auto& table : module["tables"]) {
            for (const std::string chunk : table["chunks"]) {
                const auto rows = fuzz::handed_over(page / chunk, "rows");
                const std::size_t count = rows["count"];
                fuzz::expect(rows["columns"].size() == table["columns"].size(),
                             "every column has its values");
                for (const auto& column : rows["columns"])
                    fuzz::expect(column.size() == count, "a column has a value for every record");
                found += count;
                ++files;
            }
        }
    }
    fuzz::expect(found == records, "every record is in the page");
    fuzz::expect(
        static_cast<std::size_t>(std::distance(fs::directory_iterator(page / "data"), {})) == files,
        "the page names each of its files once");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    static const std::string sound = fuzz::sound_store(scratch / "sound.sqlite");
    const fs::path file = scratch / "report.sqlite";
    const fs::path out = scratch / "out";
    fs::remove(file);
    fs::remove_all(out);
    fuzz::Pieces input(fuzz::text_of(data, size));

    if (input.byte() % 2 == 0) {
        std::vector<Record> written;
        {
            Store store(file, Store::Mode::create);
            written = fill(store, input);
        }
        for (const auto& module : Store(file, Store::Mode::read).modules()) {
            for (const auto& table : module.tables) {
                if (table.id.empty()) continue;  // no option names it
                expect_csv(file, table.id, written, true);
                expect_csv(file, table.id, written, false);
            }
        }
        expect_json(file, written.size());
        export_report({file, "html", out, {}, false});
        expect_page(out, written.size());
        return 0;
    }

    fuzz::write_file(file, sound);
    fuzz::put_rows(file, input);
    for (const char* format : {"csv", "html", "json"}) {
        const fuzz::Printed printed;
        const auto failure = fuzz::told([&] { export_report({file, format, out, {}, false}); });
        fuzz::expect(failure.empty() || failure.starts_with(scratch.path().string()),
                     "a failure names the file");
        fuzz::expect(failure.empty() == fs::exists(out), "it is there all or not at all");
        fs::remove_all(out);
    }
    return 0;
}
