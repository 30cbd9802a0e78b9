#include "findings/storage_names.h"

namespace qvhost::findings {

namespace {

using inventory::Drive;
using inventory::Integer;
using inventory::Inventory;
using inventory::Volume;
using inventory::VolumeMember;

std::string volume_words(const Volume& volume) {
    std::string text = "Volume";
    if (volume.number) text += " " + number_text(volume.number);
    if (volume.name) text += " \"" + *volume.name + "\"";
    if (volume.device && !volume.controller) text += " " + *volume.device;
    text += at_controller(volume.controller);
    if (volume.raid) text += " (" + *volume.raid + ")";
    return text;
}

std::string drive_words(const Drive& drive) {
    auto text = "Drive " + drive_place(drive) + at_controller(drive.controller);
    if (drive.device && drive.slot) text += ", " + *drive.device;
    if (drive.model) text += ", " + *drive.model;
    if (drive.serial) text += ", serial " + *drive.serial;
    return text;
}

}  // namespace

std::string number_text(const Integer& number) { return number ? std::to_string(*number) : ""; }

std::string controller_key(const std::string& tool, const Integer& controller) {
    const bool has_short_name = tool.empty() || tool == "storcli";
    return (has_short_name ? "" : tool + "_") + "c" + number_text(controller);
}

std::string at_controller(const Integer& controller) {
    return controller ? " of controller " + std::to_string(*controller) : "";
}

std::string drive_place(const Drive& drive) {
    if (drive.slot)
        return (drive.enclosure ? number_text(drive.enclosure) : "") + ":" +
               number_text(drive.slot);
    if (drive.device_id) return "device " + number_text(drive.device_id);
    return drive.device.value_or("");
}

std::string drive_key(const Drive& drive) {
    if (drive.serial) return *drive.serial;
    return (drive.controller ? controller_key(drive.tool, drive.controller) + "_" : "") +
           drive_place(drive);
}

std::string volume_key(const Volume& volume) {
    if (volume.controller)
        return controller_key(volume.tool, volume.controller) + "_v" +
               (volume.number ? number_text(volume.number) : volume.name.value_or(""));
    return volume.device.value_or(volume.name.value_or(""));
}

Subject subject_of(const Inventory& inventory, const Drive& drive) {
    return {drive_key(drive), drive_words(drive), {ref_to(inventory, drive)}};
}

Subject subject_of(const Inventory& inventory, const Volume& volume) {
    return {volume_key(volume), volume_words(volume), {ref_to(inventory, volume)}};
}

Subject missing_drive(const VolumeMember& member) {
    Drive drive;
    drive.controller = member.controller;
    drive.enclosure = member.enclosure;
    drive.slot = member.slot;
    drive.serial = member.serial;
    drive.tool = member.tool;
    if (drive.serial || drive.slot) return {drive_key(drive), drive_words(drive)};
    auto key = controller_key(member.tool, member.controller);
    std::string subject;
    const auto name = [&](const Integer& number, const char* short_name, const char* words) {
        if (!number) return;
        key += short_name + number_text(number);
        subject = words + number_text(number) + (subject.empty() ? "" : " of ") + subject;
    };
    name(member.drive_group, "_dg", "drive group ");
    if (!member.drive_group) name(member.volume, "_v", "volume ");
    name(member.span, "_array", "array ");
    name(member.position, "_row", "row ");
    subject = "Drive" + (subject.empty() ? "" : " at " + subject);
    return {key, subject + at_controller(member.controller)};
}

}  // namespace qvhost::findings
