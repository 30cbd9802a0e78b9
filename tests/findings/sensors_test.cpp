#include "findings/sensors.h"
#include "findings/chassis.h"

#include <gtest/gtest.h>

#include "told.h"

namespace qvhost::findings {
namespace {

using inventory::Inventory;
using inventory::Sensor;

Sensor analog(const char* name, const char* kind, double reading, const char* unit,
              const char* status) {
    Sensor one;
    one.place = {"sensorinfo.txt", 1};
    one.name = name;
    one.kind = kind;
    one.reading = reading;
    one.unit = unit;
    one.status = status;
    return one;
}

Sensor discrete(const char* name, inventory::Texts states) {
    Sensor one;
    one.place = {"sdrinfo.txt", 1};
    one.name = name;
    one.kind = "discrete";
    one.status = "ok";
    one.states = std::move(states);
    return one;
}

Lines judged(std::vector<Sensor> sensors) {
    Inventory inventory;
    inventory.sensors = std::move(sensors);
    Collector findings;
    judge_sensors(inventory, findings);
    return told(findings);
}

TEST(Chassis, EachLineThatTellsOfAFaultIsSaid) {
    Inventory inventory;
    inventory.chassis_states = {{{"host_chassis_status.txt", 2}, "Main Power Fault", "true"},
                                {{"host_chassis_status.txt", 3}, "Power Overload", "true"},
                                {{"host_chassis_status.txt", 11}, "Cooling/Fan Fault", "tru"}};
    Collector findings;
    judge_chassis(inventory, findings);
    EXPECT_EQ(told(findings),
              Lines{"warning chassis_power:chassis | Chassis status | Main Power Fault: "
                    "true; Power Overload: true"});
}

TEST(Sensors, TheStatusColumnDecidesAndThresholdsExplain) {
    auto hot = analog("CPU1 Temp", "temperature", 106, "degrees C", "cr");
    hot.uc = 95.0;
    hot.unc = 90.0;
    EXPECT_EQ(
        judged({hot}),
        Lines{
            "critical temperature_critical:CPU1_Temp | Sensor CPU1 Temp | 106 degrees C, status cr, "
            "upper critical threshold 95"});
    // Beyond its thresholds, and the BMC says ok: thresholds of 0 are none.
    auto well = analog("Inlet", "temperature", 25, "degrees C", "ok");
    well.uc = 0.0;
    well.unr = 0.0;
    EXPECT_EQ(judged({well}), Lines{});
}

TEST(Sensors, KindsAndStatus) {
    const struct {
        const char* kind;
        const char* status;
        const char* rule;
    } cases[] = {
        {"temperature", "ok", ""},
        {"temperature", "ns", ""},
        {"temperature", "na", ""},
        {"temperature", "nc", "warning temperature_warning"},
        {"temperature", "cr", "critical temperature_critical"},
        {"temperature", "nr", "critical temperature_critical"},
        {"fan", "nc", "warning fan_warning"},
        {"fan", "cr", "warning fan_warning"},
        {"voltage", "nc", "warning voltage_warning"},
        {"voltage", "cr", "critical voltage_critical"},
        {"power", "nr", "critical voltage_critical"},
        {"other", "nc", "warning sensor_warning"},
        {"other", "cr", "critical sensor_critical"},
    };
    for (const auto& one : cases) {
        const auto lines = judged({analog("X", one.kind, 1, "u", one.status)});
        if (*one.rule == '\0') {
            EXPECT_EQ(lines, Lines{}) << one.kind << one.status;
        } else {
            EXPECT_EQ(lines,
                      (Lines{std::string(one.rule) + ":X | Sensor X | 1 u, status " + one.status}));
        }
    }
}

// Else who knows of one would be told nothing of the other.
TEST(Sensors, TwoOfOneNameAreTwoFindings) {
    auto numbered = analog("Temp", "temperature", 96, "u", "nc");
    numbered.number = "0Eh";
    EXPECT_EQ(judged({analog("Temp", "temperature", 88, "u", "nc"), numbered,
                      analog("Temp", "temperature", 92, "u", "cr")}),
              (Lines{"critical temperature_critical:Temp.2 | Sensor Temp | 92 u, status cr",
                     "warning temperature_warning:Temp | Sensor Temp | 88 u, status nc",
                     "warning temperature_warning:Temp.0Eh | Sensor Temp | 96 u, status nc"}));
}

TEST(Sensors, AFanIsCriticalWhereRedundancyIsLost) {
    EXPECT_EQ(
        judged({analog("FAN3", "fan", 0, "RPM", "cr"),
                discrete("Fan Redundancy", {"Redundancy Lost"})}),
        (Lines{
            "critical fan_critical:FAN3 | Sensor FAN3 | 0 RPM, status cr",
            "warning cooling_redundancy:Fan_Redundancy | Sensor Fan Redundancy | Redundancy Lost"}));
}

TEST(Sensors, AClockBatteryIsAWarningEvenIfCritical) {
    EXPECT_EQ(judged({analog("VBAT", "voltage", 1.9, "Volts", "cr")}),
              Lines{"warning clock_battery:VBAT | Sensor VBAT | 1.9 Volts, status cr"});
}

TEST(Sensors, WordsOfDiscreteSensors) {
    const struct {
        const char* name;
        const char* word;
        const char* line;
    } cases[] = {
        {"PS1 Status", "Presence detected", ""},
        {"PS Redundancy", "Fully Redundant", ""},
        {"PS2 Status", "Power Supply AC lost",
         "warning power_input:PSU2 | Sensor PS2 Status | Power Supply AC lost"},
        {"PS2 Status", "Failure detected",
         "warning power_supply:PSU2 | Sensor PS2 Status | Failure detected"},
        {"PS Redundancy", "Redundancy Lost",
         "warning power_redundancy:PS_Redundancy | Sensor PS Redundancy | Redundancy Lost"},
        {"PS Redundancy", "Non-Redundant: Insufficient Resources",
         "critical power_insufficient:PS_Redundancy | Sensor PS Redundancy | Non-Redundant: Insufficient Resources"},
        {"Drive Bay 4", "Predictive Failure",
         "warning drive_bay_fault:Drive_Bay_4 | Sensor Drive Bay 4 | Predictive Failure"},
        {"Drive 3", "Drive Fault",
         "warning drive_bay_fault:Drive_3 | Sensor Drive 3 | Drive Fault"},
        {"CPU1 Status", "Thermal Trip",
         "critical thermal_trip:CPU1_Status | Sensor CPU1 Status | Thermal Trip"},
        {"CPU1 Status", "IERR", "critical processor_error:CPU1_Status | Sensor CPU1 Status | IERR"},
        {"DIMM A1", "Uncorrectable ECC",
         "critical memory_error:DIMM_A1 | Sensor DIMM A1 | Uncorrectable ECC"},
        {"DIMM A1", "Correctable ECC",
         "notice memory_corrected:DIMM_A1 | Sensor DIMM A1 | Correctable ECC"},
        {"Intrusion", "General Chassis intrusion",
         "warning intrusion:Intrusion | Sensor Intrusion | General Chassis intrusion"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(judged({discrete(one.name, {one.word})}), *one.line ? Lines{one.line} : Lines{})
            << one.word;
    }
}

TEST(Sensors, AWordThatNoRuleKnowsIsNamed) {
    Inventory inventory;
    inventory.sensors = {discrete("OEM", {"Frobnicated", "Presence detected"})};
    const auto unknown = unknown_words(inventory);
    ASSERT_EQ(unknown.size(), 1U);
    EXPECT_EQ(unknown[0].sensor, "OEM");
    EXPECT_EQ(unknown[0].word, "Frobnicated");
}

TEST(Sensors, SensorAndSupplyOfOneNumberAreOneFinding) {
    Inventory inventory;
    inventory.sensors = {discrete("PS2 Status", {"Power Supply AC lost"})};
    inventory::PowerSupply supply;
    supply.place = {"psuinfo.txt", 5};
    supply.slot = "2";
    supply.present = true;
    supply.state = "output on";
    supply.input_state = "AC lost";
    inventory.power_supplies = {supply};
    Collector findings;
    judge_sensors(inventory, findings);
    judge_power_supplies(inventory, findings);
    EXPECT_EQ(
        told(findings),
        Lines{
            "warning power_input:PSU2 | Sensor PS2 Status | Power Supply AC lost; input AC lost"});
}

TEST(Sensors, SuppliesPrintSeveralStatesInOneText) {
    const auto judged_supply = [](const char* state, const char* input) {
        Inventory inventory;
        inventory::PowerSupply supply;
        supply.slot = "Power supply 2";
        supply.state = state;
        supply.input_state = input;
        inventory.power_supplies = {supply};
        Collector findings;
        judge_power_supplies(inventory, findings);
        return told(findings);
    };
    EXPECT_EQ(judged_supply("AC ok, output on", "AC ok"), Lines{});
    EXPECT_EQ(judged_supply("Present, OK", "AC 230 V"), Lines{});
    EXPECT_EQ(judged_supply("AC ok, output off", "AC ok"),
              Lines{"warning power_supply:PSU2 | Power supply 2 | state AC ok, output off"});
    EXPECT_EQ(judged_supply("on", "AC lost"),
              Lines{"warning power_input:PSU2 | Power supply 2 | input AC lost"});
    EXPECT_EQ(judged_supply("on", "AC V"),
              Lines{"warning power_input:PSU2 | Power supply 2 | input AC V"});
}

TEST(Sensors, EachStateOfASupplyNamesItsLine) {
    Inventory inventory;
    inventory::PowerSupply supply;
    supply.place = {"psuinfo.txt", 1};
    supply.slot = "PSU1";
    supply.state = "Failed";
    supply.input_state = "AC lost";
    supply.elsewhere = {{"input_state", {"sdrinfo.txt", 9}}, {"state", {"psuinfo.txt", 7}}};
    inventory.power_supplies = {supply};
    Collector findings;
    judge_power_supplies(inventory, findings);
    const auto made = findings.take();
    ASSERT_EQ(made.size(), 1U);
    EXPECT_EQ(made[0].evidence, (std::vector<Place>{{"psuinfo.txt", 7}, {"sdrinfo.txt", 9}}));
}

TEST(Sensors, AnEmptyBayIsNoFailure) {
    Inventory inventory;
    inventory::PowerSupply bay;
    bay.slot = "2";
    bay.present = false;
    bay.state = "absent";
    inventory.power_supplies = {bay};
    Collector findings;
    judge_power_supplies(inventory, findings);
    EXPECT_EQ(told(findings), Lines{});
}

TEST(Sensors, SelfTestAndAFullLog) {
    Inventory inventory;
    inventory::Bmc bmc;
    bmc.self_test = "passed";
    inventory.bmcs = {bmc};
    inventory.sel_logs = {{{"host_sel_info.txt", 3}, 900, 89.0, false}};
    Collector well;
    judge_bmc(inventory, well);
    EXPECT_EQ(told(well), Lines{});

    inventory.bmcs[0].self_test = "device error";
    inventory.sel_logs[0].used_percent = 90.0;
    Collector findings;
    judge_bmc(inventory, findings);
    EXPECT_EQ(told(findings),
              (Lines{"warning self_test:self_test | BMC | self test: device error",
                     "warning sel_nearly_full:sel | System event log | 90 % full"}));
}

}  // namespace
}  // namespace qvhost::findings
