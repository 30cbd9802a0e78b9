#include "qvhost/collect/selection.h"

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <utility>

#include "ask/tools.h"
#include "qvhost/base/misuse.h"
#include "qvhost/base/nearest.h"
#include "text/case.h"

namespace qvhost {

namespace {

using Names = std::vector<std::string>;

// A name, and what else people call it.
struct Called {
    std::string name;
    std::string title;
};

bool contains(const Names& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool wanted(const Names& names, const std::string& name) {
    return names.empty() || contains(names, name);
}

std::string plain(const std::string& text) { return lowered(boost::trim_copy(text)); }

[[noreturn]] void refuse(const char* kind, const std::string& asked,
                         const std::vector<Called>& there_are) {
    Names names;
    Names all;
    for (const auto& [name, title] : there_are) {
        names.push_back(name);
        all.push_back(name);
    }
    for (const auto& [name, title] : there_are) {
        if (!title.empty()) all.push_back(title);
    }
    const auto meant = did_you_mean(asked, all);
    throw Misuse(std::string("there is no ") + kind + " \"" + asked + "\"" +
                 (meant.empty() ? "; there are: " + boost::join(names, " ") : meant));
}

// A name counts more than a title, and as it is written more than in another case.
Names meant_by(const std::string& text, const std::vector<Called>& there_are) {
    const auto all_where = [&](const auto& is_meant) {
        Names names;
        for (const auto& called : there_are) {
            if (is_meant(called)) names.push_back(called.name);
        }
        return names;
    };
    const auto typed = plain(text);
    auto names = all_where([&](const Called& called) { return called.name == text; });
    if (names.empty())
        names = all_where([&](const Called& called) { return plain(called.name) == typed; });
    if (names.empty() && !typed.empty())
        names = all_where([&](const Called& called) { return plain(called.title) == typed; });
    return names;
}

// The names of all that are asked for, each once.
Names settled(const char* kind, const Names& asked, const std::vector<Called>& there_are) {
    Names names;
    for (const auto& text : asked) {
        const auto meant = meant_by(text, there_are);
        if (meant.empty()) refuse(kind, text, there_are);
        for (const auto& name : meant) {
            if (!contains(names, name)) names.push_back(name);
        }
    }
    return names;
}

}  // namespace

void settle_names(CollectOptions& options, const Offer& offer,
                  const std::vector<DeclaredTable>& declared) {
    std::vector<Called> modules;
    std::vector<Called> tables;
    for (const auto& module : offer) {
        modules.push_back({module.name, module.display});
        for (const auto& id : module.tables) {
            const auto row = std::find_if(declared.begin(), declared.end(),
                                          [&](const DeclaredTable& one) { return one.id == id; });
            tables.push_back({id, row == declared.end() ? "" : row->title});
        }
    }
    options.modules = settled("module", options.modules, modules);
    options.tables = settled("table", options.tables, tables);
    if (!options.tables.empty() && select_modules(offer, options).empty())
        throw Misuse("no table " + boost::join(options.tables, ", ") + " is in the module " +
                     boost::join(options.modules, ", "));
}

bool asks_own_questions(const CollectOptions& options) {
    return !options.plug_in_only && options.modules.empty() && options.tables.empty();
}

void expect_known_tools(const CollectOptions& options, const DeclaredTables& declared) {
    auto names = ask::tool_names();
    for (const auto& table : declared.tables) names.push_back(table.tool);
    for (const auto& tool : declared.tools) names.push_back(tool.name);
    for (const auto& limit : options.tool_limits) {
        const auto tool = limit.substr(0, limit.find('='));
        const bool is_known = std::any_of(names.begin(), names.end(), [&](const std::string& name) {
            return tool == name || tool.starts_with(name + "_") || tool == name + "64";
        });
        if (is_known) continue;
        if (const auto meant = did_you_mean(tool, names); !meant.empty())
            throw Misuse("--limit " + limit + ": there is no tool \"" + tool + "\"" + meant);
    }
}

std::vector<SelectedModule> select_modules(const Offer& offer, const CollectOptions& options) {
    std::vector<SelectedModule> selected;
    for (std::size_t place = 0; place < offer.size(); ++place) {
        const auto& module = offer[place];
        if (!wanted(options.modules, module.name)) continue;
        Names tables;
        for (const auto& table : module.tables) {
            if (wanted(options.tables, table)) tables.push_back(table);
        }
        if (!tables.empty()) selected.push_back({place, std::move(tables)});
    }
    return selected;
}

}  // namespace qvhost
