#include <array>

#include "file/rows.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/command.h"
#include "rbmcinfo/unit.h"
#include "read/lines.h"
#include "runner/process.h"

namespace marlox::repository {

namespace {

constexpr auto kColumns = std::to_array<capture::Column>({
    {"SELINFO", "SEL Info", "a line of the log, its line end included"},
});

}  // namespace

constexpr capture::Table kSelInfo = {
    .id = "SELINFO",
    .title = "SEL Information",
    .row = "A row is a line of the system event log, which the management controller keeps.",
    .source = {.tool = "ipmiutil",
               .command = "'{P}qv_tools/ipmiutil_{x}_nh' sel -t 1>'{L}selinfo.txt' 2>&1",
               .capture = "selinfo.txt",
               .log_label = "SEL"},
    .layout = capture::header_row(100),
    .columns = kColumns,
};
static_assert(capture::well_formed(kSelInfo));

// ipmiutil sel -t:
//     0001 11/20/26 22:14:07 INF BMC  System Event #07 Event Type ...
int sel_info(RRepository& repo) {
    const auto& source = kSelInfo.source;
    const auto command = bmc_command(source.command);
    if (check_system_call(runner::run(command), source.log_label) != 0) return 1;

    auto lines = capture::Lines::open(capture::log_path(source.capture));
    if (!lines) {
        unit.detail("Failed to open SEL log file");
        return 1;
    }
    capture::read_lines(*lines, kColumns.front(), {repo, kSelInfo});
    return 0;
}

}  // namespace marlox::repository
