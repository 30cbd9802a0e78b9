#include <array>
#include <string_view>

#include "file/record.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/command.h"
#include "rbmcinfo/rbmcinfo.h"
#include "rbmcinfo/unit.h"
#include "read/lines.h"
#include "read/text.h"
#include "run/process.h"

namespace marlox::repository {

namespace {

struct Column {
    const char* id;
    const char* display;
};

// ipmitool sensor:
//     CPU1 Temp        | 41.000     | degrees C  | ok    | na | na | na | 88.000 | 95.000 | 98.000
constexpr std::array<Column, 10> kColumns = {
    {
     {"item1", "Name"},
     {"item2", "Reading"},
     {"item3", "Units"},
     {"item4", "Status"},
     {"item5", "LNR"},
     {"item6", "LC"},
     {"item7", "LNC"},
     {"item8", "UNC"},
     {"item9", "UC"},
     {"item10", "UNR"},
     }
};

// Fields are counted over the whole text, not line by line: a line with fewer or more than ten
// shifts those behind it. What the last row lacks is empty.
void file_sensors(std::string_view text, RRepository& repo) {
    const auto names = capture::names_of(kColumns);
    capture::Record sensor(repo, RBMCInfo::SENSORINFO, "Sensor Status");
    capture::Tokens fields(text, "|\n\r");
    while (auto field = fields.next()) {
        for (const auto& name : names) {
            sensor.set(name, field.value_or(std::string_view()));
            if (&name != &names.back()) field = fields.next();
        }
        sensor.add();
    }
}

}  // namespace

int sensor_info(RRepository& repo) {
    const auto command = bmc_command("ipmitool sensor 1>'{L}sensorinfo.txt' 2>&1");
    unit.detail("start to run ipmitool sensor command");
    if (check_system_call(capture::run(command), "sensor") != 0) return 1;

    const auto bytes = capture::read_bytes(capture::log_dir() + "sensorinfo.txt");
    if (!bytes) {
        unit.detail("Failed to open sensorinfo log file");
        return 1;
    }
    const auto text = capture::c_text(*bytes);
    unit.detail("se:", text);
    // Weaker than the test of the other answers on purpose: one sensor that could not be read
    // ("Bad response", ...) does not make the readings of all others worthless.
    if (capture::contains(text, "Error sending MS")) return 1;

    file_sensors(text, repo);
    return 0;
}

}  // namespace marlox::repository
