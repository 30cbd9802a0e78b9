#include <array>

#include "file/rows.h"
#include "read/lines.h"
#include "read/text.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/command.h"
#include "rsamplemodule2/unit.h"
#include "runner/process.h"

namespace marlox::repository {

namespace {

using sample2::unit;

// If no line has this text, the controller has printed an error and not its log.
bool holds_term_log(capture::Lines& lines) {
    while (const auto line = lines.next()) {
        if (capture::contains(*line, "Firmware Term Log Information")) return true;
    }
    return false;
}

constexpr auto kColumns = std::to_array<capture::Column>({
    {"FWTERMLOG", "FW termlog", "a line of the log, its line end included"},
});

}  // namespace

constexpr capture::Table kFwTermLog = {
    .id = "FWTERMLOG",
    .title = "Controller 0 FW Term Log",
    .row = "A row is a line of the terminal log of MegaRAID controller 0's firmware.",
    .source = {.tool = "storcli",
               .command = "'{P}qv_tools/storcli_{x}' /c0 show termlog > '{L}fwtermlog.txt'",
               .capture = "fwtermlog.txt"},
    .layout = capture::header_row(100),
    .columns = kColumns,
};
static_assert(capture::well_formed(kFwTermLog));

void fw_term_log(RRepository& repository) {
    const auto command = sample2::tool_command(kFwTermLog.source.command);
    unit.progress("fwterm raw path:", command);
    runner::run(command);

    auto lines = capture::Lines::open(capture::log_path(kFwTermLog.source.capture));
    if (!lines) {
        unit.detail("Failed to open raid log file");
        return;
    }
    if (!holds_term_log(*lines)) return;
    lines->rewind();
    capture::read_lines(*lines, kColumns.front(), {repository, kFwTermLog});
}

}  // namespace marlox::repository
