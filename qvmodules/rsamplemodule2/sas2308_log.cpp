#include <array>
#include <string_view>

#include "file/keys.h"
#include "read/lines.h"
#include "read/text.h"
#include "read/text_file.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/command.h"
#include "rsamplemodule2/unit.h"
#include "runner/process.h"

namespace marlox::repository {

namespace {

using capture::Key;
using capture::Skip;
using sample2::unit;

// A decoded log is a list of such entries; "Locale" is the last line of each. Only the value of the
// time leaves out the blank behind its colon.
//     Time: 12:00:01
//     LogSequence: 17
// clang-format off
constexpr auto kEntry = std::to_array<Key>({
    {"Time:",                {"Time",                "Time",                "the controller's clock"}, Skip{1}},
    {"LogSequence:",         {"LogSequence",         "LogSequence",         "number of the entry"}},
    {"LogEntryQualifier:",   {"LogEntryQualifier",   "LogEntryQualifier",   "kind of the entry, as a number"}},
    {"LogEntryDescription:", {"LogEntryDescription", "LogEntryDescription", "kind of the entry, in words"}},
    {"LogEntryValue:",       {"LogEntryValue",       "LogEntryValue",       "value of the entry"}},
    {"vf_id:",               {"vfid",                "vf_id",               "number of the virtual function"}},
    {"vp_id:",               {"vpid",                "vp_id",               "number of the virtual port"}},
    {"LogCode:",             {"LogCode",             "LogCode",             "code of the event"}},
    {"LogDataDescription:",  {"LogDataDescription",  "LogDataDescription",  "the event in words"}},
    {"LogDataValue:",        {"LogDataValue",        "LogDataValue",        "data of the event"}},
    {"LogClass:",            {"LogClass",            "LogClass",            "severity"}},
    {"ArgumentType:",        {"ArgumentType",        "ArgumentType",        "what the data describes"}},
    {"Locale:",              {"Locale",              "Locale",              "what the event concerns"}},
});
// clang-format on
static_assert(capture::well_formed(kEntry));

constexpr auto kColumns = capture::columns_of(kEntry);

constexpr std::string_view kGates[] = {"lspci | grep SAS2308 | wc -l"};

// The command writes the count into the current directory, not into the log directory.
bool has_sas2308() {
    runner::run("lspci | grep SAS2308 | wc -l > b.txt");
    auto count = capture::TextFile::open("b.txt");
    return count && capture::leading_int(count->next()) >= 1;
}

}  // namespace

// sas2ircu uploads the log from the controller, SAS2IR_linux decodes it.
constexpr capture::Table kSas2IrLog = {
    .id = "SAS2IRLOG",
    .title = "LSI SAS2308 Log",
    .row = "A row is an entry in the log of a SAS2308 controller.",
    .source = {.tool = "SAS2IR_linux",
               .command = "'{P}qv_tools/SAS2IR_linux_{x}' logir.log > '{L}ir.txt'",
               .capture = "ir.txt",
               .not_asked = "no SAS2308 controller",
               .gates = kGates},
    .layout = capture::header_row(5),
    .columns = kColumns,
};
static_assert(capture::well_formed(kSas2IrLog));

void sas2308_log(RRepository& repo) {
    if (!has_sas2308()) return;

    // sas2ircu has one build for all word sizes, and its path has no quotes. It writes logir.log into
    // the current directory.
    runner::run(sample2::tool_command("{P}qv_tools/sas2ircu 0 logir upload"));

    const auto decode = sample2::tool_command(kSas2IrLog.source.command);
    unit.progress("irlog2 raw path:", decode);
    runner::run(decode);

    const auto path = capture::log_path(kSas2IrLog.source.capture);
    unit.progress("3irlog raw path:", path);
    auto entries = capture::Lines::open(path);
    if (!entries) {
        unit.detail("Failed to open ir log file");
        return;
    }
    capture::read_keys(*entries, kEntry, {repo, kSas2IrLog});
}

}  // namespace marlox::repository
