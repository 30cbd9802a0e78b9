#include <array>

#include "file/keys.h"
#include "read/lines.h"
#include "rsamplemodule1/captures.h"
#include "rsamplemodule1/unit.h"
#include "run/command.h"
#include "runner/process.h"
#include "tools/tools.h"

namespace marlox::repository {

namespace {

using sample1::unit;

// storcli /c0 show begins with the controller's own data:
//     Product Name = MegaRAID SAS 9361-8i
//     Serial Number = SV00000001
//     ...
//     Function Number = 0
// clang-format off
constexpr auto kKeys = std::to_array<capture::Key>({
    {"Product Name =",     {"ProductName",    "Product Name",     "model"}},
    {"Serial Number =",    {"SerialNumber",   "Serial Number",    "serial number"}},
    {"SAS Address =",      {"SASAddress",     "SAS Address",      "address on the SAS fabric"}},
    {"Mfg. Date =",        {"MfgDate",        "Mfg. Date",        "day of manufacture"}},
    {"System Time =",      {"SystemTime",     "System Time",      "the server's clock when it was asked"}},
    {"Controller Time =",  {"ControllerTime", "Controller Time",  "the controller's clock when it was asked"}},
    {"FW Package Build =", {"FWPackageBuild", "FW Package Build", "version of the firmware package"}},
    {"BIOS Version =",     {"BIOSVersion",    "BIOS Version",     "version of the controller's BIOS"}},
    {"FW Version =",       {"FWVersion",      "FW Version",       "version of the firmware"}},
    {"Driver Name =",      {"DriverName",     "Driver Name",      "the kernel's driver"}},
    {"Driver Version =",   {"DriverVersion",  "Driver Version",   "version of the driver"}},
    {"Bus Number =",       {"BusNumber",      "Bus Number",       "PCI bus"}},
    {"Device Number =",    {"DeviceNumber",   "Device Number",    "PCI device on the bus"}},
    {"Function Number =",  {"FunctionNumber", "Function Number",  "PCI function of the device"}},
});
// clang-format on
static_assert(capture::well_formed(kKeys));

constexpr auto kColumns = capture::columns_of(kKeys);

}  // namespace

constexpr capture::Table kRaidInfo = {
    .id = "RAIDINFO",
    .title = "LSI Controller 0 Info",
    .row = "The row is MegaRAID controller 0, as storcli sums it up.",
    .source = {.tool = "storcli",
               .command = "'{P}qv_tools/storcli_{x}' /c0 show > '{L}c0_showall.txt'",
               .capture = "c0_showall.txt"},
    .layout = capture::header_column(10),
    .columns = kColumns,
};
static_assert(capture::well_formed(kRaidInfo));

void lsi_info(RRepository& repository) {
    const auto command =
        capture::expand(kRaidInfo.source.command, {current_absolute_path, linux_x32_x64});
    unit.progress("raidinfo raw path:", command);
    runner::run(command);

    auto report = capture::Lines::open(capture::log_path(kRaidInfo.source.capture));
    if (!report) {
        unit.detail("Failed to open raid log file");
        return;
    }
    capture::read_keys(*report, kKeys, {repository, kRaidInfo});
}

}  // namespace marlox::repository
