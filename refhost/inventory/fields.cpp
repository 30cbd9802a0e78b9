#include "inventory/fields.h"

#include <array>

namespace qvhost::inventory {

namespace {

// clang-format off
constexpr auto kSystem = std::to_array<Field<System>>({
    {"manufacturer", &System::manufacturer, "", "who made it",                             "dmidecode"},
    {"product",      &System::product,      "", "the product's name",                      "dmidecode"},
    {"serial",       &System::serial,       "", "the system's serial number",              "dmidecode", Secret::serial},
    {"uuid",         &System::uuid,         "", "the system's UUID",                       "dmidecode", Secret::serial},
    {"asset_tag",    &System::asset_tag,    "", "the chassis' asset tag",                  "dmidecode", Secret::serial},
    {"firmware",     &System::firmware,     "", "the version of its BIOS or UEFI", "dmidecode"},
    {"is_virtual",   &System::is_virtual,   "", "whether it is a virtual machine",         "dmidecode"},
});

constexpr auto kProcessor = std::to_array<Field<Processor>>({
    {"socket",  &Processor::socket,  "", "the socket's name on the board",               "dmidecode, /proc/cpuinfo"},
    {"model",   &Processor::model,   "", "the model's name",                             "dmidecode, /proc/cpuinfo"},
    {"cores",   &Processor::cores,   "", "number of cores",                              "dmidecode, /proc/cpuinfo"},
    {"threads", &Processor::threads, "", "number of hardware threads",                   "dmidecode, /proc/cpuinfo"},
    {"state",   &Processor::state,   "", "as the firmware has it: \"Populated, Enabled\"", "dmidecode"},
});

constexpr auto kMemoryModule = std::to_array<Field<MemoryModule>>({
    {"slot",           &MemoryModule::slot,           "",      "the slot's name on the board", "dmidecode"},
    {"capacity_bytes", &MemoryModule::capacity_bytes, "bytes", "its size",                     "dmidecode"},
    {"type",           &MemoryModule::type,           "",      "DDR4, DDR5, ...",              "dmidecode"},
    {"speed_mts",      &MemoryModule::speed_mts,      "MT/s",  "the speed it was made for",    "dmidecode"},
    {"manufacturer",   &MemoryModule::manufacturer,   "",      "who made it",                  "dmidecode"},
    {"serial",         &MemoryModule::serial,         "",      "its serial number",            "dmidecode", Secret::serial},
    {"part",           &MemoryModule::part,           "",      "its part number",              "dmidecode"},
});

constexpr auto kBmc = std::to_array<Field<Bmc>>({
    {"firmware",  &Bmc::firmware,  "", "the firmware's revision",       "ipmitool, ipmiutil"},
    {"ipmi",      &Bmc::ipmi,      "", "the IPMI version it speaks",    "ipmitool, ipmiutil"},
    {"self_test", &Bmc::self_test, "", "the self test's result",        "ipmitool"},
    {"address",   &Bmc::address,   "", "its IP address",                "ipmitool, ipmiutil", Secret::network},
    {"mac",       &Bmc::mac,       "", "its MAC address",               "ipmitool, ipmiutil", Secret::network},
});

constexpr auto kSensor = std::to_array<Field<Sensor>>({
    {"name",    &Sensor::name,    "",            "as the BMC calls it; need not be unique",                          "ipmitool"},
    {"number",  &Sensor::number,  "",            "the sensor's number, as in 30h",                                   "ipmitool"},
    {"kind",    &Sensor::kind,    "",            "temperature, fan, voltage, current, power, discrete, ...",         "ipmitool"},
    {"reading", &Sensor::reading, "its own unit", "the value read; null for a discrete sensor",                       "ipmitool"},
    {"unit",    &Sensor::unit,    "",            "the reading's unit, as printed",                                   "ipmitool"},
    {"status",  &Sensor::status,  "",            "as printed: ok, nc (non-critical), cr (critical), nr (non-recoverable), na, ns (not scanned)", "ipmitool"},
    {"lnr",     &Sensor::lnr,     "its own unit", "lower non-recoverable threshold; null where the tool prints na",   "ipmitool"},
    {"lc",      &Sensor::lc,      "its own unit", "lower critical threshold",                                         "ipmitool"},
    {"lnc",     &Sensor::lnc,     "its own unit", "lower non-critical threshold",                                     "ipmitool"},
    {"unc",     &Sensor::unc,     "its own unit", "upper non-critical threshold",                                     "ipmitool"},
    {"uc",      &Sensor::uc,      "its own unit", "upper critical threshold",                                         "ipmitool"},
    {"unr",     &Sensor::unr,     "its own unit", "upper non-recoverable threshold",                                  "ipmitool"},
    {"states",  &Sensor::states,  "",            "the words of a discrete sensor",                                   "ipmitool"},
});

constexpr auto kPowerSupply = std::to_array<Field<PowerSupply>>({
    {"slot",        &PowerSupply::slot,        "",      "the bay's name or number",                "ipmiutil, ipmitool, dmidecode"},
    {"present",     &PowerSupply::present,     "",      "whether one is in the bay",               "ipmiutil, ipmitool, dmidecode"},
    {"state",       &PowerSupply::state,       "",      "as printed",                              "ipmiutil, ipmitool, dmidecode"},
    {"input_state", &PowerSupply::input_state, "",      "of the mains behind it, as printed",      "ipmiutil, ipmitool"},
    {"input_watts", &PowerSupply::input_watts, "watts", "the power it draws",                      "ipmiutil, ipmitool"},
    {"model",       &PowerSupply::model,       "",      "the model's name",                        "ipmiutil, ipmitool, dmidecode"},
    {"serial",      &PowerSupply::serial,      "",      "its serial number",                       "ipmiutil, ipmitool, dmidecode", Secret::serial},
    {"part",        &PowerSupply::part,        "",      "its part number",                         "ipmiutil, ipmitool, dmidecode"},
    {"firmware",    &PowerSupply::firmware,    "",      "its firmware's version",                  "ipmiutil, ipmitool"},
});

constexpr auto kFru = std::to_array<Field<Fru>>({
    {"device",       &Fru::device,       "", "the FRU device, as printed", "ipmitool"},
    {"manufacturer", &Fru::manufacturer, "", "who made it",                "ipmitool"},
    {"product",      &Fru::product,      "", "the product's name",         "ipmitool"},
    {"part",         &Fru::part,         "", "its part number",            "ipmitool"},
    {"serial",       &Fru::serial,       "", "its serial number",          "ipmitool", Secret::serial},
});

constexpr auto kController = std::to_array<Field<Controller>>({
    {"number",   &Controller::number,   "", "the number by which its tool knows it", "storcli, arcconf, sas2ircu"},
    {"model",    &Controller::model,    "", "the model's name",                      "storcli, arcconf, sas2ircu"},
    {"serial",   &Controller::serial,   "", "its serial number",                     "storcli, arcconf", Secret::serial},
    {"firmware", &Controller::firmware, "", "the firmware's version",                "storcli, arcconf, sas2ircu"},
    {"status",   &Controller::status,   "", "as printed",                            "storcli, arcconf"},
    {"volumes",  &Controller::volumes,  "", "how many volumes it says it has",       "storcli, arcconf"},
    {"drives",   &Controller::drives,   "", "how many drives it says it has",        "storcli, arcconf"},
});

constexpr auto kBattery = std::to_array<Field<Battery>>({
    {"controller",          &Battery::controller,          "",                "whose cache it keeps",     "storcli, arcconf"},
    {"model",               &Battery::model,               "",                "BBU, CVPM05, ...",         "storcli, arcconf"},
    {"state",               &Battery::state,               "",                "as printed",               "storcli, arcconf"},
    {"charge_percent",      &Battery::charge_percent,      "percent",         "how full it is",           "storcli, arcconf"},
    {"temperature_celsius", &Battery::temperature_celsius, "degrees Celsius", "its temperature",          "storcli, arcconf"},
});

constexpr auto kEnclosure = std::to_array<Field<Enclosure>>({
    {"controller", &Enclosure::controller, "", "the controller it is at",       "storcli, arcconf, sas2ircu"},
    {"number",     &Enclosure::number,     "", "the enclosure's id",            "storcli, arcconf, sas2ircu"},
    {"slots",      &Enclosure::slots,      "", "how many slots it has",         "storcli, arcconf, sas2ircu"},
    {"state",      &Enclosure::state,      "", "as printed",                    "storcli, arcconf"},
    {"model",      &Enclosure::model,      "", "the product's name",            "storcli, arcconf"},
    {"serial",     &Enclosure::serial,     "", "its serial number",             "storcli", Secret::serial},
});

constexpr auto kVolume = std::to_array<Field<Volume>>({
    {"controller",       &Volume::controller,       "",        "the RAID controller; null for software storage",   "storcli, arcconf, sas2ircu"},
    {"drive_group",      &Volume::drive_group,      "",        "the group of drives it lies on",                   "storcli"},
    {"number",           &Volume::number,           "",        "its number at the controller",                     "storcli, arcconf, sas2ircu"},
    {"raid",             &Volume::raid,             "",        "RAID level, as printed",                           "storcli, arcconf, sas2ircu, mdadm, zpool"},
    {"state",            &Volume::state,            "",        "as printed: Optl, Dgrd, Optimal, ...",             "storcli, arcconf, sas2ircu, mdadm, zpool"},
    {"access",           &Volume::access,           "",        "RW, RO, ...",                                      "storcli"},
    {"consistent",       &Volume::consistent,       "",        "whether its parity is known to be right",          "storcli"},
    {"cache",            &Volume::cache,            "",        "cache policy, as printed",                         "storcli, arcconf"},
    {"capacity_bytes",   &Volume::capacity_bytes,   "bytes",   "its size; storcli's GB is 2^30",                   "storcli, arcconf, sas2ircu"},
    {"name",             &Volume::name,             "",        "the name that people gave it",                     "storcli, arcconf"},
    {"device",           &Volume::device,           "",        "/dev/...",                                         "storcli, arcconf, mdadm, lsblk"},
    {"operation",        &Volume::operation,        "",        "what runs on it: Rebuild, CC, ...",                "storcli, arcconf, mdadm, zpool"},
    {"progress_percent", &Volume::progress_percent, "percent", "how far that is",                                  "storcli, arcconf, mdadm, zpool"},
});

constexpr auto kDrive = std::to_array<Field<Drive>>({
    {"controller",              &Drive::controller,              "",                "the RAID controller; null if behind none",      "storcli, arcconf, sas2ircu"},
    {"enclosure",               &Drive::enclosure,               "",                "the enclosure's id; null if in none",           "storcli, arcconf, sas2ircu"},
    {"slot",                    &Drive::slot,                    "",                "the slot in it",                                "storcli, arcconf, sas2ircu"},
    {"device_id",               &Drive::device_id,               "",                "the controller's own number of it",             "storcli, arcconf"},
    {"state",                   &Drive::state,                   "",                "as printed: Onln, Offln, Failed, ...",          "storcli, arcconf, sas2ircu, mdadm, zpool"},
    {"drive_group",             &Drive::drive_group,             "",                "the group it belongs to; null if none",         "storcli"},
    {"is_foreign",              &Drive::is_foreign,              "",                "whether its configuration is another controller's", "storcli"},
    {"spare",                   &Drive::spare,                   "",                "global, dedicated; null if it is no spare",     "storcli, arcconf, sas2ircu"},
    {"rebuild_percent",         &Drive::rebuild_percent,         "percent",         "how far its rebuild is; null if none runs",     "storcli"},
    {"capacity_bytes",          &Drive::capacity_bytes,          "bytes",           "its size; storcli's GB is 2^30",                "storcli, arcconf, sas2ircu, smartctl"},
    {"interface",               &Drive::interface,               "",                "SAS, SATA, NVMe",                               "storcli, arcconf, sas2ircu, smartctl"},
    {"media",                   &Drive::media,                   "",                "HDD, SSD",                                      "storcli, arcconf, sas2ircu, smartctl"},
    {"sector_bytes",            &Drive::sector_bytes,            "bytes",           "the size of a sector",                          "storcli, arcconf, smartctl"},
    {"model",                   &Drive::model,                   "",                "the model's name",                              "storcli, arcconf, sas2ircu, smartctl"},
    {"serial",                  &Drive::serial,                  "",                "its serial number",                             "storcli, arcconf, sas2ircu, smartctl", Secret::serial},
    {"wwn",                     &Drive::wwn,                     "",                "its World Wide Name",                           "storcli, arcconf, sas2ircu, smartctl", Secret::serial},
    {"firmware",                &Drive::firmware,                "",                "its firmware's version",                        "storcli, arcconf, sas2ircu, smartctl"},
    {"device",                  &Drive::device,                  "",                "/dev/...",                                      "smartctl, lsblk"},
    {"temperature_celsius",     &Drive::temperature_celsius,     "degrees Celsius", "its temperature",                               "storcli, arcconf, smartctl"},
    {"media_errors",            &Drive::media_errors,            "",                "errors of the medium, counted",                 "storcli, arcconf, smartctl"},
    {"other_errors",            &Drive::other_errors,            "",                "errors of link and command, counted",           "storcli, arcconf"},
    {"predicted_failures",      &Drive::predicted_failures,      "",                "predicted failures, counted",                   "storcli, arcconf"},
    {"shield_counter",          &Drive::shield_counter,          "",                "how often it was shielded for diagnosis",       "storcli"},
    {"smart_alert",             &Drive::smart_alert,             "",                "whether SMART warns of a failure",              "storcli, arcconf, smartctl"},
    {"percentage_used",         &Drive::percentage_used,         "percent",         "wear of a solid-state drive",                   "smartctl"},
    {"available_spare_percent", &Drive::available_spare_percent, "percent",         "spare blocks that are left",                    "smartctl"},
    {"power_on_hours",          &Drive::power_on_hours,          "hours",           "how long it has run",                           "arcconf, smartctl"},
});

constexpr auto kVolumeMember = std::to_array<Field<VolumeMember>>({
    {"controller",  &VolumeMember::controller,  "", "the volume's RAID controller; null for software storage", "storcli, arcconf, sas2ircu, ssacli"},
    {"drive_group", &VolumeMember::drive_group, "", "the group of drives; null for a global spare, and where the tool counts no groups", "storcli, arcconf"},
    {"volume",      &VolumeMember::volume,      "", "the volume's `number`; null for a spare of no volume, and for software storage", "storcli, arcconf, sas2ircu, ssacli"},
    {"volume_name", &VolumeMember::volume_name, "", "the volume's `name`",                                 "storcli, arcconf, mdadm, zpool"},
    {"span",        &VolumeMember::span,        "", "the array (span) in the group, the vdev of a pool",   "storcli, arcconf, zpool"},
    {"position",    &VolumeMember::position,    "", "its place there: the row, the segment, md's RaidDevice", "storcli, arcconf, sas2ircu, mdadm"},
    {"is_spare",    &VolumeMember::is_spare,    "", "whether it is a hot spare and holds no data",         "storcli, arcconf, sas2ircu, ssacli, mdadm, zpool"},
    {"state",       &VolumeMember::state,       "", "as printed: Onln, Msng, Present, active sync, ...",   "storcli, arcconf, mdadm, zpool"},
    {"enclosure",   &VolumeMember::enclosure,   "", "the drive's enclosure at that controller",            "storcli, arcconf, sas2ircu, ssacli"},
    {"slot",        &VolumeMember::slot,        "", "the drive's slot; null if none is told or the drive is missing", "storcli, arcconf, sas2ircu, ssacli"},
    {"device_id",   &VolumeMember::device_id,   "", "the controller's own number of the drive",            "storcli, arcconf"},
    {"device",      &VolumeMember::device,      "", "/dev/..., of the drive and not of a partition",       "mdadm, zpool, lsblk"},
    {"serial",      &VolumeMember::serial,      "", "the drive's serial number",                           "arcconf, ssacli, zpool, and whatever lists the drive", Secret::serial},
});
// clang-format on

}  // namespace

// clang-format off
template <> const Kind<System>& kind_of()       { static const Kind<System> kind       {"systems",        "The machine.",                                          &Inventory::systems,        kSystem};       return kind; }
template <> const Kind<Processor>& kind_of()    { static const Kind<Processor> kind    {"processors",     "A processor, by socket.",                               &Inventory::processors,     kProcessor};    return kind; }
template <> const Kind<MemoryModule>& kind_of() { static const Kind<MemoryModule> kind {"memory_modules", "A memory module; empty slots are none.",                &Inventory::memory_modules, kMemoryModule}; return kind; }
template <> const Kind<Bmc>& kind_of()          { static const Kind<Bmc> kind          {"bmcs",           "A management controller.",                              &Inventory::bmcs,           kBmc};          return kind; }
template <> const Kind<Sensor>& kind_of()       { static const Kind<Sensor> kind       {"sensors",        "A sensor of the BMC.",                                  &Inventory::sensors,        kSensor};       return kind; }
template <> const Kind<PowerSupply>& kind_of()  { static const Kind<PowerSupply> kind  {"power_supplies", "A power supply, or the bay for one.",                   &Inventory::power_supplies, kPowerSupply};  return kind; }
template <> const Kind<Fru>& kind_of()          { static const Kind<Fru> kind          {"frus",           "A field-replaceable unit that the BMC knows.",          &Inventory::frus,           kFru};          return kind; }
template <> const Kind<Controller>& kind_of()   { static const Kind<Controller> kind   {"controllers",    "A RAID controller or host bus adapter.",                &Inventory::controllers,    kController};   return kind; }
template <> const Kind<Battery>& kind_of()      { static const Kind<Battery> kind      {"batteries",      "What keeps a controller's cache alive.",                &Inventory::batteries,      kBattery};      return kind; }
template <> const Kind<Enclosure>& kind_of()    { static const Kind<Enclosure> kind    {"enclosures",     "What drives are plugged into.",                         &Inventory::enclosures,     kEnclosure};    return kind; }
template <> const Kind<Volume>& kind_of()       { static const Kind<Volume> kind       {"volumes",        "What an operating system sees as a drive: a virtual drive, a logical device, an array, a pool.", &Inventory::volumes, kVolume}; return kind; }
template <> const Kind<Drive>& kind_of()        { static const Kind<Drive> kind        {"drives",         "A physical drive.",                                     &Inventory::drives,         kDrive};        return kind; }
template <> const Kind<VolumeMember>& kind_of() { static const Kind<VolumeMember> kind {"volume_members", "Which drives make which volume: a row for each drive of each volume, and for each hot spare that the tool lists with them.", &Inventory::volume_members, kVolumeMember}; return kind; }
// clang-format on

}  // namespace qvhost::inventory
