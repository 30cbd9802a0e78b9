#include "qvhost/present/export_prometheus.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "findings/finding.h"
#include "inventory/inventory.h"
#include "report/json_text.h"
#include "report/report_json.h"
#include "text/utc.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace qvhost {

namespace {

using inventory::Drive;
using inventory::Sensor;
using inventory::Volume;

using Labels = std::vector<std::pair<const char*, std::string>>;

// Label values are UTF-8, in which backslash, quote and line end are escaped.
std::string escaped(std::string_view text) {
    std::string out;
    for (const char c : as_utf8(text)) {
        if (c == '\\' || c == '"') {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            out += ' ';
        } else {
            out += c;
        }
    }
    return out;
}

std::string number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.15g", value);
    return text;
}

// One metric: its help, its type and its samples. A sample whose labels were there before is left out,
// since a series may stand only once.
class Metric {
public:
    Metric(std::ostream& out, std::string name, const char* type, const char* help)
        : out_(out), name_(std::move(name)), type_(type), help_(help) {}

    void add(const Labels& labels, double value) {
        std::string text;
        for (const auto& [label, content] : labels)
            text +=
                (text.empty() ? "" : ",") + std::string(label) + "=\"" + escaped(content) + "\"";
        if (!seen_.insert(text).second) return;
        if (seen_.size() == 1)
            out_ << "# HELP " << name_ << ' ' << help_ << "\n# TYPE " << name_ << ' ' << type_
                 << '\n';
        out_ << name_;
        if (!text.empty()) out_ << '{' << text << '}';
        out_ << ' ' << number(value) << '\n';
    }

private:
    std::ostream& out_;
    std::string name_;
    const char* type_;
    const char* help_;
    std::set<std::string> seen_;
};

std::string text(const inventory::Text& value) { return value.value_or(""); }
std::string text(const inventory::Integer& value) { return value ? std::to_string(*value) : ""; }

// The sensor's number, else its place among those of one name: names need not be unique.
std::vector<std::string> ids_of(const std::vector<Sensor>& sensors) {
    std::map<std::string, int> seen;
    std::vector<std::string> ids;
    for (const auto& sensor : sensors) {
        const auto place = ++seen[text(sensor.name)];
        ids.push_back(sensor.number ? *sensor.number : std::to_string(place));
    }
    return ids;
}

struct SensorMetric {
    const char* kind;
    const char* name;
    const char* help;
};

// clang-format off
constexpr auto kSensorMetrics = std::to_array<SensorMetric>({
    {"temperature", "qvhost_temperature_celsius", "Temperature that a sensor of the BMC reads."       },
    {"fan",         "qvhost_fan_speed_rpm",       "Speed of a fan in rotations per minute."           },
    {"voltage",     "qvhost_voltage_volts",       "Voltage that a sensor of the BMC reads."           },
    {"current",     "qvhost_current_amperes",     "Current that a sensor of the BMC reads."           },
    {"power",       "qvhost_power_watts",         "Power that a sensor of the BMC reads."             },
});
// clang-format on

// 0 ok, 1 non-critical, 2 critical, 3 non-recoverable; others are not told.
std::optional<double> level_of(const inventory::Text& status) {
    static const std::map<std::string, double> levels{
        {"ok", 0},
        {"nc", 1},
        {"cr", 2},
        {"nr", 3}
    };
    const auto found = status ? levels.find(*status) : levels.end();
    return found == levels.end() ? std::nullopt : std::optional(found->second);
}

void write_collection(const Store& store, std::ostream& out) {
    Metric(out, "qvhost_build_info", "gauge", "Version of the program and of the report's format.")
        .add(
            {
                {"version", store.meta("qvhost")         },
                {"format",  std::to_string(kReportFormat)}
    },
            1);
    Metric(out, "qvhost_collection_complete", "gauge", "Whether nothing cut the collection off.")
        .add({}, store.meta("status") == "complete" ? 1 : 0);
    if (const auto finished = seconds_of_utc(store.meta("finished")))
        Metric(out, "qvhost_collection_end_timestamp_seconds", "gauge",
               "When the collection ended, since 1970.")
            .add({}, static_cast<double>(*finished));
    double seconds = 0;
    if (std::sscanf(store.meta("seconds").c_str(), "%lf", &seconds) == 1)
        Metric(out, "qvhost_collection_duration_seconds", "gauge", "How long the collection took.")
            .add({}, seconds);
}

void write_health(const findings::Verdict& verdict, std::ostream& out) {
    Metric health(out, "qvhost_health", "gauge",
                  "Health of a subsystem: 1 for the word that holds.");
    for (const auto& one : verdict.health) {
        for (const auto health_word : findings::kHealthWords)
            health.add(
                {
                    {"subsystem", word(one.subsystem)},
                    {"health",    word(health_word)  }
            },
                one.health == health_word ? 1 : 0);
    }
}

void write_findings(const findings::Verdict& verdict, std::ostream& out) {
    Metric count(out, "qvhost_findings", "gauge", "Number of findings by subsystem and severity.");
    for (const auto subsystem : findings::kSubsystems) {
        for (const auto severity : findings::kSeverities) {
            double sum = 0;
            for (const auto& one : verdict.findings)
                sum += one.subsystem == subsystem && one.severity == severity ? 1 : 0;
            count.add(
                {
                    {"subsystem", word(subsystem)},
                    {"severity",  word(severity) }
            },
                sum);
        }
    }
}

void write_acknowledged(const findings::Verdict& verdict, std::ostream& out) {
    Metric count(out, "qvhost_findings_acknowledged", "gauge",
                 "Number of findings that are acknowledged, which are notices, by subsystem.");
    for (const auto subsystem : findings::kSubsystems) {
        double sum = 0;
        for (const auto& one : verdict.findings)
            sum += one.subsystem == subsystem && one.acknowledged ? 1 : 0;
        count.add(
            {
                {"subsystem", word(subsystem)}
        },
            sum);
    }
}

