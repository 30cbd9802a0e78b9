#include <string>
#include <string_view>
#include <utility>

#include "file/record.h"
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

void add_first_sample_table(RRepository& repo) {
    for (int i = 0; i < 6; ++i) {
        capture::Record record(repo, RSampleModule2::T_SAMPLE2_TABLE1, "sample 2 - table 1");
        record.set("item1", "Name", i);
        record.set("item2", "Reading", i + 1);
        record.set("item3", "Status", i + 2);
        record.set("item4", "LCR", i + 3);
        record.set("item5", "LNR", i + 4);
        record.set("item6", "UCR", i + 5);
        record.add();
    }
}

void add_second_sample_table(RRepository& repo) {
    capture::Record record(repo, RSampleModule2::T_SAMPLE2_TABLE2, "sample 2 - table 2");
    record.set("S2T2PRO1", "S2T2 PRO 1", "VALUE1");
    record.set("S2T2PRO2", "S2T2 PRO 2", "VALUE1");
    record.set("S2T2PRO3", "S2T2 PRO 3", "VALUE1");
    record.set("S2T2PRO4", "S2T2 PRO 4", "VALUE1");
    record.add();
}

// storcli show ctrlcount:
//     Controller Count = 2
// One character is the count, whatever it is; the last such line decides. Behind the end of a line
// stands a NUL.
int controller_count(capture::Lines& lines) {
    constexpr std::string_view key = "Controller Count =";
    int count = 0;
    while (const auto line = lines.next()) {
        const auto at = line->find(key);
        if (at == std::string_view::npos) continue;
        const auto digit = capture::rest(*line, at + key.size() + 1);
        count = (digit.empty() ? '\0' : digit.front()) - '0';
    }
    return count;
}

void collect(RRepository& repo) {
    unit.progress("Enter CollectData");
    add_first_sample_table(repo);
    add_second_sample_table(repo);

    abs_path2 = GetProgramDir(current_absolute_path2);
    make_tools_executable(current_absolute_path2);
    check_linux_bit();

    const auto command =
        sample2::tool_command("'{P}qv_tools/storcli_{x}' show ctrlcount >'{L}ctrlcount.txt'");
    unit.detail("ctrlcout path:", command);
    capture::run(command);

    const auto path = capture::log_dir() + "ctrlcount.txt";
    unit.detail("ctrlcout path:", path);
    auto lines = capture::Lines::open(path);
    if (!lines) return;

    const int count = controller_count(*lines);
    for (int controller = 0; controller < count; ++controller) lsi_link(repo, controller);
    event_log(repo);
    fw_term_log(repo);
    pd_list(repo);
    lsi_list(repo);
    sas2308_log(repo);
    intelrste_log(repo);
    unit.progress("Exit CollectData");
}

}  // namespace

void RSampleModule2::EnumQV2Instances(RRepository& repo) {
    unit.progress("Enter EnumQV2Instances");
    if (!std::exchange(collected, true)) collect(repo);
    unit.progress("Exit EnumQV2Instances");
}

void intelrste_log(RRepository&) {}

}  // namespace marlox::repository
