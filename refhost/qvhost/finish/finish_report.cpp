#include "qvhost/finish/finish_report.h"

#include "page/write_page.h"
#include "qvhost/finish/commands.h"
#include "qvhost/finish/completeness.h"
#include "qvhost/finish/facts.h"
#include "qvhost/finish/judge_report.h"
#include "qvhost/finish/reasons.h"
#include "qvhost/finish/runs.h"
#include "report/report_json.h"

namespace qvhost {

namespace {

void explain(Store& store, const Reasons& reasons) {
    for (const auto& module : store.modules()) {
        for (const auto& table : module.tables) {
            if (!table.reason.empty()) continue;
            const auto reason = table.records == 0 ? reasons.why_empty(module.name, table.id)
                                                   : reasons.why_partial(module.name, table.id);
            if (!reason.empty()) store.set_reason(table.id, reason);
        }
    }
}

}  // namespace

void finish_report(Store& store, const LogDir& dir, const ToolPlaces& tools, const Ending& ending) {
    const auto log = read_commands(dir, ending.stopped_by);
    store.set_commands(log.commands);
    note_files_of_run(store, dir);
    const Reasons reasons(dir, tools, log, store, ending.broken_off);
    explain(store, reasons);
    findings::EventJudge events;
    const auto survey = read_report(store, dir, log.commands, events);
    const bool has_no_bmc = findings::absence_of_bmc(survey) != nullptr;
    store.set_status(ending.problem.empty() ? why_incomplete(store, log, reasons, has_no_bmc)
                                            : ending.problem);
    store.commit();
    judge_report(store, dir, log.commands, survey, events);
    store.set_facts(machine_facts(survey.inventory));
    store.commit();
    write_report_json(store, dir.json());
    write_page(store, dir.report(), dir.path());
}

}  // namespace qvhost
