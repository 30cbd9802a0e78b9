#include <string_view>
#include <utility>

#include "file/table.h"
#include "read/lines.h"
#include "rsamplemodule1/captures.h"
#include "rsamplemodule1/rsamplemodule1.h"
#include "rsamplemodule1/unit.h"
#include "run/command.h"
#include "runner/process.h"
#include "tools/tools.h"

namespace marlox::repository {

namespace {

using sample1::unit;

// clang-format off
constexpr const capture::Table* kTables[] = {
    &sample1::kTable1,
    &sample1::kTable2,
    &sample1::kPelAdd,
    &kRaidInfo,
    &sample1::kController,
    &kPmcInfo,
    &kPmcVer,
    &kPmcLink,
};
// clang-format on

constexpr std::string_view kGates[] = {"'{P}qv_tools/storcli_{x}' show ctrlcount >"};

void collect(RRepository& repository) {
    unit.progress("Enter EnumXFirmwareInstancesCallback");
    sample1::file_samples(repository);

    check_linux_bit();
    abs_path = GetProgramDir(current_absolute_path);
    if (abs_path != 0) {
        unit.progress("Failed to get the Marlox path, exit");
        return;
    }
    make_tools_executable(current_absolute_path);

    runner::run(capture::expand("'{P}qv_tools/storcli_{x}' show ctrlcount > '{L}ctrlcount.txt'",
                                {current_absolute_path, linux_x32_x64}));
    // Controller 0 is asked whatever the count is.
    if (!capture::Lines::open(capture::log_path("ctrlcount.txt"))) {
        unit.detail("Failed to open raid log file");
        return;
    }
    lsi_info(repository);
    intel_log(repository);
    unit.progress("Exit EnumXFirmwareInstancesCallback");
}

}  // namespace

constexpr capture::Module sample1::kModule = {"sampleModule1", "Sample Module 1", kTables, kGates};

void RSampleModule1::EnumQV1Instances(RRepository& repository) {
    unit.progress("Enter EnumQV1Instances");
    if (!std::exchange(collected, true)) collect(repository);
    unit.progress("Exit EnumQV1Instances");
}

void intel_log(RRepository&) {}

}  // namespace marlox::repository
