#include "file/rows.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/command.h"
#include "rbmcinfo/rbmcinfo.h"
#include "rbmcinfo/unit.h"
#include "read/lines.h"
#include "read/text.h"
#include "run/process.h"

namespace marlox::repository {

namespace {

// ipmitool fru:
//     FRU Device Description : Builtin FRU Device (ID 0)
//      Board Mfg             : Example Systems
constexpr capture::LineProperty kFruLine{"FRUINFO", "FRU Detailed Info"};

}  // namespace

int fru_info(RRepository& repo) {
    const auto command = bmc_command("ipmitool fru  1>'{L}fruinfo.txt' 2>'{L}fruinfo.txt'");
    if (check_system_call(capture::run(command), "FRU") != 0) return 1;

    auto lines = capture::Lines::open(capture::log_dir() + "fruinfo.txt");
    if (!lines) {
        unit.progress("Failed to open fruinfo log file");
        return 1;
    }
    unit.progress("Oru Debug fru info 4");
    capture::read_lines(*lines, kFruLine, {repo, RBMCInfo::FRUINFO, "FRU Information"});
    return 0;
}

int fru_info_amd(RRepository& repo) {
    const auto command = bmc_command("ipmitool fru print 0 1>'{L}fruinfo.txt' 2>'{L}fruinfo.txt'");
    if (check_system_call(capture::run(command), "FRU") != 0) return 1;

    const auto bytes = capture::read_bytes(capture::log_dir() + "fruinfo.txt");
    if (!bytes) {
        unit.progress("Failed to open fruinfo log file");
        return 1;
    }
    const auto text = capture::c_text(*bytes);
    unit.detail("se:", text);
    capture::read_split_lines(text, kFruLine, {repo, RBMCInfo::FRUINFO, "FRU Information"},
                              [](std::string_view line) { unit.detail("", line, " "); });
    return 0;
}

}  // namespace marlox::repository