void write_not_read(const findings::Verdict& verdict, std::ostream& out) {
    Metric missing(out, "qvhost_not_read", "gauge",
                   "How many things that a subsystem's health rests on could not be read.");
    for (const auto& one : verdict.health)
        missing.add(
            {
                {"subsystem", word(one.subsystem)}
        },
            static_cast<double>(one.missing.size()));
}

void write_sensors(const std::vector<Sensor>& sensors, std::ostream& out) {
    const auto ids = ids_of(sensors);
    for (const auto& row : kSensorMetrics) {
        Metric metric(out, row.name, "gauge", row.help);
        for (std::size_t i = 0; i < sensors.size(); ++i) {
            const auto& sensor = sensors[i];
            if (sensor.kind == row.kind && sensor.reading)
                metric.add(
                    {
                        {"id",   ids[i]           },
                        {"name", text(sensor.name)}
                },
                    *sensor.reading);
        }
    }
    Metric state(
        out, "qvhost_sensor_state", "gauge",
        "What the BMC says of a sensor: 0 ok, 1 non-critical, 2 critical, 3 non-recoverable.");
    for (std::size_t i = 0; i < sensors.size(); ++i) {
        const auto& sensor = sensors[i];
        if (const auto level = level_of(sensor.status))
            state.add(
                {
                    {"id",   ids[i]           },
                    {"name", text(sensor.name)},
                    {"kind", text(sensor.kind)}
            },
                *level);
    }
}

// All that tells a drive from others, in each of its series: two controllers of different tools can have
// the same number, and not every drive has a slot.
Labels labels_of(const Drive& drive) {
    return {
        {"controller", text(drive.controller)},
        {"enclosure",  text(drive.enclosure) },
        {"slot",       text(drive.slot)      },
        {"device",     text(drive.device)    },
        {"serial",     text(drive.serial)    },
        {"model",      text(drive.model)     },
        {"firmware",   text(drive.firmware)  },
    };
}

Labels with(Labels labels, const char* label, const std::string& content) {
    labels.emplace_back(label, content);
    return labels;
}

template <class Value>
void write_drive_values(const std::vector<Drive>& drives, Value Drive::*field, const char* name,
                        const char* type, const char* help, std::ostream& out) {
    Metric metric(out, name, type, help);
    for (const auto& drive : drives) {
        if (drive.*field) metric.add(labels_of(drive), static_cast<double>(*(drive.*field)));
    }
}

void write_drives(const std::vector<Drive>& drives, std::ostream& out) {
    Metric info(out, "qvhost_drive_info", "gauge", "What a drive is; always 1.");
    for (const auto& drive : drives) info.add(labels_of(drive), 1);
    Metric state(out, "qvhost_drive_state", "gauge",
                 "State of a drive, as its tool prints it; always 1.");
    for (const auto& drive : drives) {
        if (drive.state) state.add(with(labels_of(drive), "state", *drive.state), 1);
    }
    write_drive_values(drives, &Drive::media_errors, "qvhost_drive_media_errors_total", "counter",
                       "Errors of the medium.", out);
    write_drive_values(drives, &Drive::temperature_celsius, "qvhost_drive_temperature_celsius",
                       "gauge", "Temperature of a drive.", out);
}

void write_volumes(const std::vector<inventory::Volume>& volumes_there, std::ostream& out) {
    Metric volumes(out, "qvhost_volume_state", "gauge",
                   "State of a volume, as its tool prints it; always 1.");
    for (const auto& volume : volumes_there) {
        if (volume.state)
            volumes.add(
                {
                    {"controller", text(volume.controller)                                  },
                    {"number",     volume.number ? text(volume.number) : text(volume.device)},
                    {"state",      *volume.state                                            }
            },
                1);
    }
}

// What the metrics of a table are made from.
struct Told {
    findings::Verdict verdict;
    inventory::Inventory inventory;
};

// The tables of which there are metrics, in the order in which they are written.
using Write = void (*)(const Told& told, std::ostream& out);

// clang-format off
constexpr struct {
    const char* table;
    Write write;
} kMetricTables[] = {
    {"health",   [](const Told& told, std::ostream& out) { write_health(told.verdict, out); }},
    {"findings", [](const Told& told, std::ostream& out) { write_findings(told.verdict, out); }},
    {"findings", [](const Told& told, std::ostream& out) { write_acknowledged(told.verdict, out); }},
    {"health",   [](const Told& told, std::ostream& out) { write_not_read(told.verdict, out); }},
    {"sensors",  [](const Told& told, std::ostream& out) { write_sensors(told.inventory.sensors, out); }},
    {"drives",   [](const Told& told, std::ostream& out) { write_drives(told.inventory.drives, out); }},
    {"volumes",  [](const Told& told, std::ostream& out) { write_volumes(told.inventory.volumes, out); }},
};
// clang-format on

}  // namespace

std::vector<std::string> tables_with_metrics() {
    std::vector<std::string> names;
    for (const auto& row : kMetricTables) {
        if (std::find(names.begin(), names.end(), row.table) == names.end())
            names.emplace_back(row.table);
    }
    return names;
}

void write_prometheus(const Store& store, std::ostream& out, const std::set<std::string>& tables) {
    if (tables.empty()) write_collection(store, out);
    const Told told{read_verdict(store), read_inventory(store)};
    for (const auto& row : kMetricTables) {
        if (tables.empty() || tables.contains(row.table)) row.write(told, out);
    }
}

}  // namespace qvhost
