#include <span>
#include <string_view>
#include <utility>

#include "rbmcinfo/captures.h"
#include "rbmcinfo/collectors.h"
#include "rbmcinfo/platform.h"
#include "rbmcinfo/rbmcinfo.h"
#include "rbmcinfo/unit.h"
#include "runner/process.h"
#include "tools/tools.h"

namespace marlox::repository {

namespace {

// clang-format off
constexpr const capture::Table* kTables[] = {
    &kMcInfo,
    &kSelfInfo,
    &kVerInfo,
    &kLanInfo,
    &kLedInfo,
    &kPsuInfo,
    &kSensorInfo,
    &kFruInfo,
    &kSdrInfo,
    &kSelInfo,
};
// clang-format on

constexpr std::string_view kGates[] = {
    "dmidecode -t system",
    "uname -i",
    "service ipmi start",
};

// A capture and the line that is logged after it. The result is ignored: a capture that failed
// leaves its table empty.
struct Step {
    int (*capture)(RRepository&);
    const char* debug_line;
};

constexpr const char* silent = nullptr;

template <int kind>
int answer(RRepository& repo) {
    return bmc_info(repo, kind);
}

int sel_in_hex(RRepository&) { return selhex(); }
int sensors_with_ids(RRepository&) { return sen_id(); }
int no_capture(RRepository&) { return 0; }

constexpr Step kFull[] = {
    {answer<1>,        silent},
    {answer<2>,        silent},
    {answer<3>,        silent},
    {answer<4>,        silent},
    {answer<5>,        silent},
    {answer<6>,        silent},
    {sensor_info,      silent},
    {fru_info,         silent},
    {sdr_info,         silent},
    {sel_info,         silent},
    {sel_in_hex,       silent},
    {sensors_with_ids, silent},
};

// Here SDR comes before FRU; on servers with LEDs it is the other way round.
constexpr Step kWithoutLeds[] = {
    {answer<1>,        silent},
    {answer<2>,        silent},
    {answer<3>,        silent},
    {answer<4>,        silent},
    {answer<5>,        silent},
    {sensor_info,      silent},
    {sdr_info,         silent},
    {fru_info,         silent},
    {sel_info,         silent},
    {sel_in_hex,       silent},
    {sensors_with_ids, silent},
};

// The line on SDR is logged although these servers are not asked for their SDR.
constexpr Step kReduced[] = {
    {answer<1>,        silent                       },
    {answer<2>,        silent                       },
    {answer<5>,        "Oru Debug after bmc info"   },
    {sensor_info,      "Oru Debug after sensor info"},
    {no_capture,       "Oru Debug after sdr info"   },
    {fru_info,         "Oru Debug after fru info"   },
    {sel_info,         "Oru Debug after sel info"   },
    {sel_in_hex,       "Oru Debug after selhex"     },
    {sensors_with_ids, "Oru Debug after sen_id"     },
};

std::span<const Step> steps_for(int kind) {
    switch (kind) {
        case kFullBmc: return kFull;
        case kBmcWithoutLeds: return kWithoutLeds;
        default: return kReduced;
    }
}

bool start_ipmi_service() {
    const int status = runner::run("service ipmi start 1>/dev/null 2>&1");
    const int code = (status >> 8) & 255;
    if (status == -1) {
        unit.progress("Failed to start IPMI service, could not be able to get BMC related info");
    } else if ((status & 127) != 0) {
        unit.progress("Signal terminal while starting IPMI service,exit status:", code);
    } else if (code != 0) {
        unit.progress("Failed to start IPMI service,exit code:", code);
    } else {
        unit.detail("Start IPMI service successfully");
        return true;
    }
    return false;
}

void collect_system_logs() {
    mingling();
    cpuinfo();
    dmesg();
    dmidecode();
    interrupts();
    sos();
}

void collect(RRepository& repo) {
    unit.progress("Enter CollectData-BMC related info");
    if (GetProgramDir(current_absolute_path_bmc) != 0) {
        unit.progress("Failed to get the Marlox path, exit");
        return;
    }
    unit.detail("value of current_absolute_path_bmc:", current_absolute_path_bmc);

    const int kind = check_bmc();
    if (kind == kUnreadableProduct) return;
    make_tools_executable(current_absolute_path_bmc);
    collect_system_logs();
    if (check_linux_bit() != 0 || kind == kNoBmc) return;

    if (!start_ipmi_service()) return;
    if (check_ipmi_devintf() != 1) runner::run("modprobe ipmi_devintf 1>/dev/null 2>&1");
    for (const Step& step : steps_for(kind)) {
        step.capture(repo);
        if (step.debug_line) unit.progress(step.debug_line);
    }
    runner::run("service ipmi stop 1>/dev/null 2>&1");
    unit.progress("Exit CollectData-BMC related info");
}

}  // namespace

constexpr capture::Module bmc::kModule = {"BMC_Info", "BMC information", kTables, kGates};

void RBMCInfo::EnumBMCInstances(RRepository& repo) {
    unit.progress("Enter EnumBMCInstances");
    XModule::GetLogDir(fullpath, sizeof fullpath);
    if (!std::exchange(collected, true)) collect(repo);
    unit.progress("Exit EnumBMCInstances");
}

}  // namespace marlox::repository
