#include <string_view>
#include <utility>

#include "file/table.h"
#include "read/lines.h"
#include "read/text.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/command.h"
#include "rsamplemodule2/rsamplemodule2.h"
#include "rsamplemodule2/unit.h"
#include "runner/process.h"

namespace marlox::repository {

namespace {

using sample2::unit;

// clang-format off
constexpr const capture::Table* kTables[] = {
    &sample2::kTable1,
    &sample2::kTable2,
    &kEventLog[0],
    &kEventLog[1],
    &kEventLog[2],
    &kEventLog[3],
    &kEventLog[4],
    &kFwTermLog,
    &kPdList,
    &kTopology,
    &kVirtualDrives,
    &kPhysicalDrives,
    &kSas2IrLog,
    &sample2::kEndDevices,
    &sample2::kArray,
    &sample2::kVolume,
    &kLsiLink,
};
// clang-format on

constexpr std::string_view kGates[] = {"'{P}qv_tools/storcli_{x}' show ctrlcount >"};

// storcli show ctrlcount:
//     Controller Count = 2
// The count is one character minus '0', whatever the character is (NUL at the end of a line). The last
// such line counts.
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
    sample2::file_samples(repo);

    abs_path2 = GetProgramDir(current_absolute_path2);
    if (abs_path2 != 0) {
        unit.progress("Failed to get the Marlox path, exit");
        return;
    }
    make_tools_executable(current_absolute_path2);
    check_linux_bit();

    const auto command = sample2::tool_command(kLsiLink.source.command);
    unit.detail("ctrlcout path:", command);
    runner::run(command);

    const auto path = capture::log_path(kLsiLink.source.capture);
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

constexpr capture::Module sample2::kModule = {"sampleModule2", "Sample Module 2", kTables, kGates};

void RSampleModule2::EnumQV2Instances(RRepository& repo) {
    unit.progress("Enter EnumQV2Instances");
    if (!std::exchange(collected, true)) collect(repo);
    unit.progress("Exit EnumQV2Instances");
}

void intelrste_log(RRepository&) {}

}  // namespace marlox::repository
