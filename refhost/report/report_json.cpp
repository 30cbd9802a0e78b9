#include "report/report_json.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "files/new_file.h"
#include "report/json_text.h"
#include "report/verdict_json.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace qvhost {

namespace {

using nlohmann::ordered_json;

ordered_json layout_of(const Layout& layout) {
    if (const auto* columns = std::get_if<ColumnLayout>(&layout)) {
        return {
            {"kind",    "columns"       },
            {"headers", columns->headers},
            {"width",   columns->width  },
            {"count",   columns->count  }
        };
    }
    if (const auto* rows = std::get_if<RowLayout>(&layout)) {
        return {
            {"kind",    "rows"       },
            {"headers", rows->headers},
            {"widths",  rows->widths },
            {"flag",    rows->flag   }
        };
    }
    return nullptr;
}

std::vector<std::string> lines_in(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// Which tools scripts stood in for, and which files answered for vendors' tools ("BUILD FILE" lines), if the
// collection had a compatibility layer.
void put_compatibility(const Store& store, std::ostream& out) {
    const auto stand_ins = lines_in(store.meta("stand_ins"));
    if (stand_ins.empty()) return;
    auto tools = ordered_json::object();
    for (const auto& line : lines_in(store.meta("vendor_tools"))) {
        const auto blank = line.find(' ');
        if (blank != std::string::npos) tools[line.substr(0, blank)] = line.substr(blank + 1);
    }
    out << "\"compatibility\":"
        << json_line({
               {"stand_ins",    stand_ins},
               {"vendor_tools", tools    }
    })
        << ",\n";
}

// Which machine, when, by whom. What is not known is null.
ordered_json collection_of(const Store& store) {
    const auto known = [&](const char* key) {
        const auto value = store.meta(key);
        return value.empty() ? ordered_json() : ordered_json(value);
    };
    const auto uptime = store.meta("uptime_seconds");
    long seconds = 0;
    const auto [end, error] =
        std::from_chars(uptime.data(), uptime.data() + uptime.size(), seconds);
    // clang-format off
    return {
        {"host",           known("host")},
        {"machine_id",     known("machine_id")},
        {"os",             known("os")},
        {"kernel",         known("kernel")},
        {"uptime_seconds", error == std::errc() ? ordered_json(seconds) : ordered_json()},
        {"run_as",         known("run_as")},
        {"started",        known("started")},
        {"finished",       known("finished")},
        {"status",         store.meta("status") == "complete" ? "complete" : "incomplete"},
        {"version",        known("qvhost")},
    };
    // clang-format on
}

// One a line.
void put_list(const ordered_json& list, std::ostream& out) {
    out << '[';
    const char* separator = "\n";
    for (const auto& one : list) {
        out << separator << json_line(one);
        separator = ",\n";
    }
    out << ']';
}

void put_verdict(const Store& store, std::ostream& out) {
    const auto verdict = read_verdict(store);
    out << "\"health\":";
    put_list(json_of(verdict.health), out);
    out << ",\n\"findings\":";
    put_findings(verdict.findings, out);
    out << ",\n\"inventory\":";
    put_inventory(read_inventory(store), true, out);
}

// Records of a table follow each other: what their properties begin with is written once for all of them.
class RecordWriter {
public:
    void put(const Record& record, std::string& json) {
        if (!same_kinds(record.properties, kinds_)) learn(record.properties);
        json += R"({"table":)";
        put_json_text(record.table, json);
        json += R"(,"name":)";
        put_json_text(record.name, json);
        json += R"(,"index":)" + std::to_string(record.index) + R"(,"properties":[)";
        for (std::size_t i = 0; i < record.properties.size(); ++i) {
            json += beginnings_[i];
            const auto& value = record.properties[i].value;
            if (const auto* text = std::get_if<std::string>(&value)) {
                put_json_text(*text, json);
            } else {
                json += std::to_string(std::get<int>(value));
            }
            json += '}';
        }
        json += "]}";
    }

private:
    void learn(const std::vector<Property>& properties) {
        kinds_ = properties;
        beginnings_.clear();
        const char* separator = "";
        for (const auto& [id, display, value] : properties) {
            std::string json = separator;
            json += R"({"id":)";
            put_json_text(id, json);
            json += R"(,"display":)";
            put_json_text(display, json);
            json += R"(,"value":)";
            beginnings_.push_back(std::move(json));
            separator = ",";
        }
    }

    std::vector<Property> kinds_;
    std::vector<std::string> beginnings_;  // ,{"id":"item1","display":"Time","value":
};

}  // namespace

void write_report_json(const Store& store, std::ostream& out) {
    out << "{\"format\":" << kReportFormat
        << ",\n\"collection\":" << json_line(collection_of(store)) << ",\n";
    put_compatibility(store, out);
    put_verdict(store, out);
    out << ",\n\"modules\":[";
    const char* module_separator = "\n";
    for (const auto& module : store.modules()) {
        out << module_separator << "{\"name\":" << json_line(module.name)
            << ",\"display\":" << json_line(module.display) << ",\"tables\":[";
        module_separator = ",\n";
        const char* table_separator = "\n";
        for (const auto& table : module.tables) {
            ordered_json json{
                {"id",     table.id               },
                {"layout", layout_of(table.layout)}
            };
            if (!table.reason.empty())
                json[table.records > 0 ? "partial" : "reason"] = table.reason;
            out << table_separator << json_line(json);
            table_separator = ",\n";
        }
        out << "]}";
    }
    out << "],\n\"records\":[";
    const char* separator = "\n";
    constexpr std::size_t kBlock = 65536;
    std::string json;
    RecordWriter writer;
    store.each_record([&](const Record& record) {
        json += separator;
        writer.put(record, json);
        separator = ",\n";
        if (json.size() < kBlock) return;
        out << json;
        json.clear();
    });
    out << json << "\n]}\n";
}

void write_report_json(const Store& store, const std::string& path) {
    replace_file(path, [&](std::ostream& out) { write_report_json(store, out); });
}

}  // namespace qvhost
