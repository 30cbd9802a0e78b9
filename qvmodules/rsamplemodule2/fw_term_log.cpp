#include "file/rows.h"
#include "read/lines.h"
#include "read/text.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/command.h"
#include "rsamplemodule2/rsamplemodule2.h"
#include "rsamplemodule2/unit.h"
#include "run/process.h"

namespace marlox::repository {

namespace {

using sample2::unit;

// A line of this text, anywhere, tells that the controller has printed its log and no error.
bool holds_term_log(capture::Lines& lines) {
    while (const auto line = lines.next()) {
        if (capture::contains(*line, "Firmware Term Log Information")) return true;
    }
    return false;
}

}  // namespace

void fw_term_log(RRepository& repository) {
    const auto command =
        sample2::tool_command("'{P}qv_tools/storcli_{x}' /c0 show termlog > '{L}fwtermlog.txt'");
    unit.progress("fwterm raw path:", command);
    capture::run(command);

    auto lines = capture::Lines::open(capture::log_dir() + "fwtermlog.txt");
    if (!lines) {
        unit.detail("Failed to open raid log file");
        return;
    }
    if (!holds_term_log(*lines)) return;
    lines->rewind();
    capture::read_lines(*lines, {"FWTERMLOG", "FW termlog"},
                        {repository, RSampleModule2::T_FWTERM_TABLE2, "Controller 0 FW Term Log"});
}

}  // namespace marlox::repository
