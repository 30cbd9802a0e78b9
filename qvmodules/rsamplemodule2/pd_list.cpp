#include <array>

#include "file/keys.h"
#include "read/lines.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/command.h"
#include "rsamplemodule2/rsamplemodule2.h"
#include "rsamplemodule2/unit.h"
#include "run/process.h"

namespace marlox::repository {

namespace {

using capture::always;
using capture::Key;
using capture::When;
using sample2::unit;

// "Non Coerced size =" contains "Coerced size =": one key, whose value follows its first place in
// the line, and two properties.
constexpr When kNonCoerced{"Non Coerced size =", {}};

// storcli /c0/eall/sall show all: for each drive blocks of "key = value" lines, of which the last
// is "Needs EKM Attention":
//     Media Error Count = 0
//     Drive Temperature =  31C (87.80 F)
constexpr auto kDrive = std::to_array<Key>({
    {"Shield Counter =",                   "ShieldCounter",       "Shield Counter",                   always     },
    {"Media Error Count =",                "MediaErrorCount",     "Media Error Count",                always     },
    {"Other Error Count =",                "OtherErrorCount",     "Other Error Count",                always     },
    {"Drive Temperature =",                "DriveTemperature",    "Drive Temperature",                always     },
    {"Predictive Failure Count =",         "PredictiveFail",      "Predictive Failure Count",         always     },
    {"S.M.A.R.T alert flagged by drive =", "SMARTflag",           "S.M.A.R.T alert flagged by drive", always     },
    {"SN =",                               "SN",                  "SN",                               always     },
    {"WWN =",                              "WWN",                 "WWN",                              always     },
    {"Firmware Revision =",                "FirmwareRevision",    "Firmware Revision",                always     },
    {"Raw size =",                         "Rawsize",             "Raw size",                         always     },
    {"Coerced size =",                     "NonCoercedsize",      "Non Coerced size",                 kNonCoerced},
    {"Coerced size =",                     "Coercedsize",         "Coerced size",                     always     },
    {"Device Speed =",                     "DeviceSpeed",         "Device Speed",                     always     },
    {"Link Speed =",                       "LinkSpeed",           "Link Speed",                       always     },
    {"Logical Sector Size =",              "LogicalSectorSize",   "Logical Sector Size",              always     },
    {"Enclosure position =",               "Enclosureposition",   "Enclosure position",               always     },
    {"Connected Port Number =",            "ConnectedPortNumber", "Connected Port Number",            always     },
    {"Commissioned Spare =",               "CommissionedSpare",   "Commissioned Spare",               always     },
    {"Emergency Spare =",                  "EmergencySpare",      "Emergency Spare",                  always     },
    {"Needs EKM Attention =",              "NeedsEKMAttention",   "Needs EKM Attention",              always     },
});
static_assert(capture::well_formed(kDrive, "NeedsEKMAttention"));

}  // namespace

void pd_list(RRepository& repo) {
    const auto command =
        sample2::tool_command("'{P}qv_tools/storcli_{x}' /c0/eall/sall show all > '{L}pdlist.txt'");
    unit.progress("fwterm raw path:", command);  // the label of the term log, here as well
    capture::run(command);

    auto report = capture::Lines::open(capture::log_dir() + "pdlist.txt");
    if (!report) {
        unit.detail("Failed to open raid log file");
        return;
    }
    capture::read_keys(*report, kDrive, "NeedsEKMAttention",
                       {repo, RSampleModule2::T_PDLIST_TABLE2, "Controller 0 PDLIST"});
}

}  // namespace marlox::repository
