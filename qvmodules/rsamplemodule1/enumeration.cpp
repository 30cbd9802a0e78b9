#include <string>
#include <utility>

#include "file/record.h"
#include "read/lines.h"
#include "rsamplemodule1/captures.h"
#include "rsamplemodule1/rsamplemodule1.h"
#include "rsamplemodule1/unit.h"
#include "run/command.h"
#include "run/process.h"
#include "tools/tools.h"

namespace marlox::repository {

namespace {

using sample1::unit;

// One record of a sample table: S1T1PRO1 ... S1T1PRO4, all of one value.
void add_sample(RRepository& repository, const std::string& table, const std::string& name,
                const std::string& group, const std::string& value) {
    capture::Record record(repository, table, name);
    for (int i = 1; i <= 4; ++i) {
        const auto number = std::to_string(i);
        record.set(group + "PRO" + number, group + " PRO " + number, value);
    }
    record.add();
}

void collect(RRepository& repository) {
    unit.progress("Enter EnumXFirmwareInstancesCallback");
    add_sample(repository, RSampleModule1::T_SAMPLE1_TABLE1, "sample 1 - table 1", "S1T1",
               "VALUE1");
    add_sample(repository, RSampleModule1::T_SAMPLE1_TABLE1, "sample 1 - table 1", "S1T1",
               "VALUE2");
    add_sample(repository, RSampleModule1::T_SAMPLE1_TABLE2, "sample 1 - table 2", "S1T2",
               "VALUE1");

    check_linux_bit();
    abs_path = GetProgramDir(current_absolute_path);
    make_tools_executable(current_absolute_path);

    capture::run(capture::expand("'{P}qv_tools/storcli_{x}' show ctrlcount > '{L}ctrlcount.txt'",
                                 {current_absolute_path, linux_x32_x64}));
    // Whatever count the file tells, controller 0 is asked for its summary.
    if (!capture::Lines::open(capture::log_dir() + "ctrlcount.txt")) {
        unit.detail("Failed to open raid log file");
        return;
    }
    lsi_info(repository);
    intel_log(repository);
    unit.progress("Exit EnumXFirmwareInstancesCallback");
}

}  // namespace

void RSampleModule1::EnumQV1Instances(RRepository& repository) {
    unit.progress("Enter EnumQV1Instances");
    if (!std::exchange(collected, true)) collect(repository);
    unit.progress("Exit EnumQV1Instances");
}

void intel_log(RRepository&) {}

}  // namespace marlox::repository
