#include "qvhost/finish/finish_report.h"

#include "page/write_page.h"
#include "qvhost/finish/commands.h"
#include "qvhost/finish/facts.h"
#include "qvhost/finish/judge_report.h"
#include "qvhost/finish/reasons.h"
#include "report/report_json.h"

namespace qvhost {

namespace {

void explain(Store& store, const Evidence& evidence) {
    for (const auto& module : store.modules()) {
        for (const auto& table : module.tables) {
            if (!table.reason.empty()) continue;
            const auto reason =
                table.records == 0 ? evidence.why_empty(table.id) : evidence.why_partial(table.id);
            if (!reason.empty()) store.set_reason(table.id, reason);
        }
    }
}

}  // namespace

void finish_report(Store& store, const LogDir& dir, const std::filesystem::path& tools,
                   std::filesystem::file_time_type started) {
    const auto commands = read_commands(dir.commands());
    store.set_commands(commands);
    explain(store, Evidence(dir, tools, started, store));
    store.commit();
    store.set_facts(machine_facts(judge_report(store, dir, commands)));
    store.commit();
    write_report_json(store, dir.json());
    write_page(store, dir.report(), dir.path());
}

}  // namespace qvhost
