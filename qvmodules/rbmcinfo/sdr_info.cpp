#include "file/rows.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/command.h"
#include "rbmcinfo/rbmcinfo.h"
#include "rbmcinfo/unit.h"
#include "read/lines.h"
#include "read/text.h"
#include "run/process.h"

namespace marlox::repository {

// ipmitool sdr elist:
//     CPU1 Temp        | 01h | ok  |  3.1 | 41 degrees C
// Whatever it wrote becomes rows, error messages as well. The file is opened once for each stream,
// so what it says on standard error overwrites the start of the list.
int sdr_info(RRepository& repo) {
    const auto command = bmc_command("ipmitool sdr elist 1>'{L}sdrinfo.txt' 2>'{L}sdrinfo.txt'");
    if (check_system_call(capture::run(command), "SDR") != 0) return 1;

    const auto bytes = capture::read_bytes(capture::log_dir() + "sdrinfo.txt");
    if (!bytes) {
        unit.progress("Failed to open sdrinfo log file");
        return 1;
    }
    const auto text = capture::c_text(*bytes);
    unit.detail("se:", text);
    capture::read_split_lines(text, {"SDRINFO", "SDR Detailed Info"},
                              {repo, RBMCInfo::SDRINFO, "SDR Information"},
                              [](std::string_view line) { unit.detail("", line, " "); });
    return 0;
}

}  // namespace marlox::repository
