#include <array>
#include <string>

#include "file/link.h"
#include "file/record.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/command.h"
#include "rsamplemodule2/unit.h"
#include "run/command.h"
#include "runner/process.h"

namespace marlox::repository {

namespace {

using sample2::unit;

constexpr auto kColumns = std::to_array<capture::Column>({
    {"index", "Index", "\"Controller\" and its number", 2},
    {"lsishowall",       "LSI Info Link",   "a link to its summary"            },
    {"pdlist",       "LSI PDList Link",       "a link to its list of drives"  },
    {"lsieventlog",       "LSI Event Log Link",  "a link to its event log"    },
    {"lsifwtermlog",       "LSI FWTerm Log Link", "a link to its terminal log"},
});

struct RawReport {
    const char* command;
    const char* file;  // as in the command, with its closing quote, which is part of the link too
    const capture::Column& column;
};

// The drive report always asks controller 0, whichever controller the file is for.
// clang-format off
constexpr RawReport kReports[] = {
    {"'{P}qv_tools/storcli_{x}' /c{n} show > '{L}c{n}_showall.txt'",            "c{n}_showall.txt'",    kColumns[1]},
    {"'{P}qv_tools/storcli_{x}' /c{n} show events > '{L}c{n}_raidevents.txt'",  "c{n}_raidevents.txt'", kColumns[3]},
    {"'{P}qv_tools/storcli_{x}' /c{n} show termlog > '{L}c{n}_fwtermlog.txt'",  "c{n}_fwtermlog.txt'",  kColumns[4]},
    {"'{P}qv_tools/storcli_{x}' /c0/eall/sall show all > '{L}c{n}_pdlist.txt'", "c{n}_pdlist.txt'",     kColumns[2]},
};
// clang-format on

}  // namespace

// The rows are the controllers that storcli counts.
constexpr capture::Table kLsiLink = {
    .id = "LSILINK",
    .title = "LSI Controller info link",
    .row = "A row is a MegaRAID controller, with links to its raw captures.",
    .source = {.tool = "storcli",
               .command = "'{P}qv_tools/storcli_{x}' show ctrlcount >'{L}ctrlcount.txt'",
               .capture = "ctrlcount.txt"},
    .layout = capture::header_row(5),
    .columns = kColumns,
};
static_assert(capture::well_formed(kLsiLink));

void lsi_link(RRepository& repo, int controller) {
    capture::Record record(repo, kLsiLink);
    record.set(kColumns.front(), "Controller" + std::to_string(controller));

    const auto first_command = sample2::tool_command(kReports[0].command, controller);
    for (const RawReport& report : kReports) {
        // The line before each of the later commands shows the first one.
        if (&report != kReports) unit.progress("raidevent raw path:", first_command);
        runner::run(sample2::tool_command(report.command, controller));
        record.set(report.column,
                   capture::link_text(sample2::tool_command(report.file, controller)));
    }
    record.add();
}

}  // namespace marlox::repository
