// Arrays of the kernel's software RAID: /proc/mdstat and mdadm --detail.
#include <algorithm>
#include <map>

#include "print.h"

namespace truth {

int places_lost(const Array& array) {
    const auto in_sync =
        std::count_if(array.members.begin(), array.members.end(), [](const ArrayMember& member) {
            return member.place >= 0 && member.state == "active sync";
        });
    return array.places - static_cast<int>(in_sync);
}

namespace {

const ArrayMember* member_at(const Array& array, int place) {
    for (const auto& member : array.members) {
        if (member.place == place) return &member;
    }
    return nullptr;
}

bool is_in_sync(const Array& array, int place) {
    const auto* member = member_at(array, place);
    return member && member->state == "active sync";
}

// "sdk1" is on "/dev/sdk".
std::string drive_of(const std::string& device) {
    return "/dev/" + device.substr(0, device.find_last_not_of("0123456789") + 1);
}

// A member of one array; the drive may be in others as well.
Subject& member_subject(Book& book, const Array& array, const ArrayMember& member) {
    return book.subject("volume_members", array.name + " " + member.device,
                        {"volume_name", "device"});
}

void tell_faulty(const Page& page, int line, Book& book, const ArrayMember& member) {
    book.subject("drives", member.device, {"device"})
        .tell(page, line, {{"device", drive_of(member.device)}, {"state", "faulty"}});
}

// ---- /proc/mdstat -----------------------------------------------------------------------------------

// The kernel's words for what runs, and mdadm's.
struct Operation {
    const char* kernel;
    const char* mdadm;
    const char* state;  // in mdadm's list of states
};
const std::map<std::string, Operation> kOperations = {
    {"rebuild", {"recovery", "Rebuild", "recovering"}},
    {"resync", {"resync", "Resync", "resyncing"}},
    {"check", {"check", "Check", "checking"}},
};

// "U_": which members are in sync
std::string pattern_of(const Array& array) {
    std::string pattern;
    for (int place = 0; place < array.places; ++place)
        pattern += is_in_sync(array, place) ? 'U' : '_';
    return pattern;
}

std::string layout_of(const Array& array) {
    if (array.raid == "raid0") return "512k chunks";
    const auto counts = "[" + std::to_string(array.places) + "/" +
                        std::to_string(array.places - places_lost(array)) + "] [" +
                        pattern_of(array) + "]";
    if (array.raid == "raid1") return counts;
    if (array.raid == "raid10") return "512K chunks 2 near-copies " + counts;
    return "level " + array.raid.substr(4) + ", 512k chunk, algorithm 2 " + counts;
}

std::string progress_bar(double percent) {
    const auto done = static_cast<std::size_t>(percent / 5.0);
    return "[" + std::string(done, '=') + ">" + std::string(20 - done, '.') + "]";
}

void print_array(const Array& array, Page& page, Book& book) {
    std::string words = array.name + " : active " + array.raid;
    for (auto member = array.members.rbegin(); member != array.members.rend(); ++member) {
        words += " " + member->device + "[" + std::to_string(member->number) + "]";
        if (member->state == "faulty") words += "(F)";
        if (member->state == "spare") words += "(S)";
    }
    const int head = page.line(words);
    auto& subject = book.subject("volumes", array.name, {"name"});
    subject.tell(page, head,
                 {{"name", array.name},
                  {"device", "/dev/" + array.name},
                  {"raid", array.raid},
                  {"state", beginning("active")}});
    for (const auto& member : array.members) {
        auto& its = member_subject(book, array, member);
        its.tell(page, head,
                 {{"volume_name", array.name},
                  {"device", drive_of(member.device)},
                  {"is_spare", member.state == "spare"}});
        if (member.state != "faulty") continue;
        its.tell(page, head, {{"state", "faulty"}});
        tell_faulty(page, head, book, member);
    }
    const int blocks = page.line("      " + std::to_string(array.blocks) + " blocks super 1.2 " +
                                 layout_of(array));
    subject.tell(page, blocks,
                 {{"capacity_bytes", array.blocks * 1024}, {"state", beginning("active")}});
    if (!array.operation.empty()) {
        const std::string runs = kOperations.at(array.operation).kernel;
        const auto done =
            static_cast<std::int64_t>(static_cast<double>(array.blocks) * array.progress / 100.0);
        const int line =
            page.line("      " + progress_bar(array.progress) + "  " + runs + " = " +
                      right(number(array.progress, 1), 4) + "% (" + std::to_string(done) + "/" +
                      std::to_string(array.blocks) + ") finish=12.3min speed=132096K/sec");
        subject.tell(
            page, line,
            {{"operation", runs}, {"progress_percent", std::stod(number(array.progress, 1))}});
    }
    if (array.raid != "raid0") page.line("      bitmap: 0/8 pages [0KB], 65536KB chunk");
    page.line("");
}

// ---- mdadm --detail ---------------------------------------------------------------------------------

std::string state_of(const Array& array) {
    std::string state = array.is_written_to ? "active" : "clean";
    if (is_lost(array))
        state += ", FAILED";
    else if (places_lost(array) > 0)
        state += ", degraded";
    if (!array.operation.empty())
        state += std::string(", ") + kOperations.at(array.operation).state;
    return state;
}

// "active, degraded [U_]": with the members that are in sync, as /proc/mdstat shows them.
std::string shown_state_of(const Array& array) {
    const std::string degraded = ", degraded";
    auto state = state_of(array);
    const auto at = state.find(degraded);
    if (at != std::string::npos) state.insert(at + degraded.size(), " [" + pattern_of(array) + "]");
    return state;
}

// "8       33        1      active sync   /dev/sdc1", behind the member's number
std::string row_of(const ArrayMember& member, const std::string& place) {
    const auto letter = member.device[2] - 'a';
    const auto minor = letter * 16 + (member.device[3] - '0');
    return "    " + right(std::to_string(member.number), 4) + "       8" +
           right(std::to_string(minor), 9) + right(place, 9) + "      " + member.state +
           "   /dev/" + member.device;
}

// The head of the answer names the array of all its rows.
void tell_array(const Array& array, const Page& page, Subject& subject) {
    Told name(array.name);
    name.is_elsewhere = true;
    subject.tell(page, 0, {{"volume_name", name}});
}

void tell_row(const Array& array, const ArrayMember& member, Page& page, Book& book) {
    const bool has_place = member.place >= 0;
    const int line = page.line(row_of(member, has_place ? std::to_string(member.place) : "-"));
    auto& subject = member_subject(book, array, member);
    tell_array(array, page, subject);
    subject.tell(page, line,
                 {{"device", drive_of(member.device)},
                  {"position", has_place ? Json(member.place) : Json()},
                  {"is_spare", member.state == "spare"},
                  {"state", member.state}});
    if (member.state == "faulty") tell_faulty(page, line, book, member);
}

Page detail_of(const Array& array, Book& book, Seconds now) {
    Page page{"host_mdadm_" + array.name + ".txt", "mdadm", "--detail /dev/" + array.name};
    const auto say = [&](const std::string& label, const std::string& value) {
        return page.line(right(label, 18) + " : " + value);
    };
    const auto count = [&](auto is_one) {
        return std::to_string(std::count_if(array.members.begin(), array.members.end(), is_one));
    };
    auto& subject = book.subject("volumes", array.name, {"name"});
    subject.tell(page, page.line("/dev/" + array.name + ":"),
                 {{"name", array.name}, {"device", "/dev/" + array.name}});
    say("Version", "1.2");
    say("Creation Time", "Mon Jan  5 10:00:00 2026");
    subject.tell(page, say("Raid Level", array.raid), {{"raid", array.raid}});
    const double mebibytes = static_cast<double>(array.blocks) / 1024.0;
    subject.tell(page,
                 say("Array Size", std::to_string(array.blocks) + " (" + number(mebibytes, 2) +
                                       " MiB " + number(mebibytes * 1.048576, 2) + " MB)"),
                 {{"capacity_bytes", array.blocks * 1024}});
    say("Raid Devices", std::to_string(array.places));
    say("Total Devices", std::to_string(array.members.size()));
    say("Persistence", "Superblock is persistent");
    page.line("");
    say("Update Time", c_time(now));
    const auto state = state_of(array);
    subject.tell(page, say("State", state + " "),
                 {{"state", Told(shown_state_of(array), {state})}});
    say("Active Devices", std::to_string(array.places - places_lost(array)));
    say("Working Devices", count([](const auto& one) { return one.state != "faulty"; }));
    say("Failed Devices", count([](const auto& one) { return one.state == "faulty"; }));
    say("Spare Devices", count([](const auto& one) { return one.state.starts_with("spare"); }));
    page.line("");
    if (array.raid == "raid5" || array.raid == "raid6") say("Layout", "left-symmetric");
    if (array.raid == "raid10") say("Layout", "near=2");
    if (array.raid != "raid1") say("Chunk Size", "512K");
    page.line("");
    say("Consistency Policy", array.raid == "raid0" ? "none" : "bitmap");
    page.line("");
    if (!array.operation.empty()) {
        const std::string runs = kOperations.at(array.operation).mdadm;
        const int percent = static_cast<int>(array.progress);
        subject.tell(page, say(runs + " Status", std::to_string(percent) + "% complete"),
                     {{"operation", runs}, {"progress_percent", percent}});
        page.line("");
    }
    say("Name", "server:" + array.name.substr(2));
    say("UUID", "00000220:11114222:83334444:4444" + array.name.substr(2) + "000");
    say("Events", "41");
    page.line("");
    page.line("    Number   Major   Minor   RaidDevice State");
    for (int place = 0; place < array.places; ++place) {
        if (const auto* member = member_at(array, place)) {
            tell_row(array, *member, page, book);
        } else {
            const int line = page.line("       -       0        0" +
                                       right(std::to_string(place), 9) + "      removed");
            auto& removed =
                book.subject("volume_members", array.name + " at " + std::to_string(place),
                             {"volume_name", "position", "state"});
            tell_array(array, page, removed);
            removed.tell(page, line,
                         {{"position", place}, {"is_spare", false}, {"state", "removed"}});
        }
        page.is_vital();
    }
    page.line("");
    for (const auto& member : array.members) {
        if (member.place < 0) tell_row(array, member, page, book);
    }
    return page;
}

}  // namespace

bool is_lost(const Array& array) {
    const int lost = places_lost(array);
    if (array.raid == "raid0") return lost > 0;
    if (array.raid == "raid1") return lost == array.places;
    if (array.raid == "raid5") return lost > 1;
    if (array.raid == "raid6") return lost > 2;
    for (int place = 0; place + 1 < array.places; place += 2) {  // raid10: a drive and its copy
        if (!is_in_sync(array, place) && !is_in_sync(array, place + 1)) return true;
    }
    return false;
}

void print_md(const Server& server, Book& book, Pages& pages) {
    if (server.arrays.empty()) return;
    Page page{"host_mdstat.txt", "cat", "/proc/mdstat"};
    page.line("Personalities : [raid1] [raid0] [raid6] [raid5] [raid4] [raid10] ");
    for (const auto& array : server.arrays) print_array(array, page, book);
    page.line("unused devices: <none>");
    page.is_vital();
    pages.push_back(page);
    for (const auto& array : server.arrays) pages.push_back(detail_of(array, book, server.now));
}

}  // namespace truth
