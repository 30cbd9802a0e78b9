#include <string>

#include "file/link.h"
#include "file/record.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/command.h"
#include "rsamplemodule2/rsamplemodule2.h"
#include "rsamplemodule2/unit.h"
#include "run/command.h"
#include "run/process.h"

namespace marlox::repository {

namespace {

using sample2::unit;

struct RawReport {
    const char* command;
    const char* file;  // what ends the command, its closing quote included: links carry it too
    const char* id;
    const char* display;
};

// The drive report asks controller 0 whichever controller the file is for.
constexpr RawReport kReports[] = {
    {"'{P}qv_tools/storcli_{x}' /c{n} show > '{L}c{n}_showall.txt'",            "c{n}_showall.txt'",
     "lsishowall",                                                                                                   "LSI Info Link"      },
    {"'{P}qv_tools/storcli_{x}' /c{n} show events > '{L}c{n}_raidevents.txt'",
     "c{n}_raidevents.txt'",                                                                         "lsieventlog",  "LSI Event Log Link" },
    {"'{P}qv_tools/storcli_{x}' /c{n} show termlog > '{L}c{n}_fwtermlog.txt'",
     "c{n}_fwtermlog.txt'",                                                                          "lsifwtermlog", "LSI FWTerm Log Link"},
    {"'{P}qv_tools/storcli_{x}' /c0/eall/sall show all > '{L}c{n}_pdlist.txt'", "c{n}_pdlist.txt'",
     "pdlist",                                                                                                       "LSI PDList Link"    },
};

}  // namespace

void lsi_link(RRepository& repo, int controller) {
    capture::Record record(repo, RSampleModule2::T_LSILINK_TABLE4, "LSI Controller info link");
    record.set("index", "Index", "Controller" + std::to_string(controller));

    const auto first_command = sample2::tool_command(kReports[0].command, controller);
    for (const RawReport& report : kReports) {
        // The line before each of the later commands shows the first one.
        if (&report != kReports) unit.progress("raidevent raw path:", first_command);
        capture::run(sample2::tool_command(report.command, controller));
        record.set(report.id, report.display,
                   capture::link_text(sample2::tool_command(report.file, controller)));
    }
    record.add();
}

}  // namespace marlox::repository
