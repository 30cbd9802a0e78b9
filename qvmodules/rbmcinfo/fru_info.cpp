#include <array>

#include "file/rows.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/command.h"
#include "rbmcinfo/unit.h"
#include "read/lines.h"
#include "read/text_file.h"
#include "runner/process.h"

namespace marlox::repository {

namespace {

// ipmitool fru:
//     FRU Device Description : Builtin FRU Device (ID 0)
//      Board Mfg             : Example Systems
constexpr auto kColumns = std::to_array<capture::Column>({
    {"FRUINFO", "FRU Detailed Info", "a line of the list, its line end included"},
});

}  // namespace

constexpr capture::Table kFruInfo = {
    .id = "FRUINFO",
    .title = "FRU Information",
    .row = "A row is a line of what the field-replaceable units say of themselves.",
    .source = {.tool = "ipmitool",
               .command = "ipmitool fru  1>'{L}fruinfo.txt' 2>'{L}fruinfo.txt'",
               .capture = "fruinfo.txt",
               .log_label = "FRU"},
    .layout = capture::header_row(100),
    .columns = kColumns,
};
static_assert(capture::well_formed(kFruInfo));

int fru_info(RRepository& repo) {
    const auto& source = kFruInfo.source;
    const auto command = bmc_command(source.command);
    if (check_system_call(runner::run(command), source.log_label) != 0) return 1;

    auto lines = capture::Lines::open(capture::log_path(source.capture));
    if (!lines) {
        unit.progress("Failed to open fruinfo log file");
        return 1;
    }
    unit.progress("Oru Debug fru info 4");
    capture::read_lines(*lines, kColumns.front(), {repo, kFruInfo});
    return 0;
}

int fru_info_amd(RRepository& repo) {
    const auto command = bmc_command("ipmitool fru print 0 1>'{L}fruinfo.txt' 2>'{L}fruinfo.txt'");
    const auto& source = kFruInfo.source;
    if (check_system_call(runner::run(command), source.log_label) != 0) return 1;

    auto text = capture::TextFile::open(capture::log_path(source.capture));
    if (!text) {
        unit.progress("Failed to open fruinfo log file");
        return 1;
    }
    unit.detail("se:", capture::LoggedText{*text});
    capture::read_split_lines(capture::FileTokens(*text, capture::kLineEnds), kColumns.front(),
                              repo, kFruInfo,
                              [](std::string_view line) { unit.detail("", line, " "); });
    return 0;
}

}  // namespace marlox::repository
