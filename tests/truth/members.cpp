// Which drives make which volume, as the lines of several tools tell it.
#include "print.h"

namespace truth {

std::string member_id(const Controller& controller, const Volume* volume, const Drive& drive) {
    const auto of = volume ? volume_id(controller, *volume) : std::to_string(controller.number);
    return of + " " + drive.serial;
}

void tell_member(const Page& page, int line, Book& book, const Controller& controller,
                 const Volume* volume, const Drive& drive, const std::vector<std::string>& match,
                 const std::vector<Saying>& says) {
    auto& subject = book.subject("volume_members", member_id(controller, volume, drive), match);
    subject.tell(page, line, {{"controller", Told(controller.number, {nullptr})}});
    for (const auto& one : says) subject.tell(page, line, {one});
}

void tell_volume_of_members(const Page& page, int line, Book& book, const Controller& controller,
                            const Volume& volume, const std::vector<Saying>& says) {
    for (const auto& drive : controller.drives) {
        if (drive.group != volume.group) continue;
        auto& subject = book.subject("volume_members", member_id(controller, &volume, drive), {});
        for (auto one : says) {
            one.told.is_elsewhere = true;
            subject.tell(page, line, {one});
        }
    }
}

std::vector<const Volume*> volumes_of(const Controller& controller, const Drive& drive) {
    std::vector<const Volume*> volumes;
    for (const auto& volume : controller.volumes) {
        if (drive.group && volume.group == *drive.group) volumes.push_back(&volume);
    }
    if (volumes.empty()) volumes.push_back(nullptr);
    return volumes;
}

}  // namespace truth
