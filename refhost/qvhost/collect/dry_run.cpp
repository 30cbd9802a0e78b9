#include "qvhost/collect/dry_run.h"

#include <unistd.h>

#include <iostream>

#include "qvhost/base/ambient.h"
#include "qvhost/base/limits.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/base/plugin.h"
#include "qvhost/collect/selection.h"
#include "show/terminal.h"
#include "show/text_table.h"
#include "show/visible.h"

namespace qvhost {

void tell_plan(const CollectOptions& options, const Stage& stage) {
    const auto limits = limits_for(options);
    const Plugin plugin(options.plugin.empty() ? installed_plugin() : options.plugin);
    std::vector<std::vector<std::string>> rows;
    for (const auto& [module, tables] : choose(plugin, options)) {
        std::string ids;
        for (const auto& table : tables) ids += (ids.empty() ? "" : " ") + table;
        rows.push_back({module->GetDisplay(), ids});
    }
    const std::vector<std::vector<std::string>> facts{
        {"Log directory",                     checked_log_dir(options.log_dir).string()                 },
        {"Vendors' tools",                    stage.vendor_tools().string()                             },
        {"Run",                               "at most " + std::to_string(limits.run_seconds) + " s"    },
        {"Module",                            "at most " + std::to_string(limits.module_seconds) + " s" },
        {"Tool",                              "at most " + std::to_string(limits.tool_seconds) + " s"   },
        {"Tool that packs the system's logs",
         "at most " + std::to_string(limits.archive_seconds) + " s"                                     },
        {"Silence of a tool",                 "at most " + std::to_string(limits.silence_seconds) + " s"},
    };
    const auto style = terminal_style(STDOUT_FILENO);
    for (const auto& [titles, lines] : {
             std::pair{std::vector<std::string>{"What", "Plan"},     facts},
             std::pair{std::vector<std::string>{"Module", "Tables"}, rows }
    }) {
        const TextTable text(columns_for(titles, lines, style), style);
        text.print_header(std::cout);
        for (const auto& line : lines) text.print_row(std::cout, line);
        std::cout << '\n';
    }
    std::cout << "Nothing was run and nothing was written.\n";
}

}  // namespace qvhost
