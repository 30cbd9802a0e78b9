// sas2ircu DISPLAY of an integrated-RAID controller.
#include "print.h"

namespace truth {

namespace {

constexpr const char* kRuler =
    "------------------------------------------------------------------------";

std::string drive_state(const Drive& drive) {
    if (drive.state == "Onln") return "Optimal (OPT)";
    if (drive.state == "Offln") return "Failed (FLD)";
    if (drive.state == "Rbld") return "Rebuilding (RBLD)";
    if (drive.state == "GHS" || drive.state == "DHS") return "Hot Spare (HSP)";
    return "Ready (RDY)";
}

std::string volume_state(const Volume& volume) {
    if (volume.state == "Optl") return "Okay (OKY)";
    return volume.state == "OfLn" ? "Failed (FLD)" : "Degraded (DGD)";
}

std::int64_t megabytes(std::int64_t sectors) { return sectors / 2048; }

struct Display {
    Page& page;
    int say(const std::string& label, const std::string& value) {
        return page.line("  " + left(label, 40) + ": " + value);
    }
    void heading(const std::string& text) {
        page.line(kRuler);
        page.line(text);
        page.line(kRuler);
    }
};

void print_volume(const Controller& controller, const Volume& volume, Page& page, Book& book) {
    const Group* group = nullptr;
    for (const auto& one : controller.groups) {
        if (one.number == volume.group) group = &one;
    }
    const int id = 286 - volume.number;
    auto& subject = book.subject("volumes", volume_id(controller, volume), {"number"});
    const int head = page.line("IR volume " + std::to_string(volume.number + 1));
    subject.tell(page, head,
                 {{"controller", Told(controller.number, {nullptr})},
                  {"number", Told(volume.number + 1, {id, volume.number})},
                  {"drive_group", anything(nullptr)},
                  {"name", anything(nullptr)}});
    const int id_line =
        page.line("  Volume ID                               : " + std::to_string(id));
    tell_volume_of_members(page, id_line, book, controller, volume,
                           {{"volume", Told(volume.number + 1, {id, volume.number})}});
    subject.tell(
        page, page.line("  Status of volume                        : " + volume_state(volume)),
        {{"state", Told(volume_state(volume),
                        {volume_state(volume).substr(0, volume_state(volume).find(' '))})}});
    page.line("  Volume wwid                             : 0677c0fb06777e7b");
    subject.tell(page, page.line("  RAID level                              : " + group->raid),
                 {{"raid", group->raid}});
    subject.tell(page,
                 page.line("  Size (in MB)                            : " +
                           std::to_string(megabytes(volume.sectors))),
                 {{"capacity_bytes", megabytes(volume.sectors) * 1024 * 1024}});
    page.line("  Physical hard disks                     :");
    int phy = 0;
    for (const auto& drive : controller.drives) {
        if (drive.group != volume.group || drive.span < 0) continue;
        const int line =
            page.line("  PHY[" + std::to_string(phy) + "] Enclosure#/Slot#                 : " +
                      std::to_string(*drive.enclosure) + ":" + std::to_string(drive.slot));
        tell_member(page, line, book, controller, &volume, drive, {"volume", "enclosure", "slot"},
                    {{"position", phy++},
                     {"is_spare", false},
                     {"enclosure", *drive.enclosure},
                     {"slot", drive.slot},
                     {"serial", Told(drive.serial, {nullptr})}});
    }
    page.line("");
}

void print_drive(const Controller& controller, const Drive& drive, Display& display, Book& book) {
    auto& page = display.page;
    auto& subject = book.subject("drives", drive.serial, {"enclosure", "slot"});
    const int head = page.line("Device is a Hard disk");
    subject.tell(page, head,
                 {{"controller", Told(controller.number, {nullptr})},
                  {"drive_group", anything(nullptr)},
                  {"device_id", anything(nullptr)},
                  {"is_foreign", Told(nullptr, {false})}});
    subject.tell(page, display.say("Enclosure #", std::to_string(*drive.enclosure)),
                 {{"enclosure", *drive.enclosure}});
    subject.tell(page, display.say("Slot #", std::to_string(drive.slot)), {{"slot", drive.slot}});
    display.say("SAS Address", "4433221-1-0700-0000");
    const auto state = drive_state(drive);
    subject.tell(page, display.say("State", state),
                 {{"state", Told(state, {state.substr(0, state.find(" ("))})},
                  {"spare", anything(nullptr)}});
    subject.tell(
        page,
        display.say("Size (in MB)/(in sectors)", std::to_string(megabytes(drive.sectors)) + "/" +
                                                     std::to_string(drive.sectors - 1)),
        {{"capacity_bytes", drive.sectors * 512}});
    display.say("Manufacturer", left(drive.vendor, 8));
    subject.tell(page, display.say("Model Number", left(drive.model, 16)),
                 {{"model", Told(drive.model, {drive.vendor + " " + drive.model})}});
    subject.tell(page, display.say("Firmware Revision", drive.firmware),
                 {{"firmware", drive.firmware}});
    subject.tell(page, display.say("Serial No", drive.serial), {{"serial", drive.serial}});
    subject.tell(page, display.say("GUID", drive.wwn), {{"wwn", drive.wwn}});
    const std::string kind = drive.interface + "_" + (drive.is_ssd ? "SSD" : "HDD");
    subject.tell(page, display.say("Protocol", drive.interface), {{"interface", drive.interface}});
    subject.tell(page, display.say("Drive Type", kind),
                 {{"media", Told(drive.is_ssd ? "SSD" : "HDD", {kind})}});
    page.line("");
}

}  // namespace

void print_sas2ircu(const Server& server, Random& random, Book& book, Pages& pages) {
    if (server.storage_tool != StorageTool::sas2ircu) return;
    const auto& controller = server.controllers.front();
    Page page{"host_sas2ircu_0_display.txt", "sas2ircu", "0 display"};
    Display display{page};
    page.line("LSI Corporation SAS2 IR Configuration Utility.");
    page.line("Version 20.00.00.00 (2014.09.18) ");
    page.line("Copyright (c) 2008-2014 LSI Corporation. All rights reserved. ");
    page.line("");
    page.line("Read configuration has been initiated for controller 0");
    display.heading("Controller information");
    auto& subject = book.subject("controllers", "c0", {});
    subject.tell(page, display.say("Controller type", controller.model),
                 {{"number", Told(0, {nullptr})},
                  {"model", controller.model},
                  {"status", anything(nullptr)},
                  {"volumes", anything(nullptr)},
                  {"drives", anything(nullptr)}});
    display.say("BIOS version", "7.11.10.00");
    subject.tell(page, display.say("Firmware version", controller.firmware),
                 {{"firmware", controller.firmware}});
    display.say("Channel description", "1 Serial Attached SCSI");
    display.say("Initiator ID", "0");
    display.say("Maximum physical devices", "39");
    display.say("Concurrent commands supported", "2607");
    display.say("Slot", random.digits(1));
    display.say("Segment", "0");
    display.say("Bus", "5");
    display.say("Device", "0");
    display.say("Function", "0");
    display.say("RAID Support", "Yes");
    display.heading("IR Volume information");
    for (const auto& volume : controller.volumes) print_volume(controller, volume, page, book);
    display.heading("Physical device information");
    page.line("Initiator at ID #0");
    page.line("");
    for (const auto& drive : controller.drives) print_drive(controller, drive, display, book);
    display.heading("Enclosure information");
    for (const auto& one : controller.enclosures) {
        auto& enclosure = book.subject("enclosures", "e" + std::to_string(one.id), {"number"});
        enclosure.tell(page, display.say("Enclosure#", std::to_string(one.id)),
                       {{"controller", Told(0, {nullptr})}, {"number", one.id}});
        display.say("Logical ID", "5782bcb0:19e35100");
        enclosure.tell(page, display.say("Numslots", std::to_string(one.slots)),
                       {{"slots", one.slots}});
        display.say("StartSlot", "0");
    }
    page.is_vital();
    page.line(kRuler);
    page.line("SAS2IRCU: Command DISPLAY Completed Successfully.");
    page.line("SAS2IRCU: Utility Completed Successfully.");
    pages.push_back(page);
}

}  // namespace truth
