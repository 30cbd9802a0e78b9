#include "inventory/storage/block_devices.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <utility>

#include "inventory/storage/json.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

using nlohmann::json;

// {
//   "smartctl": {"exit_status": 0},
//   "device": {"name": "/dev/sda", "type": "sat", "protocol": "ATA"},
//   "model_name": "ST1000NM0045",
//   "serial_number": "Z1X00000",
//   "wwn": {"naa": 5, "oui": 3152, "id": 11111111111},
//   "firmware_version": "TN05",
//   "user_capacity": {"blocks": 1953525168, "bytes": 1000204886016},
//   "logical_block_size": 512,
//   "rotation_rate": 7200,
//   "smart_status": {"passed": true},
//   "power_on_time": {"hours": 12345},
//   "temperature": {"current": 31},
//   "nvme_smart_health_information_log": {"critical_warning": 0, "available_spare": 100,
//       "percentage_used": 3, "media_errors": 0}
// }
struct TextRow {
    const char* path;
    Text Drive::*field;
};
constexpr auto kTexts = std::to_array<TextRow>({
    {"/model_name",       &Drive::model   },
    {"/scsi_model_name",  &Drive::model   },
    {"/serial_number",    &Drive::serial  },
    {"/firmware_version", &Drive::firmware},
    {"/scsi_revision",    &Drive::firmware},
});

struct NumberRow {
    const char* path;
    Integer Drive::*field;
};
constexpr auto kNumbers = std::to_array<NumberRow>({
    {"/user_capacity/bytes",                            &Drive::capacity_bytes},
    {"/nvme_total_capacity",                            &Drive::capacity_bytes},
    {"/logical_block_size",                             &Drive::sector_bytes  },
    {"/power_on_time/hours",                            &Drive::power_on_hours},
    {"/nvme_smart_health_information_log/media_errors", &Drive::media_errors  },
});

struct RealRow {
    const char* path;
    Real Drive::*field;
};
constexpr auto kReals = std::to_array<RealRow>({
    {"/temperature/current",                               &Drive::temperature_celsius    },
    {"/nvme_smart_health_information_log/percentage_used", &Drive::percentage_used        },
    {"/scsi_percentage_used_endurance_indicator",          &Drive::percentage_used        },
    {"/endurance_used/current_percent",                    &Drive::percentage_used        },
    {"/nvme_smart_health_information_log/available_spare", &Drive::available_spare_percent},
    {"/spare_available/current_percent",                   &Drive::available_spare_percent},
});

// Where these stand, a finding points.
struct PlaceRow {
    const char* field;
    const char* key;
    bool (*is_told)(const Drive& drive);
};
constexpr auto kPlaces = std::to_array<PlaceRow>({
    {"smart_alert",             "\"passed\"",           [](const Drive& d) { return d.smart_alert.has_value(); }},
    {"nvme_warnings",           "\"critical_warning\"",
     [](const Drive& d) { return d.nvme_warnings.value_or(0) != 0; }                                            },
    {"smartctl_status",         "\"exit_status\"",
     [](const Drive& d) { return d.smartctl_status.value_or(0) != 0; }                                          },
    {"media_errors",            "\"media_errors\"",
     [](const Drive& d) { return d.media_errors && d.interface == "NVMe"; }                                     },
    {"percentage_used",         "\"percentage_used\"",
     [](const Drive& d) { return d.percentage_used.has_value(); }                                               },
    {"available_spare_percent", "\"available_spare\"",
     [](const Drive& d) { return d.available_spare_percent.has_value(); }                                       },
    {"temperature_celsius",     "\"temperature\"",
     [](const Drive& d) { return d.temperature_celsius.has_value(); }                                           },
});

// {"naa": 5, "oui": 3152, "id": 11111111111} is 5000c50296b9a1c7: 4, 24 and 36 bits.
Text wwn_of(const json& value) {
    const auto naa = json_integer(value, "/wwn/naa"), oui = json_integer(value, "/wwn/oui"),
               id = json_integer(value, "/wwn/id");
    if (!naa || !oui || !id || *naa < 0 || *naa > 15 || *oui < 0 || *oui > 0xffffff || *id < 0 ||
        *id > 0xfffffffff)
        return std::nullopt;
    char text[32];
    std::snprintf(text, sizeof text, "%01x%06x%09llx", static_cast<unsigned>(*naa),
                  static_cast<unsigned>(*oui), static_cast<unsigned long long>(*id));
    return std::string(text);
}

// Attributes of ATA drives that count sectors. Some makers use a number for something else, which the
// attribute's name says: "198 Host_Reads_GiB", "197 Not_In_Use", "5 Retried_Blk_Ct".
struct AttributeRow {
    std::int64_t id;
    Integer Drive::*field;
    const char* place;
    std::array<std::string_view, 3> words;  // one of them stands in the name
};
// clang-format off
constexpr auto kAttributes = std::to_array<AttributeRow>({
    {5,   &Drive::reallocated_sectors, "reallocated_sectors", {"Realloc", "Retired", "Bad_Bl"}},
    {187, &Drive::media_errors,        "media_errors",        {"ncor", "Unc", "UE_"}          },
    {197, &Drive::media_errors,        "media_errors",        {"Pending", "ncor", "Unc"}      },
    {198, &Drive::media_errors,        "media_errors",        {"ncor", "Unc", "UNC"}          },
});
// clang-format on

