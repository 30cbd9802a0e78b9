#include "file/rows.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/command.h"
#include "rbmcinfo/rbmcinfo.h"
#include "rbmcinfo/unit.h"
#include "read/lines.h"
#include "run/process.h"

namespace marlox::repository {

// ipmiutil sel -t:
//     0001 11/20/26 22:14:07 INF BMC  System Event #07 Event Type ...
int sel_info(RRepository& repo) {
    const auto command =
        bmc_command("'{P}qv_tools/ipmiutil_{x}_nh' sel -t 1>'{L}selinfo.txt' 2>&1");
    if (check_system_call(capture::run(command), "SEL") != 0) return 1;

    auto lines = capture::Lines::open(capture::log_dir() + "selinfo.txt");
    if (!lines) {
        unit.detail("Failed to open SEL log file");
        return 1;
    }
    capture::read_lines(*lines, {"SELINFO", "SEL Info"},
                        {repo, RBMCInfo::SELINFO, "SEL Information"});
    return 0;
}

}  // namespace marlox::repository
