#include "compare/kinds.h"

#include <array>

namespace qvhost::compare {

namespace {

using enum Telling;
using findings::Subsystem;

constexpr const char* kCrossed = "crossed a threshold";

// clang-format off
const std::vector<KindRow> kKinds = {
    {"collection", "Collection", "collection", "This machine", {{}}, {
        {"host",       if_known},
        {"machine_id", if_known},
        {"os",         if_known},
        {"kernel",     if_known},
        {"run_as",     if_known},
        {"version",    if_known},
    }},
    {"systems", "System", "system", "System[ {product}]", {{"uuid"}, {"serial"}, {}}, {
        {"manufacturer", plain},
        {"product",      plain},
        {"serial",       identity},
        {"uuid",         identity},
        {"asset_tag",    plain},
        {"firmware",     plain},
        {"is_virtual",   plain},
    }, "", {Subsystem::system}, true},
    {"processors", "Processors", "processor", "Processor[ {socket}]", {{"socket"}, {}}, {
        {"socket",  never},
        {"model",   plain},
        {"cores",   plain},
        {"threads", plain},
        {"state",   state},
    }, "", {Subsystem::processor}, true},
    {"memory_modules", "Memory", "memory module", "Memory module[ {slot}][, serial {serial}]", {{"slot", "serial"}, {"serial"}, {"slot"}}, {
        {"slot",           place},
        {"capacity_bytes", plain},
        {"type",           plain},
        {"speed_mts",      plain},
        {"manufacturer",   plain},
        {"serial",         identity},
        {"part",           plain},
    }, "", {Subsystem::memory}, true},
    {"bmcs", "BMC", "BMC", "BMC", {{"mac"}, {}}, {
        {"firmware",  plain},
        {"ipmi",      plain},
        {"self_test", state},
        {"address",   plain},
        {"mac",       identity},
    }, "", {Subsystem::bmc}},
    {"sensors", "Sensors", "sensor", "Sensor[ {name}][ ({number})]", {{"kind", "name", "number"}, {"name", "number"}, {"kind", "name"}, {"name"}, {"number"}}, {
        {"name",    never},
        {"number",  never},
        {"kind",    never},
        {"reading", beside},
        {"unit",    never},
        {"status",  state, kCrossed},
        {"lnr",     if_known},
        {"lc",      if_known},
        {"lnc",     if_known},
        {"unc",     if_known},
        {"uc",      if_known},
        {"unr",     if_known},
        {"states",  state},
    }, "", {Subsystem::temperature, Subsystem::cooling, Subsystem::power, Subsystem::bmc}},
    {"power_supplies", "Power supplies", "power supply", "Power supply[ {slot}][, serial {serial}]", {{"slot", "serial"}, {"serial"}, {"slot"}, {}}, {
        {"slot",        place},
        {"present",     never},
        {"state",       state},
        {"input_state", state, "lost its input"},
        {"input_watts", reading},
        {"model",       plain},
        {"serial",      identity},
        {"part",        plain},
        {"firmware",    plain},
    }, "present", {Subsystem::power, Subsystem::bmc}},
    {"frus", "Field-replaceable units", "FRU", "FRU[ {device}][, serial {serial}]", {{"device", "serial"}, {"serial"}, {"device"}}, {
        {"device",       place},
        {"manufacturer", plain},
        {"product",      plain},
        {"part",         plain},
        {"serial",       identity},
    }, "", {Subsystem::bmc}, false, "device"},
    {"controllers", "Controllers", "controller", "Controller[ {number}][, {model}]", {{"model", "number", "serial"}, {"serial"}, {"model", "number"}, {"number"}}, {
        {"number",   place},
        {"model",    plain},
        {"serial",   identity},
        {"firmware", plain},
        {"status",   state},
        {"volumes",  never},
        {"drives",   never},
    }, "", {Subsystem::storage}},
    {"batteries", "Batteries", "battery", "Battery[ of controller {controller}]", {{"model", "controller"}, {"controller"}, {"model"}}, {
        {"controller",          place},
        {"model",               plain},
        {"state",               state},
        {"charge_percent",      reading},
        {"temperature_celsius", reading},
    }, "", {Subsystem::storage}},
    {"enclosures", "Enclosures", "enclosure", "Enclosure[ {number}][ of controller {controller}]", {{"controller", "number", "serial"}, {"controller", "number"}, {"serial"}}, {
        {"controller", place},
        {"number",     place},
        {"slots",      plain},
        {"state",      state},
        {"model",      plain},
        {"serial",     identity},
    }, "", {Subsystem::storage}},
    {"volumes", "Volumes", "volume", "Volume[ {number}][ of controller {controller}][ {device}][ \"{name}\"]", {{"controller", "name", "number"}, {"controller", "number"}, {"device"}, {"name"}}, {
        {"controller",       place},
        {"drive_group",      setting},
        {"number",           place},
        {"raid",             plain},
        {"state",            state, "degraded"},
        {"access",           plain},
        {"consistent",       plain},
        {"cache",            plain},
        {"capacity_bytes",   plain},
        {"name",             setting},
        {"device",           plain},
        {"operation",        setting},
        {"progress_percent", never},
    }, "", {Subsystem::storage}},
    {"drives", "Drives", "drive", "Drive[ [{enclosure}:]{slot}][ of controller {controller}][ {device}][, serial {serial}]", {{"controller", "enclosure", "slot", "serial"}, {"serial"}, {"wwn"}, {"controller", "enclosure", "slot"}, {"device"}}, {
        {"controller",              place},
        {"enclosure",               place},
        {"slot",                    place},
        {"device_id",               plain},
        {"state",                   state},
        {"drive_group",             setting},
        {"is_foreign",              plain},
        {"spare",                   setting},
        {"rebuild_percent",         never},
        {"capacity_bytes",          plain},
        {"interface",               plain},
        {"media",                   plain},
        {"sector_bytes",            plain},
        {"model",                   plain},
        {"serial",                  identity},
        {"wwn",                     identity},
        {"firmware",                plain},
        {"device",                  plain},
        {"temperature_celsius",     reading},
        {"media_errors",            counter},
        {"other_errors",            counter},
        {"predicted_failures",      counter},
        {"shield_counter",          counter},
        {"smart_alert",             state, "predicts its failure"},
        {"percentage_used",         counter},
        {"available_spare_percent", counter},
        {"power_on_hours",          reading},
    }, "", {Subsystem::storage}},
    // What became of the drive itself is told of it; here only that another one makes the volume.
    {"volume_members", "Drives of volumes", "volume member", "Drive[ [{enclosure}:]{slot}][ {device}][ at row {position}][ in volume {volume}][ of controller {controller}][, volume \"{volume_name}\"]",
     {{"controller", "drive_group", "volume", "volume_name", "is_spare", "serial"}, {"controller", "drive_group", "volume", "volume_name", "serial"}, {"controller", "drive_group", "serial", "volume"},
      {"controller", "drive_group", "volume", "volume_name", "enclosure", "slot"}, {"controller", "drive_group", "enclosure", "slot", "volume"},
      {"controller", "drive_group", "volume", "volume_name", "device"}, {"controller", "drive_group", "volume", "volume_name", "span", "position"}}, {
        {"controller",  never},
        {"drive_group", never},
        {"volume",      never},
        {"volume_name", never},
        {"span",        setting},
        {"position",    setting},
        {"is_spare",    setting},
        {"state",       never},
        {"enclosure",   setting},
        {"slot",        setting},
        {"device_id",   never},
        {"device",      never},
        {"serial",      never},
    }, "", {Subsystem::storage}, false, "", "volumes"},
};

constexpr auto kRuleWords = std::to_array<RuleWord>({
    {"drive_rebuild",    "rebuilding"},
    {"volume_rebuild",   "rebuilding"},
    {"drive_foreign",    "became foreign"},
    {"drive_temperature", "too hot or too cold"},
});
// clang-format on

}  // namespace

std::span<const KindRow> kinds() { return kKinds; }
std::span<const RuleWord> rule_words() { return kRuleWords; }

}  // namespace qvhost::compare
