#include <array>
#include <string_view>

#include "file/record.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/command.h"
#include "rbmcinfo/unit.h"
#include "read/text_file.h"
#include "runner/process.h"

namespace marlox::repository {

namespace {

// ipmitool sensor:
//     CPU1 Temp        | 41.000     | degrees C  | ok    | na | na | na | 88.000 | 95.000 | 98.000
constexpr auto kColumns = std::to_array<capture::Column>({
    {"item1", "Name", "name of the sensor", 19},
    {"item2",       "Reading",       "reading; of a discrete sensor its state as bits"           },
    {"item3",       "Units",       "unit of the reading, or \"discrete\""  },
    {"item4",       "Status",       "ok, or the threshold that is crossed: nc, cr, nr"          },
    {"item5",       "LNR",       "threshold: lower, non-recoverable"     },
    {"item6",       "LC",       "threshold: lower, critical"           },
    {"item7",       "LNC",       "threshold: lower, non-critical"    },
    {"item8",       "UNC",       "threshold: upper, non-critical"           },
    {"item9",       "UC",       "threshold: upper, critical"     },
    {"item10",       "UNR",      "threshold: upper, non-recoverable"         },
});

}  // namespace

constexpr capture::Table kSensorInfo = {
    .id = "SENSORINFO",
    .title = "Sensor Status",
    .row = "A row is a sensor of the management controller, with its reading and its thresholds.",
    .source = {.tool = "ipmitool",
               .command = "ipmitool sensor 1>'{L}sensorinfo.txt' 2>&1",
               .capture = "sensorinfo.txt",
               .log_label = "sensor"},
    .layout = capture::header_row(9),
    .columns = kColumns,
};
static_assert(capture::well_formed(kSensorInfo));

namespace {

// Fields are counted over the whole text, not line by line: a line with fewer or more than ten
// fields shifts all later ones. Missing fields of the last row are empty.
void file_sensors(capture::TextFile& text, RRepository& repo) {
    const auto names = capture::names_of(kColumns);
    capture::Record sensor(repo, kSensorInfo);
    capture::FileTokens fields(text, "|\n\r");
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
    const auto& source = kSensorInfo.source;
    const auto command = bmc_command(source.command);
    unit.detail("start to run ipmitool sensor command");
    if (check_system_call(runner::run(command), source.log_label) != 0) return 1;

    auto text = capture::TextFile::open(capture::log_path(source.capture));
    if (!text) {
        unit.detail("Failed to open sensorinfo log file");
        return 1;
    }
    unit.detail("se:", capture::LoggedText{*text});
    // Other answers are dropped for more kinds of error. Here one sensor that could not be read
    // ("Bad response", ...) must not cost the readings of all others.
    if (text->contains({"Error sending MS"})) return 1;

    file_sensors(*text, repo);
    return 0;
}

}  // namespace marlox::repository
