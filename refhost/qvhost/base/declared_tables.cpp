#include "qvhost/base/declared_tables.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "qvhost/base/environment.h"
#include "qvhost/base/json_words.h"

namespace qvhost {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr int kFormat = 1;
constexpr std::uintmax_t kMostBytes = 4u << 20;
constexpr int kMostLevels = 16;  // of arrays and objects in one another

std::string whole_text(const fs::path& file) {
    if (!fs::is_regular_file(file)) throw std::runtime_error("it is no file");
    if (fs::file_size(file) > kMostBytes) throw std::runtime_error("it is too large");
    std::ifstream in(file, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(in), {});
    if (!in) throw std::runtime_error(std::strerror(errno));
    return text;
}

json parsed(const std::string& text) {
    return json::parse(text, [](int depth, json::parse_event_t, const json&) {
        if (depth > kMostLevels) throw std::runtime_error("it is nested too deep");
        return true;
    });
}

const json& list(const json& object, const char* name) {
    const auto found = object.is_object() ? object.find(name) : object.end();
    if (found == object.end() || !found->is_array())
        throw std::runtime_error(std::string("there is no list of ") + name);
    return *found;
}

// Empty if there is none.
std::string text(const json& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end()) return "";
    if (!found->is_string()) throw std::runtime_error(std::string(name) + " is no text");
    return found->get<std::string>();
}

// Empty if there are none.
std::vector<std::string> texts(const json& object, const char* name) {
    std::vector<std::string> found;
    if (!object.contains(name)) return found;
    for (const auto& one : list(object, name)) {
        if (!one.is_string()) throw std::runtime_error(std::string(name) + " holds no text");
        found.push_back(one.get<std::string>());
    }
    return found;
}

// Whether the name is that of a file in a directory or in a directory below it.
bool stays_below(const fs::path& name) {
    return name.is_relative() && std::find(name.begin(), name.end(), "..") == name.end();
}

bool is_file_name(const fs::path& name) {
    return name.has_filename() && !name.has_parent_path() && name != "." && name != "..";
}

DeclaredTable declared(const json& object) {
    if (!object.is_object()) throw std::runtime_error("a table is no object");
    DeclaredTable table{
        .id = text(object, "id"),
        .title = text(object, "title"),
        .filled = text(object, "filled"),
        .tool = text(object, "tool"),
        .in_qv_tools = text(object, "tool_place") == "qv_tools",
        .command = text(object, "command"),
        .capture = text(object, "capture"),
        .log_label = text(object, "log_label"),
        .not_asked = text(object, "not_asked"),
        .gates = texts(object, "gates"),
    };
    if (table.id.empty()) throw std::runtime_error("a table has no id");
    if (!stays_below(table.capture))
        throw std::runtime_error("the capture of " + table.id + " is not in the log directory");
    return table;
}

VendorTool vendor_tool(const json& object) {
    if (!object.is_object()) throw std::runtime_error("a tool is no object");
    VendorTool tool{.name = text(object, "name"), .files = {}};
    for (const auto& file : list(object, "files")) {
        if (!file.is_string() || !is_file_name(file.get<std::string>()))
            throw std::runtime_error("a file of a tool has no name");
        tool.files.push_back(file.get<std::string>());
    }
    return tool;
}

}  // namespace

DeclaredTables read_declared_tables(const fs::path& file) {
    try {
        const auto root = parsed(whole_text(file));
        const auto& modules = list(root, "modules");
        const auto format = root.find("format");
        if (format == root.end() || *format != kFormat)
            throw std::runtime_error("it is of another version");
        DeclaredTables read;
        for (const auto& module : modules) {
            for (const auto& table : list(module, "tables")) read.tables.push_back(declared(table));
        }
        if (root.contains("tools")) {
            for (const auto& tool : list(root, "tools")) read.tools.push_back(vendor_tool(tool));
        }
        return read;
    } catch (const json::exception& error) {
        throw std::runtime_error(file.string() + ": " + json_words(error));
    } catch (const std::exception& error) {
        throw std::runtime_error(file.string() + ": " + error.what());
    }
}

DeclaredTables tables_declared_by(const fs::path& plugin) {
    std::error_code error;
    auto place = fs::canonical(plugin, error);  // a link to a plug-in lies anywhere
    if (error) place = fs::absolute(plugin);
    const auto file = place.parent_path().parent_path() / "share" / "qvhost" / "tables.json";
    if (!fs::exists(file, error)) return {};
    try {
        return read_declared_tables(file);
    } catch (const std::runtime_error& problem) {
        return {.tables = {}, .tools = {}, .problem = problem.what()};
    }
}

std::vector<VendorTool> vendor_tools_of(const fs::path& plugin) {
    if (!plugin.empty()) {
        if (auto declared = tables_declared_by(plugin); !declared.tools.empty())
            return std::move(declared.tools);
    }
    return tables_declared_by(installed_plugin()).tools;
}

}  // namespace qvhost
