#include "qvhost/finish/summary.h"

#include <ostream>
#include <string>
#include <vector>

#include "show/show_verdict.h"
#include "show/text_table.h"
#include "show/visible.h"
#include "verdict/verdict_tables.h"

namespace qvhost {

void print_summary(std::ostream& out, const Store& store, const LogDir& dir,
                   const TerminalStyle& style) {
    if (const auto status = store.status_text(); status != "complete")
        out << "The collection is " << one_line(status) << "\n\n";
    if (const auto verdict = read_verdict(store); !verdict.health.empty()) {
        show_verdict(out, verdict, style);
        out << '\n';
    }
    std::vector<std::vector<std::string>> rows;
    for (const auto& module : store.modules()) {
        std::string title = module.display;
        for (const auto& table : module.tables) {
            const bool partial = table.records > 0 && !table.reason.empty();
            rows.push_back({title, table.id, std::to_string(table.records),
                            (partial ? "partial: " : "") + table.reason});
            title.clear();  // once for all its tables
        }
    }
    if (!rows.empty()) {
        print_table(out, {"Module", "Table", "Records", "Note"}, rows, style);
        out << '\n';
    }
    out << "Report: " << one_line(dir.page().string()) << '\n';
}

}  // namespace qvhost
