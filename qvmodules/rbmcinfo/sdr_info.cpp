#include <array>

#include "file/rows.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/command.h"
#include "rbmcinfo/unit.h"
#include "read/text_file.h"
#include "runner/process.h"

namespace marlox::repository {

namespace {

constexpr auto kColumns = std::to_array<capture::Column>({
    {"SDRINFO", "SDR Detailed Info", "a line of the list"},
});

}  // namespace

constexpr capture::Table kSdrInfo = {
    .id = "SDRINFO",
    .title = "SDR Information",
    .row = "A row is a sensor in the list of the management controller's sensor data records.",
    .source = {.tool = "ipmitool",
               .command = "ipmitool sdr elist 1>'{L}sdrinfo.txt' 2>'{L}sdrinfo.txt'",
               .capture = "sdrinfo.txt",
               .log_label = "SDR"},
    .layout = capture::header_row(100),
    .columns = kColumns,
};
static_assert(capture::well_formed(kSdrInfo));

// ipmitool sdr elist:
//     CPU1 Temp        | 01h | ok  |  3.1 | 41 degrees C
// Error messages become rows too. The shell opens the file once for each stream, so standard error
// overwrites the start of the list.
int sdr_info(RRepository& repo) {
    const auto& source = kSdrInfo.source;
    const auto command = bmc_command(source.command);
    if (check_system_call(runner::run(command), source.log_label) != 0) return 1;

    auto text = capture::TextFile::open(capture::log_path(source.capture));
    if (!text) {
        unit.progress("Failed to open sdrinfo log file");
        return 1;
    }
    unit.detail("se:", capture::LoggedText{*text});
    capture::read_split_lines(capture::FileTokens(*text, capture::kLineEnds), kColumns.front(),
                              repo, kSdrInfo,
                              [](std::string_view line) { unit.detail("", line, " "); });
    return 0;
}

}  // namespace marlox::repository