// As the tool itself reads the raw value, whose upper bytes may be the maker's own: "77 (0 5)".
Integer raw_count(const json& attribute) {
    auto count = json_integer(attribute, "/raw/value");
    if (const auto text = json_text(attribute, "/raw/string"); text && count) {
        if (const auto told = integer(text->substr(0, text->find(' ')))) count = told;
    }
    if (!count || *count < 0) return std::nullopt;
    return *count & 0xffffffff;
}

// The largest of those that count the same sectors: 187 reported uncorrectable, 197 pending, 198 offline
// uncorrectable.
void read_ata_attributes(const JsonText& found, const Reading& reading, Drive& drive) {
    const json::json_pointer path("/ata_smart_attributes/table");
    if (!found.value.contains(path) || !found.value.at(path).is_array()) return;
    for (const json& attribute : found.value.at(path)) {
        const auto id = json_integer(attribute, "/id");
        const auto name = json_text(attribute, "/name").value_or("");
        const auto count = raw_count(attribute);
        const auto* const row =
            std::find_if(kAttributes.begin(), kAttributes.end(), [&](const AttributeRow& one) {
                return one.id == id &&
                       std::any_of(one.words.begin(), one.words.end(),
                                   [&](std::string_view word) { return name.find(word) != npos; });
            });
        if (row == kAttributes.end() || !count) continue;
        auto& field = drive.*row->field;
        if (field && *field >= *count) continue;
        field = count;
        std::erase_if(drive.elsewhere,
                      [&](const FieldPlace& at) { return at.field == row->place; });
        const auto line =
            found.line_of({"\"ata_smart_attributes\"", "\"" + name + "\"", "\"raw\"", "\"value\""});
        drive.elsewhere.push_back({row->place, reading.at(line)});
    }
}

// Errors that a SAS drive could not correct, read, written and verified, and the blocks that it has given
// up. Its "non-medium errors" are the bus's and those of commands that it does not know.
void read_scsi_errors(const JsonText& found, const Reading& reading, Drive& drive) {
    constexpr const char* kTotal = "total_uncorrected_errors";
    std::int64_t line = 0;
    for (const std::string kind : {"read", "write", "verify"}) {
        const auto count =
            json_integer(found.value, ("/scsi_error_counter_log/" + kind + "/" + kTotal).c_str());
        if (!count || *count < 0 || *count >= INT32_MAX) continue;
        drive.media_errors = drive.media_errors.value_or(0) + *count;
        if (line != 0 && *count == 0) continue;
        line = found.line_of(
            {"\"scsi_error_counter_log\"", "\"" + kind + "\"", "\"" + std::string(kTotal) + "\""});
    }
    if (line != 0) drive.elsewhere.push_back({"media_errors", reading.at(line)});
    const auto grown = json_integer(found.value, "/scsi_grown_defect_list");
    if (!grown || *grown < 0) return;
    drive.reallocated_sectors = grown;
    drive.elsewhere.push_back(
        {"reallocated_sectors", reading.at(found.line_of("\"scsi_grown_defect_list\""))});
}

// The temperature at which a SAS drive stops, or the highest that an ATA drive is made for.
void read_temperature_limit(const json& value, Drive& drive) {
    auto limit = json_integer(value, "/temperature/drive_trip");
    if (!limit) limit = json_integer(value, "/temperature/limit_max");
    if (limit && *limit > 0 && drive.temperature_celsius &&
        *drive.temperature_celsius > static_cast<double>(*limit))
        drive.temperature_state = "above its limit, " + std::to_string(*limit) + " C";
}

// "Percentage Used Endurance Indicator" of an ATA drive's statistics.
void read_ata_wear(const json& value, Drive& drive) {
    const json::json_pointer path("/ata_device_statistics/pages");
    if (!value.contains(path) || !value.at(path).is_array()) return;
    for (const json& page : value.at(path)) {
        if (!page.is_object() || !page.contains("table") || !page["table"].is_array()) continue;
        for (const json& row : page["table"]) {
            if (json_text(row, "/name") != "Percentage Used Endurance Indicator") continue;
            if (const auto used = json_integer(row, "/value"))
                drive.percentage_used = static_cast<double>(*used);
        }
    }
}

// The open or the command line failed: nothing of the drive was read.
constexpr std::int64_t kNoDrive = 0x3;

}  // namespace

