// arcconf GETCONFIG of one controller, in two versions: 5400 series (places by enclosure and slot) and
// 7800 series (by connector and device, with error counters).
#include <algorithm>

#include "print.h"

namespace truth {

namespace {

constexpr const char* kRuler =
    "----------------------------------------------------------------------";
constexpr const char* kShort = "   --------------------------------------------------------";

struct Config {
    Page& page;
    bool is_new;

    int say(int indent, const std::string& label, const std::string& value) {
        return page.line(std::string(static_cast<std::size_t>(indent), ' ') +
                         left(label, 44 - indent) + ": " + value);
    }
    void heading(const std::string& text) {
        page.line(kRuler);
        page.line(text);
        page.line(kRuler);
    }
    void part(const std::string& text) {
        page.line(kShort);
        page.line("   " + text);
        page.line(kShort);
    }
};

std::string drive_state(const Drive& drive) {
    if (drive.state == "Onln") return "Online";
    if (drive.state == "Offln") return "Failed";
    if (drive.state == "Rbld") return "Rebuilding";
    if (drive.state == "GHS") return "Global Hot-Spare";
    if (drive.state == "DHS") return "Dedicated Hot-Spare";
    return "Ready";
}

// "Degraded" says nothing of how many drives more may be lost.
std::string volume_state(const Volume& volume) {
    if (volume.state == "Optl") return "Optimal";
    return volume.state == "OfLn" ? "Failed" : "Degraded";
}

std::string level_of(const Group& group) {
    if (group.raid == "RAID6") return "6 Reed-Solomon";
    return group.raid.substr(4);
}

std::int64_t megabytes(std::int64_t sectors) { return sectors / 2048; }

void print_controller(const Controller& controller, Config& config, Book& book) {
    auto& page = config.page;
    auto& subject =
        book.subject("controllers", "c" + std::to_string(controller.number), {"serial"});
    config.heading("Controller information");
    subject.tell(page, config.say(3, "Controller Status", controller.status),
                 {{"number", Told(controller.number, {nullptr})}, {"status", controller.status}});
    if (config.is_new) config.say(3, "Controller Mode", "RAID (Expose RAW)");
    config.say(3, "Channel description", "SAS/SATA");
    subject.tell(page, config.say(3, "Controller Model", controller.model),
                 {{"model", controller.model}});
    subject.tell(page, config.say(3, "Controller Serial Number", controller.serial),
                 {{"serial", controller.serial}});
    config.say(3, "Physical Slot", "3");
    config.say(3, "Temperature", "77 C/ 170 F (Normal)");
    config.say(3, "Installed memory", config.is_new ? "1024 MB" : "256 MB");
    config.say(3, "Global task priority", "High");
    int failed = 0;
    int degraded = 0;
    for (const auto& volume : controller.volumes) {
        failed += volume.state == "OfLn" ? 1 : 0;
        degraded += volume.state == "Dgrd" || volume.state == "Pdgd" ? 1 : 0;
    }
    int defunct = 0;
    for (const auto& drive : controller.drives) defunct += drive.state == "Offln" ? 1 : 0;
    config.say(3, "Defunct disk drive count", std::to_string(defunct));
    subject.tell(page,
                 config.say(3, "Logical devices/Failed/Degraded",
                            std::to_string(controller.volumes.size()) + "/" +
                                std::to_string(failed) + "/" + std::to_string(degraded)),
                 {{"volumes", controller.volumes.size()}, {"drives", anything(nullptr)}});
    config.say(3, "Statistics data collection mode", "Enabled");
    config.part("Controller Version Information");
    config.say(3, "BIOS", "5.2-0 (16343)");
    subject.tell(page, config.say(3, "Firmware", controller.firmware),
                 {{"firmware", controller.firmware}});
    config.say(3, "Driver", "1.1-7 (28000)");
    if (controller.battery) {
        config.part(config.is_new ? "Controller Cache Backup Unit Information"
                                  : "Controller Battery Information");
        const auto state = controller.battery->state == "Optimal"
                               ? (config.is_new ? std::string("Ready") : "Optimal")
                               : controller.battery->state;
        if (config.is_new) page.line("");
        const int line = config.is_new ? config.say(4, "Overall Backup Unit Status", state)
                                       : config.say(3, "Status", state);
        book.subject("batteries", "c" + std::to_string(controller.number), {})
            .tell(page, line,
                  {{"controller", Told(controller.number, {nullptr})},
                   {"state", state},
                   {"model", anything(nullptr)}});
    }
    page.line("");
}

void print_volume(const Controller& controller, const Volume& volume, Config& config, Book& book) {
    auto& page = config.page;
    const Group* group = nullptr;
    for (const auto& one : controller.groups) {
        if (one.number == volume.group) group = &one;
    }
    auto& subject = book.subject("volumes", volume_id(controller, volume), {"number"});
    const int head = page.line("Logical device number " + std::to_string(volume.number));
    tell_volume_of_members(page, head, book, controller, volume, {{"volume", volume.number}});
    subject.tell(page, head,
                 {{"controller", Told(controller.number, {nullptr})},
                  {"number", volume.number},
                  {"drive_group", anything(nullptr)},
                  {"cache", anything(nullptr)},
                  {"access", anything(nullptr)},
                  {"consistent", anything(nullptr)}});
    const int name = config.say(3, "Logical device name", volume.name);
    const auto told_name = volume.name.empty() ? Json() : Json(volume.name);
    subject.tell(page, name, {{"name", told_name}});
    tell_volume_of_members(page, name, book, controller, volume, {{"volume_name", told_name}});
    if (config.is_new) config.say(3, "Block Size of member drives", "512 Bytes");
    const auto level = level_of(*group);
    subject.tell(page, config.say(3, "RAID level", level),
                 {{"raid", Told(level, {group->raid, group->raid.substr(4),
                                        "RAID " + group->raid.substr(4)})}});
    subject.tell(page, config.say(3, "Status of logical device", volume_state(volume)),
                 {{"state", volume_state(volume)}});
    subject.tell(page, config.say(3, "Size", std::to_string(megabytes(volume.sectors)) + " MB"),
                 {{"capacity_bytes", megabytes(volume.sectors) * 1024 * 1024}});
    config.say(3, "Stripe-unit size", "256 KB");
    config.say(3, config.is_new ? "Read-cache setting" : "Read-cache mode", "Enabled");
    config.say(3, "Partitioned", "Yes");
    config.say(3, "Bootable", "No");
    config.say(3, "Failed stripes", "No");
    config.say(3, "Power settings", "Disabled");
    config.part("Logical device segment information");
    int segment = 0;
    for (const auto& drive : controller.drives) {
        if (drive.group != volume.group || drive.span < 0) continue;
        const auto label =
            (group->spans.size() > 1 ? "Group " + std::to_string(drive.span) + ", " : "") +
            "Segment " + std::to_string(group->spans.size() > 1 ? drive.row : segment);
        const auto slot = std::to_string(drive.slot);
        const auto enclosure = std::to_string(*drive.enclosure);
        const std::string is_here = drive.state == "Offln" ? "Missing" : "Present";
        const int line = config.say(
            3, label,
            config.is_new ? is_here + " (" + std::to_string(megabytes(drive.sectors)) + "MB, " +
                                drive.interface + ", " + (drive.is_ssd ? "SSD" : "HDD") +
                                ", Connector:0, Device:" + slot + ")      " + drive.serial
                          : is_here + " (Controller:1,Enclosure:" + enclosure + ",Slot:" + slot +
                                ")      " + drive.serial);
        const bool is_spanned = group->spans.size() > 1;
        tell_member(page, line, book, controller, &volume, drive, {"volume", "serial"},
                    {{"serial", drive.serial},
                     {"drive_group", anything(nullptr)},
                     {"span", is_spanned ? Json(drive.span) : Json()},
                     {"position", is_spanned ? drive.row : segment},
                     {"is_spare", false},
                     {"state", is_here},
                     {"enclosure", config.is_new ? anything(nullptr) : Told(*drive.enclosure)},
                     {"slot", config.is_new ? anything(nullptr) : Told(drive.slot)},
                     {"device_id", anything(nullptr)}});
        ++segment;
    }
    page.line("");
}

void print_drive(const Controller& controller, const Drive& drive, Config& config, Book& book) {
    auto& page = config.page;
    const auto slot = std::to_string(drive.slot);
    auto& subject = book.subject("drives", drive.serial, {"serial"});
    const auto say = [&](const std::string& label, const std::string& value) {
        return config.say(9, label, value);
    };
    const int head = page.line("      Device #" + std::to_string(drive.device_id));
    subject.tell(page, head,
                 {{"controller", Told(controller.number, {nullptr})},
                  {"device_id", Told(drive.device_id, {drive.slot})},
                  {"is_foreign", Told(nullptr, {false})},
                  {"drive_group", anything(nullptr)},
                  {"other_errors", anything(nullptr)}});
    page.line("         Device is a Hard drive");
    const auto state = drive_state(drive);
    subject.tell(page, say("State", state),
                 {{"state", state},
                  {"spare", drive.state == "GHS"   ? Json("global")
                            : drive.state == "DHS" ? Json("dedicated")
                                                   : Json()}});
    if (config.is_new)
        subject.tell(page, say("Block Size", drive.sector == 4096 ? "4K Bytes" : "512 Bytes"),
                     {{"sector_bytes", drive.sector}});
    say("Supported", "Yes");
    subject.tell(page, say("Transfer Speed", drive.interface + " 6.0 Gb/s"),
                 {{"interface", drive.interface}});
    say("Reported Channel,Device(T:L)", "0," + slot + "(" + slot + ":0)");
    if (config.is_new) {
        subject.tell(page, say("Reported Location", "Connector 0, Device " + slot),
                     {{"slot", Told(drive.slot, {nullptr})}, {"enclosure", Told(nullptr, {0})}});
    } else {
        subject.tell(page,
                     say("Reported Location",
                         "Enclosure " + std::to_string(*drive.enclosure) + ", Slot " + slot),
                     {{"slot", drive.slot}, {"enclosure", *drive.enclosure}});
    }
    say("Vendor", drive.vendor);
    subject.tell(page, say("Model", drive.model),
                 {{"model", Told(drive.model, {drive.vendor + " " + drive.model})}});
    subject.tell(page, say("Firmware", drive.firmware), {{"firmware", drive.firmware}});
    subject.tell(page, say("Serial number", drive.serial), {{"serial", drive.serial}});
    if (config.is_new) subject.tell(page, say("World-wide name", drive.wwn), {{"wwn", drive.wwn}});
    subject.tell(page,
                 say(config.is_new ? "Total Size" : "Size",
                     std::to_string(megabytes(drive.sectors)) + " MB"),
                 {{"capacity_bytes", megabytes(drive.sectors) * 1024 * 1024}});
    say("Write Cache", "Enabled (write-back)");
    say("FRU", "None");
    const bool warns = drive.smart_alert || drive.predicted_failures > 0;
    const int warnings = warns ? std::max(1, drive.predicted_failures) : 0;
    subject.tell(page, say("S.M.A.R.T.", warns ? "Yes" : "No"), {{"smart_alert", anything(warns)}});
    subject.tell(
        page, say("S.M.A.R.T. warnings", std::to_string(warnings)),
        {{"predicted_failures", Told(warnings, {nullptr})}, {"smart_alert", anything(warns)}});
    say("Power State", "Full rpm");
    say("Supported Power States", "Full rpm,Powered off");
    if (config.is_new) {
        subject.tell(page, say("SSD", drive.is_ssd ? "Yes" : "No"),
                     {{"media", drive.is_ssd ? "SSD" : "HDD"}});
        const double fahrenheit = drive.temperature * 9.0 / 5.0 + 32.0;
        subject.tell(page,
                     say("Temperature",
                         std::to_string(drive.temperature) + " C/ " + number(fahrenheit, 0) + " F"),
                     {{"temperature_celsius", drive.temperature}});
    }
    say("NCQ status", "Enabled");
    if (!config.is_new) return;
    page.text(
        "      ----------------------------------------------------------------\n"
        "      Runtime Error Counters\n"
        "      ----------------------------------------------------------------\n");
    say("Hardware Error Count", "0");
    subject.tell(page, say("Medium Error Count", std::to_string(drive.media_errors)),
                 {{"media_errors", drive.media_errors}});
    say("Link Failure Count", "0");
    say("Aborted Command Count", "0");
    say("SMART Warning Count", std::to_string(warnings));
    page.line("");
}

}  // namespace

void print_arcconf(const Server& server, Random& random, Book& book, Pages& pages) {
    if (server.storage_tool != StorageTool::arcconf) return;
    const auto& controller = server.controllers.front();
    Page page{"Firmware/Controller 1 Config.txt", "arcconf", "savesupportarchive"};
    bool needs_new = random.chance(50);
    for (const auto& drive : controller.drives) needs_new = needs_new || drive.media_errors > 0;
    Config config{page, needs_new};
    page.line("Controllers found: 1");
    print_controller(controller, config, book);
    config.heading("Logical device information");
    for (const auto& volume : controller.volumes) print_volume(controller, volume, config, book);
    if (controller.volumes.empty()) page.line("   No logical devices configured");
    page.line("");
    config.heading("Physical Device information");
    for (const auto& drive : controller.drives) print_drive(controller, drive, config, book);
    page.line("");
    page.is_vital();
    page.line("");
    page.line("Command completed successfully.");
    pages.push_back(page);
}

}  // namespace truth
