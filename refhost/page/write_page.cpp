#include "page/write_page.h"

#include <sys/stat.h>

#include <algorithm>
#include <boost/algorithm/string/replace.hpp>
#include <cerrno>
#include <cstring>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <ostream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "files/new_file.h"
#include "files/read_beginning.h"
#include "page/assets.h"
#include "page/captures.h"
#include "page/data_file.h"
#include "page/event_data.h"
#include "page/table_data.h"
#include "report/json_text.h"
#include "report/verdict_json.h"
#include "store/declared_table.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace qvhost {

namespace fs = std::filesystem;
using nlohmann::ordered_json;

namespace page {
namespace {

constexpr std::size_t kMaxCaptureBytes = 1 << 20;  // shown of each capture
constexpr std::size_t kMaxCapturesBytes =
    64 << 20;  // written of all: a file with holes costs its sender nothing

// Makes an empty directory. A program that was killed may have left half a page there.
void make_directory(const fs::path& path) {
    fs::remove_all(path);
    if (::mkdir(path.c_str(), 0700) != 0)
        throw std::runtime_error(path.string() +
                                 ": cannot make the directory: " + std::strerror(errno));
}

// A part of a file name, from any text.
std::string file_stem(std::size_t number, const std::string& text) {
    std::string stem = std::to_string(number) + "-";
    for (const char c : text.substr(0, 40)) {
        const bool plain =
            (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
        stem += plain ? c : '_';
    }
    return stem;
}

ordered_json write_captures(const std::vector<Capture>& captures, const fs::path& log_dir,
                            const fs::path& data) {
    auto all = ordered_json::array();
    std::size_t room = kMaxCapturesBytes;
    for (const auto& capture : captures) {
        std::string file;
        std::size_t shown = 0;
        if (std::strcmp(capture.kind, "text") == 0 && capture.size > 0 && room > 0) {
            const auto text =
                read_beginning(log_dir / capture.name, std::min(room, kMaxCaptureBytes));
            const auto name = "capture-" + file_stem(all.size() + 1, capture.name) + ".js";
            std::string json;
            put_json_text(text, json);
            room -= std::min(room, json.size());
            write_new_file(data / name, data_script("capture", json));
            file = "data/" + name;
            shown = text.size();
        }
        all.push_back({{"name", capture.name},
                       {"size", capture.size},
                       {"kind", capture.kind},
                       {"data", file},
                       {"shown", shown},
                       {"commands", capture.commands}});
    }
    return all;
}

ordered_json meta_of(const Store& store) {
    auto meta = ordered_json::object();
    for (const char* key : {"host", "os", "kernel", "uptime_seconds", "run_as", "started",
                            "finished", "seconds", "recorded", "qvhost", "limits", "stand_ins"})
        meta[key] = store.meta(key);
    meta["status"] = store.status_text();
    return meta;
}

// What a text of JSON says of the overview, as one line, which a script needs.
void add_text(const char* key, const std::function<void(std::ostream&)>& write,
              std::string& overview) {
    std::ostringstream out;
    write(out);
    auto text = std::move(out).str();
    std::erase(text, '\n');  // between the list's entries
    overview.pop_back();
    overview.append(",\"").append(key).append("\":").append(text) += '}';
}

// The overview as JSON. A store without a verdict adds nothing: the page says so.
std::string with_verdict(const Store& store, const fs::path& data, ordered_json overview) {
    auto verdict = read_verdict(store);
    if (verdict.health.empty()) return json_line(overview);
    overview["health"] = json_of(verdict.health);
    overview["events"] = write_events(store, data);
    auto json = json_line(overview);
    add_text(
        "findings", [&](std::ostream& out) { put_findings(verdict.findings, out); }, json);
    verdict = {};
    // Without the fields that no capture tells.
    add_text(
        "inventory", [&](std::ostream& out) { put_inventory(read_inventory(store), false, out); },
        json);
    return json;
}

// The grid adds a style sheet while it runs. The page's policy admits only styles with this nonce.
std::string with_nonce(std::string_view html, std::string nonce) {
    std::random_device random;
    if (nonce.empty()) nonce = std::to_string(random()) + std::to_string(random());
    return boost::replace_all_copy(std::string(html), "@NONCE@", nonce);
}

}  // namespace
}  // namespace page

void write_page(const Store& store, const fs::path& report, const fs::path& log_dir,
                const std::set<std::string>& only, const std::string& nonce) {
    using namespace page;
    const auto data = report / "data";
    const auto assets = report / "assets";
    fs::remove(report / "index.html");
    make_directory(data);
    make_directory(assets);
    write_new_file(assets / "page.js", script());
    write_new_file(assets / "page.css", style());

    std::map<std::string, std::string> captures_of;  // table id -> file
    for (const auto& table : declared_tables(store)) captures_of[table.id] = table.capture;
    auto modules = ordered_json::array();
    std::size_t number = 0;
    for (const auto& module : store.modules()) {
        auto tables = ordered_json::array();
        for (const auto& table : module.tables) {
            ++number;
            if (!only.empty() && !only.contains(table.id)) continue;
            tables.push_back(write_table(store, module, table, captures_of[table.id], data,
                                         file_stem(number, table.id)));
        }
        if (!only.empty() && tables.empty()) continue;
        modules.push_back(
            {{"name", module.name}, {"display", module.display}, {"tables", std::move(tables)}});
    }

    auto facts = ordered_json::array();
    for (const auto& fact : store.facts()) {
        facts.push_back({{"label", fact.label}, {"value", fact.value}, {"source", fact.source}});
    }
    const auto commands = store.commands();
    auto runs = ordered_json::array();
    for (const auto& command : commands) {
        runs.push_back({{"text", command.text},
                        {"seconds", command.seconds.value_or(0)},
                        {"outcome", outcome(command)},
                        {"cut_off", was_cut_off(command)},
                        {"stderr", command.standard_error},
                        {"started", command.started.value_or("")}});
    }
    const auto captures = log_dir.empty() ? std::vector<Capture>{} : captures_in(log_dir, commands);
    ordered_json overview{{"apart", report.parent_path() != log_dir},
                          {"meta", meta_of(store)},
                          {"facts", std::move(facts)},
                          {"modules", std::move(modules)},
                          {"commands", std::move(runs)},
                          {"captures", write_captures(captures, log_dir, data)}};
    write_new_file(data / "overview.js",
                   data_script("overview", with_verdict(store, data, std::move(overview))));
    write_new_file(report / "index.html", with_nonce(html(), nonce));
}

}  // namespace qvhost
