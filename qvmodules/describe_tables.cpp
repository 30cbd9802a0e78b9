// Prints what the modules declare of their tables, while the project is built:
//     describe_tables json      share/qvhost/tables.json, for programs
//     describe_tables markdown  docs/tables.md, for people
// Fails if two tables have one id, or if a table's tool is not among the vendors' although it is run from
// their folder.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>

#include "declared_modules.h"
#include "file/table.h"
#include "tools/vendor_tools.h"

using namespace marlox::repository;
using capture::Column;
using capture::Filled;
using capture::Layout;
using capture::Module;
using capture::Table;

namespace {

using Json = nlohmann::ordered_json;

const char* filled_word(Filled filled) {
    switch (filled) {
        case Filled::always: return "always";
        case Filled::never: return "never";
        case Filled::not_on_linux: return "not on Linux";
        case Filled::pmc: return "pmc";
    }
    return "";
}

const char* tool_place(const Table& table) {
    if (table.source.tool.empty()) return "";
    return table.source.in_qv_tools() ? "qv_tools" : "search path";
}

unsigned width_of(const Column& column, const Table& table) {
    return column.width > 0 ? column.width : table.layout.width;
}

Json described(const Column& column, const Table& table) {
    Json json = {
        {"id",    column.id      },
        {"label", column.label   },
        {"width", width_of(column, table)},
        {"means",       column.means               },
    };
    if (!column.unlisted.empty()) json["unlisted"] = column.unlisted;
    return json;
}

Json gates_of(const Table& table, const Module& module) {
    Json gates = Json::array();
    if (table.filled != Filled::pmc)
        gates = module.gates;  // else a host calls the operation by itself
    for (const auto gate : table.source.gates) gates.push_back(gate);
    return gates;
}

Json described(const Table& table, const Module& module) {
    Json columns = Json::array();
    for (const Column& column : table.columns) columns.push_back(described(column, table));
    const Json gates = gates_of(table, module);
    const char* layout = table.layout.kind == Layout::Kind::header_row ? "rows" : "columns";
    return {
        {"id",         table.id                 },
        {"title",      table.title              },
        {"row",        table.row                },
        {"tool",       table.source.tool        },
        {"tool_place", tool_place(table)        },
        {"command",    table.source.command     },
        {"capture",    table.source.capture     },
        {"log_label",  table.source.log_label   },
        {"not_asked",  table.source.not_asked   },
        {"gates",      gates                    },
        {"filled",     filled_word(table.filled)},
        {"layout",     layout                   },
        {"count",      table.layout.count       },
        {"columns",    columns                  },
    };
}

Json described(const VendorTool& tool) {
    Json files = {tool.x32};
    if (tool.x64 != tool.x32) files.push_back(tool.x64);
    return {
        {"name",  tool.name},
        {"files", files    },
    };
}

void print_json() {
    Json modules = Json::array();
    for (const auto* module : kDeclaredModules) {
        Json tables = Json::array();
        for (const Table* table : module->tables) tables.push_back(described(*table, *module));
        modules.push_back({
            {"name",    module->name   },
            {"display", module->display},
            {"tables",  tables         }
        });
    }
    Json tools = Json::array();
    for (const auto& tool : kVendorTools) tools.push_back(described(tool));
    std::cout << Json{{"format", 1}, {"tools", tools}, {"modules", modules}}.dump(2) << '\n';
}

std::string cell(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '|') escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string origin(const Table& table) {
    switch (table.filled) {
        case Filled::never: return "Nothing fills this table.";
        case Filled::not_on_linux: return "Nothing fills this table on Linux.";
        case Filled::pmc:
        case Filled::always: break;
    }
    if (table.source.tool.empty()) return "No tool is run.";
    std::string text = "From `" + std::string(table.source.capture) + "`, by `" +
                       std::string(table.source.command) + "`.";
    if (table.filled == Filled::pmc) text += " Only if a host asks for it (`pmc_info`).";
    return text;
}

std::string layout_words(const Layout& layout) {
    if (layout.kind == Layout::Kind::header_row) return "One line a record.";
    const std::string below = "One value below the other, width " + std::to_string(layout.width);
    return below + (layout.count == 1
                        ? "."
                        : ", " + std::to_string(layout.count) + " records side by side.");
}

void print_markdown(const Table& table) {
    std::cout << "\n### " << table.id << ": " << table.title << "\n\n"
              << table.row << ' ' << origin(table) << ' ' << layout_words(table.layout)
              << "\n\n| column | label | width | meaning |\n|---|---|---|---|\n";
    for (const Column& column : table.columns) {
        std::cout << "| `" << column.id << "` | "
                  << (column.label.empty() ? "(the tool's)" : cell(column.label)) << " | ";
        if (column.unlisted.empty()) {
            std::cout << width_of(column, table) << " | " << cell(column.means);
        } else {
            std::cout << "not shown | " << cell(column.means) << "; " << cell(column.unlisted);
        }
        std::cout << " |\n";
    }
}

void print_markdown() {
    std::cout
        << "# Tables\n\n"
           "Every table that the plug-in's modules declare. This page is made of the\n"
           "declarations beside the parsers: `scripts/build dev && build/dev/bin/describe_tables\n"
           "markdown >docs/tables.md`. In commands `{P}` is the program's directory, `{L}` the log\n"
           "directory, `{x}` the build of a tool (`x32`, `x64`).\n";
    for (const auto* module : kDeclaredModules) {
        std::cout << "\n## " << module->name << ": " << module->display << '\n';
        for (const Table* table : module->tables) print_markdown(*table);
    }
}

bool ids_differ() {
    std::set<std::string_view> ids;
    for (const auto* module : kDeclaredModules) {
        for (const Table* table : module->tables) {
            if (ids.insert(table->id).second) continue;
            std::cerr << "Two tables have the id " << table->id << ".\n";
            return false;
        }
    }
    return true;
}

bool tools_are_known() {
    for (const auto* module : kDeclaredModules) {
        for (const Table* table : module->tables) {
            if (!table->source.in_qv_tools() ||
                std::any_of(kVendorTools.begin(), kVendorTools.end(), [&](const VendorTool& tool) {
                    return tool.name == table->source.tool;
                }))
                continue;
            std::cerr << "tools/vendor_tools.h lacks the tool of " << table->id << ".\n";
            return false;
        }
    }
    return true;
}

int run(std::string_view form) {
    if (!ids_differ() || !tools_are_known()) return 1;
    if (form == "json") {
        print_json();
    } else if (form == "markdown") {
        print_markdown();
    } else {
        std::cerr << "usage: describe_tables json|markdown\n";
        return 2;
    }
    return std::cout.flush() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc == 2 ? argv[1] : "");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "describe_tables: %s\n", error.what());
        return 1;
    }
}
