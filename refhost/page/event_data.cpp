#include "page/event_data.h"

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "files/new_file.h"
#include "page/data_file.h"
#include "report/json_text.h"
#include "store/typed_table.h"

namespace qvhost::page {

using nlohmann::ordered_json;

namespace {

struct Shown {
    TypedColumn column;
    const char* label;
    bool repeats;  // the same few values again and again: written once a file
};

constexpr auto kShown = std::to_array<Shown>({
    {{"time", ColumnType::text}, "Time", false},
    {{"time_utc", ColumnType::text}, "Time (UTC)", true},
    {{"severity", ColumnType::text}, "Severity", true},
    {{"source", ColumnType::text}, "Source", true},
    {{"subject", ColumnType::text}, "Subject", true},
    {{"text", ColumnType::text}, "Event", false},
    {{"capture", ColumnType::text}, "Capture", true},
    {{"line", ColumnType::integer}, "Line", false},
});

constexpr std::size_t kCapture = 6;  // its place in that table

std::string json_cell(const TypedValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        std::string json;
        put_json_text(*text, json);
        return json;
    }
    if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
    return "null";
}

void put(std::string& list, const std::string& json) {
    if (!list.empty()) list += ',';
    list += json;
}

// One column of one file: [VALUE, ...], or {"words": [VALUE, ...], "at": [INDEX OF A WORD, ...]}.
class Cells {
public:
    explicit Cells(bool repeats) : repeats_(repeats) {}

    void add(const TypedValue& value) {
        auto json = json_cell(value);
        if (!repeats_) return put(values_, json);
        const auto [known, is_new] = places_.try_emplace(std::move(json), places_.size());
        if (is_new) put(words_, known->first);
        put(values_, std::to_string(known->second));
    }

    std::size_t bytes() const { return values_.size() + words_.size(); }

    // The cells so far. The next file's begin empty.
    std::string take() {
        auto json = "[" + std::exchange(values_, {}) + "]";
        if (!repeats_) return json;
        places_.clear();
        return R"({"words":[)" + std::exchange(words_, {}) + R"(],"at":)" + json + "}";
    }

private:
    bool repeats_;
    std::string values_;
    std::string words_;
    std::unordered_map<std::string, std::size_t> places_;
};

}  // namespace

ordered_json write_events(const Store& store, const std::filesystem::path& data) {
    std::vector<TypedColumn> columns;
    std::vector<Cells> cells;
    auto heads = ordered_json::array();
    for (const auto& [column, label, repeats] : kShown) {
        columns.push_back(column);
        cells.emplace_back(repeats);
        heads.push_back({{"id", column.name}, {"label", label}, {"width", 0}});
    }
    std::size_t records = 0;
    std::size_t rows = 0;  // of the file that is being made
    std::set<std::string> captures;
    auto files = ordered_json::array();
    const auto write = [&] {
        auto json = R"({"count":)" + std::to_string(rows) + R"(,"names":[[)" +
                    std::to_string(rows) + R"(,"",-1]],"columns":[)";
        const char* separator = "";
        for (auto& column : cells) {
            json.append(std::exchange(separator, ",")).append(column.take());
        }
        const auto name = "events-" + std::to_string(files.size() + 1) + ".js";
        write_new_file(data / name, data_script("rows", json + "]}"));
        files.push_back("data/" + name);
        rows = 0;
    };
    each_typed_row(store, "events", columns, [&](const std::vector<TypedValue>& row) {
        std::size_t bytes = 0;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            cells[i].add(row[i]);
            bytes += cells[i].bytes();
        }
        if (const auto* capture = std::get_if<std::string>(&row[kCapture]))
            captures.insert(*capture);
        ++records;
        if (++rows == kRowsAFile || bytes >= kBytesAFile) write();
    });
    if (rows > 0) write();
    return {{"id", "events"},      {"title", "Events"},        {"module", ""},
            {"kind", "rows"},      {"columns", heads},         {"records", records},
            {"reason", ""},        {"chunk_rows", kRowsAFile}, {"chunks", std::move(files)},
            {"captures", captures}};
}

}  // namespace qvhost::page
