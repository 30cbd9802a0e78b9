#include <array>

#include "file/keys.h"
#include "read/lines.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/command.h"
#include "rsamplemodule2/unit.h"
#include "runner/process.h"

namespace marlox::repository {

namespace {

using capture::Before;
using capture::Key;
using capture::When;
using sample2::unit;

// clang-format off
// "Non Coerced size =" contains "Coerced size =": one key, whose value follows its first place in
// the line, and two properties.
constexpr When kNonCoerced{"Non Coerced size =", {}};

// storcli /c0/eall/sall show all: for each drive blocks of "key = value" lines, of which the last
// is "Needs EKM Attention":
//     Media Error Count = 0
//     Drive Temperature =  31C (87.80 F)
constexpr auto kListed = std::to_array<Key>({
    {"Shield Counter =",                   {"ShieldCounter",       "Shield Counter",                   "times the drive was shielded for diagnosis"}},
    {"Media Error Count =",                {"MediaErrorCount",     "Media Error Count",                "errors of the medium"}},
    {"Other Error Count =",                {"OtherErrorCount",     "Other Error Count",                "errors of other kinds"}},
    {"Drive Temperature =",                {"DriveTemperature",    "Drive Temperature",                "temperature in degrees Celsius and Fahrenheit"}},
    {"Predictive Failure Count =",         {"PredictiveFail",      "Predictive Failure Count",         "times the drive has predicted its failure"}},
    {"S.M.A.R.T alert flagged by drive =", {"SMARTflag",           "S.M.A.R.T alert flagged by drive", "whether the drive raises a SMART alert: Yes or No"}},
    {"SN =",                               {"SN",                  "SN",                               "serial number"}},
    {"WWN =",                              {"WWN",                 "WWN",                              "world wide name"}},
    {"Firmware Revision =",                {"FirmwareRevision",    "Firmware Revision",                "version of the firmware"}},
    {"Raw size =",                         {"Rawsize",             "Raw size",                         "size of the medium, with its unit"}},
    {"Coerced size =",                     {"Coercedsize",         "Coerced size",                     "size that is used, rounded down, with its unit"}},
    {"Coerced size =",                     {"NonCoercedsize",      "Non Coerced size",                 "size before it is rounded down, with its unit"}, kNonCoerced, Before{"Coercedsize"}},
    {"Device Speed =",                     {"DeviceSpeed",         "Device Speed",                     "speed that the drive can do"}},
    {"Link Speed =",                       {"LinkSpeed",           "Link Speed",                       "speed of the link"}},
    {"Logical Sector Size =",              {"LogicalSectorSize",   "Logical Sector Size",              "size of a sector, with its unit"}},
    {"Enclosure position =",               {"Enclosureposition",   "Enclosure position",               "position of the enclosure"}},
    {"Connected Port Number =",            {"ConnectedPortNumber", "Connected Port Number",            "port of the controller and path"}},
    {"Commissioned Spare =",               {"CommissionedSpare",   "Commissioned Spare",               "whether the drive is a spare in use: Yes or No"}},
    {"Emergency Spare =",                  {"EmergencySpare",      "Emergency Spare",                  "whether the drive is an emergency spare: Yes or No"}},
    {"Needs EKM Attention =",              {"NeedsEKMAttention",   "Needs EKM Attention",              "whether external key management needs attention: Yes or No"}},
});
// clang-format on
constexpr auto kDrive = capture::in_order_of_search(kListed);
static_assert(capture::well_formed(kDrive));

constexpr auto kColumns = capture::columns_of(kListed);

}  // namespace

constexpr capture::Table kPdList = {
    .id = "PDLIST",
    .title = "Controller 0 PDLIST",
    .row = "A row is a drive of MegaRAID controller 0, in detail.",
    .source = {.tool = "storcli",
               .command = "'{P}qv_tools/storcli_{x}' /c0/eall/sall show all > '{L}pdlist.txt'",
               .capture = "pdlist.txt"},
    .layout = capture::header_row(5),
    .columns = kColumns,
};
static_assert(capture::well_formed(kPdList));

void pd_list(RRepository& repo) {
    const auto command = sample2::tool_command(kPdList.source.command);
    unit.progress("fwterm raw path:", command);  // the label of the term log, here as well
    runner::run(command);

    auto report = capture::Lines::open(capture::log_path(kPdList.source.capture));
    if (!report) {
        unit.detail("Failed to open raid log file");
        return;
    }
    capture::read_keys(*report, kDrive, {repo, kPdList});
}

}  // namespace marlox::repository
