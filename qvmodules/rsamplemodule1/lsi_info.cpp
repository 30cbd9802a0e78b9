#include <array>

#include "file/keys.h"
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

// storcli /c0 show begins with the controller's own data:
//     Product Name = MegaRAID SAS 9361-8i
//     Serial Number = SV00000001
//     ...
//     Function Number = 0
constexpr auto kController = std::to_array<capture::Key>({
    {"Product Name =",     "ProductName",    "Product Name"    },
    {"Serial Number =",    "SerialNumber",   "Serial Number"   },
    {"SAS Address =",      "SASAddress",     "SAS Address"     },
    {"Mfg. Date =",        "MfgDate",        "Mfg. Date"       },
    {"System Time =",      "SystemTime",     "System Time"     },
    {"Controller Time =",  "ControllerTime", "Controller Time" },
    {"FW Package Build =", "FWPackageBuild", "FW Package Build"},
    {"BIOS Version =",     "BIOSVersion",    "BIOS Version"    },
    {"FW Version =",       "FWVersion",      "FW Version"      },
    {"Driver Name =",      "DriverName",     "Driver Name"     },
    {"Driver Version =",   "DriverVersion",  "Driver Version"  },
    {"Bus Number =",       "BusNumber",      "Bus Number"      },
    {"Device Number =",    "DeviceNumber",   "Device Number"   },
    {"Function Number =",  "FunctionNumber", "Function Number" },
});
static_assert(capture::well_formed(kController, "FunctionNumber"));

}  // namespace

void lsi_info(RRepository& repository) {
    const auto command = capture::expand("'{P}qv_tools/storcli_{x}' /c0 show > '{L}c0_showall.txt'",
                                         {current_absolute_path, linux_x32_x64});
    unit.progress("raidinfo raw path:", command);
    capture::run(command);

    auto report = capture::Lines::open(capture::log_dir() + "c0_showall.txt");
    if (!report) {
        unit.detail("Failed to open raid log file");
        return;
    }
    capture::read_keys(*report, kController, "FunctionNumber",
                       {repository, RSampleModule1::T_SAMPLE1_TABLE4, "LSI Controller 0 Info"});
}

}  // namespace marlox::repository
