#include "findings/about.h"

#include <gtest/gtest.h>

namespace qvhost::findings {
namespace {

using inventory::Drive;
using inventory::Event;
using inventory::Inventory;
using inventory::Sensor;
using inventory::Volume;

Inventory server() {
    Inventory found;
    Sensor sensor;
    sensor.name = "FAN1";
    found.sensors.push_back(sensor);
    sensor.name = "FAN2";
    found.sensors.push_back(sensor);
    Drive drive;
    drive.controller = 0;
    drive.enclosure = 252;
    drive.slot = 4;
    found.drives.push_back(drive);
    Volume volume;
    volume.controller = 1;
    volume.number = 2;
    found.volumes.push_back(volume);
    return found;
}

TEST(EventsAbout, KnowsAnEntityByItsSubject) {
    const auto inventory = server();
    const struct {
        EntityRef entity;
        const char* source;
        const char* subject;
        bool tells;
    } rows[] = {
        {{"sensors", 2}, "bmc", "FAN2", true},
        {{"sensors", 2}, "bmc", "FAN1", false},
        {{"sensors", 2}, "kernel", "FAN2", false},
        {{"sensors", 9}, "bmc", "FAN2", false},
        {{"sensors", 0}, "bmc", "FAN2", false},
        {{"drives", 1}, "controller 0", "PD 0c(e0xfc/s4)", true},
        {{"drives", 1}, "controller 1", "PD 0c(e0xfc/s4)", false},
        {{"drives", 1}, "controller 0", "PD 0c(e0xfc/s5)", false},
        {{"drives", 1}, "controller 0", "PD 0c", false},
        {{"drives", 1}, "controller 0", "VD 00/4", false},
        {{"volumes", 1}, "controller 1", "VD 01/2", true},
        {{"volumes", 1}, "controller 1", "VD 02/1", false},
        {{"batteries", 1}, "controller 1", "VD 01/2", false},
    };
    for (const auto& row : rows) {
        EventsAbout is_about(inventory, {row.entity});
        Event event;
        event.source = row.source;
        event.subject = row.subject;
        EXPECT_EQ(is_about(event), row.tells) << row.source << ", " << row.subject;
        EXPECT_EQ(is_about(event), row.tells) << "asked again";
        event.subject.reset();
        EXPECT_FALSE(is_about(event));
    }
}

}  // namespace
}  // namespace qvhost::findings
