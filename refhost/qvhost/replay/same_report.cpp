#include "qvhost/replay/same_report.h"

#include <algorithm>
#include <boost/algorithm/string/replace.hpp>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "qvhost/base/log_dir.h"
#include "store/store.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

using nlohmann::ordered_json;

// A text without the places of its run: the log directory, and the throw-away one that it ran from.
std::string without_places(std::string text, const std::string& log_dir) {
    boost::replace_all(text, log_dir, "{LOG}");
    static const std::regex place("[^ '\"]*/qvhost-(run|replay)-\\w{6}/");
    return text.find("/qvhost-r") == std::string::npos ? text
                                                       : std::regex_replace(text, place, "{RUN}/");
}

struct Section {
    std::string name;
    std::vector<std::string> lines;
};

std::vector<Section> sections_of(const fs::path& log_dir) {
    const LogDir dir(log_dir);
    const Store store(dir.store(), Store::Mode::read);
    const auto place = store.meta("log_dir");
    std::vector<Section> sections{
        {"commands", {}}
    };
    for (const auto& one : store.commands()) {
        // The layer ends a driver that it has started; a replay starts none.
        if (one.origin == "host" && one.text.starts_with("service ")) continue;
        const ordered_json line = {
            one.origin,     one.text,     one.exit.value_or(-1), one.signal.value_or(-1),
            one.stopped_by, one.captures, one.standard_error,    one.started.has_value()};
        sections.front().lines.push_back(without_places(
            line.dump(-1, ' ', false, ordered_json::error_handler_t::replace), place));
    }
    std::ifstream in(dir.json());
    if (!in) throw std::runtime_error(dir.json().string() + ": cannot be read");
    auto report = ordered_json::parse(in);
    for (const char* name : {"modules", "records", "inventory", "findings", "health"}) {
        sections.push_back({name, {}});
        for (const auto& [key, one] : report[name].items()) {
            if (one.is_array()) {
                for (const auto& entity : one)
                    sections.back().lines.push_back(
                        without_places(key + " " + entity.dump(), place));
            } else {
                sections.back().lines.push_back(without_places(one.dump(), place));
            }
        }
    }
    sections.push_back({"machine", {}});
    for (const char* name : {"host", "machine_id", "os", "kernel", "uptime_seconds", "status"})
        sections.back().lines.push_back(name + (" " + report["collection"][name].dump()));
    return sections;
}

}  // namespace

std::vector<std::string> differences(const fs::path& original, const fs::path& replayed) {
    const auto before = sections_of(original), after = sections_of(replayed);
    std::vector<std::string> found;
    for (std::size_t i = 0; i < before.size(); ++i) {
        const auto& one = before[i].lines;
        const auto& other = after[i].lines;
        const auto [at, there] = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
        if (at == one.end() && there == other.end()) continue;
        const auto text = [](auto line, auto end) {
            return line == end ? std::string("nothing") : *line;
        };
        found.push_back(before[i].name + ", the first difference: " + text(at, one.end()) +
                        " was there, and the replay gave " + text(there, other.end()));
    }
    return found;
}

}  // namespace qvhost
