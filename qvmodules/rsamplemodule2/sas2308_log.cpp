#include <array>

#include "file/keys.h"
#include "read/lines.h"
#include "read/text.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/command.h"
#include "rsamplemodule2/rsamplemodule2.h"
#include "rsamplemodule2/unit.h"
#include "run/process.h"

namespace marlox::repository {

namespace {

using capture::Key;
using capture::Skip;
using sample2::unit;

// A decoded log is a run of such entries; "Locale" is the last line of each. The value of the time
// alone leaves out the blank behind its colon.
//     Time: 12:00:01
//     LogSequence: 17
constexpr auto kEntry = std::to_array<Key>({
    {"Time:",                "Time",                "Time",                Skip{1}},
    {"LogSequence:",         "LogSequence",         "LogSequence",         Skip{0}},
    {"LogEntryQualifier:",   "LogEntryQualifier",   "LogEntryQualifier",   Skip{0}},
    {"LogEntryDescription:", "LogEntryDescription", "LogEntryDescription", Skip{0}},
    {"LogEntryValue:",       "LogEntryValue",       "LogEntryValue",       Skip{0}},
    {"vf_id:",               "vfid",                "vf_id",               Skip{0}},
    {"vp_id:",               "vpid",                "vp_id",               Skip{0}},
    {"LogCode:",             "LogCode",             "LogCode",             Skip{0}},
    {"LogDataDescription:",  "LogDataDescription",  "LogDataDescription",  Skip{0}},
    {"LogDataValue:",        "LogDataValue",        "LogDataValue",        Skip{0}},
    {"LogClass:",            "LogClass",            "LogClass",            Skip{0}},
    {"ArgumentType:",        "ArgumentType",        "ArgumentType",        Skip{0}},
    {"Locale:",              "Locale",              "Locale",              Skip{0}},
});
static_assert(capture::well_formed(kEntry, "Locale"));

// The count is left in the current directory, not in the log directory.
bool has_sas2308() {
    capture::run("lspci | grep SAS2308 | wc -l > b.txt");
    const auto count = capture::read_bytes("b.txt");
    return count && capture::leading_int(*count) >= 1;
}

}  // namespace

void sas2308_log(RRepository& repo) {
    if (!has_sas2308()) return;

    // One build serves every word size, and its path stands without quotes. It leaves logir.log in
    // the current directory.
    capture::run(sample2::tool_command("{P}qv_tools/sas2ircu 0 logir upload"));

    const auto decode =
        sample2::tool_command("'{P}qv_tools/SAS2IR_linux_{x}' logir.log > '{L}ir.txt'");
    unit.progress("irlog2 raw path:", decode);
    capture::run(decode);

    const auto path = capture::log_dir() + "ir.txt";
    unit.progress("3irlog raw path:", path);
    auto entries = capture::Lines::open(path);
    if (!entries) {
        unit.detail("Failed to open ir log file");
        return;
    }
    capture::read_keys(*entries, kEntry, "Locale",
                       {repo, RSampleModule2::T_IR_TABLE2, "LSI SAS2308 Log"});
}

}  // namespace marlox::repository