void read_smartctl(CaptureLines& lines, Reading& reading) {
    const auto found = read_json(lines, reading);
    if (!found) return;
    const json& value = found->value;

    const auto status = json_integer(value, "/smartctl/exit_status");
    if (!status) {
        reading.how.gaps.push_back({found->first_line, "it is not smartctl's"});
        return;
    }
    if (*status & kNoDrive) {
        const auto why = json_text(value, "/smartctl/messages/0/string");
        reading.how.errors.push_back({found->line_of("\"messages\""), why.value_or("Failure")});
        return;
    }

    auto drive = reading.entity_at<Drive>(found->line_of("\"device\""));
    for (const auto& [path, field] : kTexts) {
        if (!(drive.*field)) drive.*field = json_text(value, path);
    }
    if (drive.serial) drive.serial = told_identity(*drive.serial);
    for (const auto& [path, field] : kNumbers) {
        if (!(drive.*field)) drive.*field = json_integer(value, path);
    }
    for (const auto& [path, field] : kReals) {
        const auto number = json_integer(value, path);
        if (number && !(drive.*field)) drive.*field = static_cast<double>(*number);
    }
    drive.wwn = wwn_of(value);
    read_ata_attributes(*found, reading, drive);
    read_scsi_errors(*found, reading, drive);
    if (!drive.percentage_used) read_ata_wear(value, drive);
    read_temperature_limit(value, drive);
    drive.smartctl_status = status;

    const auto name = json_text(value, "/device/name");
    if (name && !name->starts_with("/dev/bus/")) drive.device = name;
    const auto protocol = json_text(value, "/device/protocol");
    if (protocol) {
        drive.interface = *protocol == "ATA" ? "SATA" : *protocol == "SCSI" ? "SAS" : *protocol;
    }
    if (const auto rate = json_integer(value, "/rotation_rate"))
        drive.media = *rate == 0 ? "SSD" : "HDD";
    if (drive.interface == "NVMe") drive.media = "SSD";

    const auto passed = json_flag(value, "/smart_status/passed");
    if (passed) drive.smart_alert = !*passed;
    const auto warning = json_integer(value, "/nvme_smart_health_information_log/critical_warning");
    if (warning && *warning != 0) drive.smart_alert = true;
    drive.nvme_warnings = warning;
    if (const auto threshold =
            json_integer(value, "/nvme_smart_health_information_log/available_spare_threshold"))
        drive.available_spare_threshold = static_cast<double>(*threshold);

    const bool is_supported = json_flag(value, "/smart_support/available").value_or(true);
    if (!passed && is_supported)
        reading.how.gaps.push_back({found->first_line, "the SMART status is missing"});
    // A RAID controller's volume looks like a drive that knows no SMART.
    if (!passed && !is_supported) return;

    for (const auto& [field, key, is_told] : kPlaces) {
        if (is_told(drive)) drive.elsewhere.push_back({field, reading.at(found->line_of(key))});
    }
    reading.found.drives.push_back(std::move(drive));
}

// {"devices": [{"name": "/dev/sda", "type": "sat", "protocol": "ATA"}]}
void read_smartctl_scan(CaptureLines& lines, Reading& reading) {
    const auto found = read_json(lines, reading);
    if (found && !json_integer(found->value, "/smartctl/exit_status"))
        reading.how.gaps.push_back({found->first_line, "it is not smartctl's"});
}

// {"blockdevices": [
//    {"name":"sda", "type":"disk", "size":1000204886016, "model":"ST1000NM0045", "serial":"Z1X00000",
//     "wwn":"0x5000c500a0000000", "rota":true, "tran":"sata", "log-sec":512, "children":[...]}
// ]}
// Older versions print numbers and flags as texts.
void read_lsblk(CaptureLines& lines, Reading& reading) {
    const auto found = read_json(lines, reading);
    if (!found) return;
    const json::json_pointer path("/blockdevices");
    if (!found->value.contains(path) || !found->value.at(path).is_array()) {
        reading.how.gaps.push_back({found->first_line, "it is not lsblk's"});
        return;
    }
    for (const json& row : found->value.at(path)) {
        const auto name = json_text(row, "/name");
        const auto kind = json_text(row, "/type");
        const auto transport = json_text(row, "/tran");
        if (!name || (kind && *kind != "disk") || transport == "usb") continue;
        auto drive = reading.entity_at<Drive>(found->line_of("\"" + *name + "\""));
        drive.device = name->starts_with("/dev/") ? *name : "/dev/" + *name;
        drive.serial = json_text(row, "/serial");
        if (drive.serial) drive.serial = told_identity(*drive.serial);
        drive.wwn = json_text(row, "/wwn");
        if (drive.wwn && drive.wwn->starts_with("0x")) drive.wwn->erase(0, 2);
        drive.model = json_text(row, "/model");
        drive.capacity_bytes = json_integer(row, "/size");
        if (!drive.capacity_bytes) {
            if (const auto size = json_text(row, "/size")) drive.capacity_bytes = integer(*size);
        }
        drive.sector_bytes = json_integer(row, "/log-sec");
        auto rotates = json_flag(row, "/rota");
        if (const auto word = json_text(row, "/rota")) rotates = *word == "1";
        if (transport == "sata" || transport == "ata") drive.interface = "SATA";
        if (transport == "sas") drive.interface = "SAS";
        if (transport == "nvme") drive.interface = "NVMe";
        // Without a transport it may be a volume of a RAID controller, which is no drive of its own.
        if (drive.interface && rotates) drive.media = *rotates ? "HDD" : "SSD";
        if (drive.interface || drive.serial) reading.found.drives.push_back(std::move(drive));
    }
}

}  // namespace qvhost::inventory
