// Pools of ZFS: zpool status.
#include <algorithm>

#include "print.h"

namespace truth {

int members_lost(const Pool& pool) {
    return static_cast<int>(
        std::count_if(pool.members.begin(), pool.members.end(),
                      [](const PoolMember& member) { return member.state != "ONLINE"; }));
}

int can_lose(const Pool& pool) {
    if (pool.raid == "mirror") return static_cast<int>(pool.members.size()) - 1;
    return pool.raid == "raidz2" ? 2 : 1;
}

namespace {

std::string row_of(int indent, const std::string& name, const std::string& state,
                   const std::string& counters) {
    return "\t" + left(std::string(static_cast<std::size_t>(indent), ' ') + name, 10) + "  " +
           left(state, 8) + counters;
}

constexpr const char* kNoErrors = "     0     0     0";

void print_pool(const Pool& pool, Page& page, Book& book) {
    auto& subject = book.subject("volumes", pool.name, {"name"});
    subject.tell(page, page.line("  pool: " + pool.name), {{"name", pool.name}});
    const int lost = members_lost(pool);
    const std::string state = lost > can_lose(pool) ? "UNAVAIL" : lost > 0 ? "DEGRADED" : "ONLINE";
    std::string told = state;
    if (pool.data_errors > 0)
        told += ", " + std::to_string(pool.data_errors) + " data errors, use '-v' for a list";
    subject.tell(page, page.line(" state: " + state), {{"state", beginning(state)}});
    if (lost > 0) {
        page.line("status: One or more devices could not be used because the label is missing or");
        page.line("\tinvalid.");
        page.line("action: Replace the device using 'zpool replace'.");
    }
    if (pool.operation.empty()) {
        page.line(
            "  scan: scrub repaired 0B in 00:10:00 with 0 errors on Sun Nov  8 00:34:01 2026");
    } else {
        subject.tell(
            page,
            page.line("  scan: " + pool.operation + " in progress since Fri Nov 20 10:00:00 2026"),
            {{"operation", pool.operation}});
        page.line("\t1.20T scanned at 1.02G/s, 400G issued at 300M/s, 3.00T total");
        const auto done = number(pool.progress, 2);
        subject.tell(page,
                     page.line("\t100G " +
                               std::string(pool.operation == "scrub" ? "repaired" : "resilvered") +
                               ", " + done + "% done, 01:02:03 to go"),
                     {{"progress_percent", std::stod(done)}});
    }
    page.line("config:");
    page.line("");
    page.line("\tNAME        STATE     READ WRITE CKSUM");
    page.line(row_of(0, pool.name, state, kNoErrors));
    subject.tell(page, page.line(row_of(2, pool.raid + "-0", state, kNoErrors)),
                 {{"raid", pool.raid}});
    const int span = page.last();
    for (const auto& member : pool.members) {
        const int line = page.line(row_of(4, member.device, member.state,
                                          right(std::to_string(member.reads), 6) +
                                              right(std::to_string(member.writes), 6) +
                                              right(std::to_string(member.checksums), 6)) +
                                   (member.state == "UNAVAIL" ? "  cannot open" : ""));
        const int errors = member.reads + member.writes + member.checksums;
        book.subject("drives", member.device, {"device"})
            .tell(page, line,
                  {{"device", "/dev/" + member.device},
                   {"state", member.state},
                   {"other_errors", Told(errors, {member.reads, member.checksums})}});
        auto& its = book.subject("volume_members", pool.name + " " + member.device,
                                 {"volume_name", "device"});
        its.tell(
            page, line,
            {{"device", "/dev/" + member.device}, {"is_spare", false}, {"state", member.state}});
        Told name(pool.name);
        Told number(0);
        name.is_elsewhere = number.is_elsewhere = true;
        its.tell(page, span - 1, {{"volume_name", name}});
        its.tell(page, span, {{"span", number}});
    }
    if (!pool.spare.empty()) {
        page.line("\tspares");
        const int line = page.line("\t  " + left(pool.spare, 10) + "AVAIL   ");
        auto& its =
            book.subject("volume_members", pool.name + " " + pool.spare, {"volume_name", "device"});
        its.tell(page, line,
                 {{"device", "/dev/" + pool.spare}, {"is_spare", true}, {"state", "AVAIL"}});
        Told name(pool.name);
        name.is_elsewhere = true;
        its.tell(page, span - 1, {{"volume_name", name}});
    }
    page.line("");
    const int errors =
        page.line("errors: " + (pool.data_errors == 0 ? std::string("No known data errors")
                                                      : told.substr(state.size() + 2)));
    if (pool.data_errors > 0)
        book.subject("_data_errors", pool.name, {}).tell(page, errors, {{"state", told}});
}

}  // namespace

void print_zpool(const Server& server, Book& book, Pages& pages) {
    if (!server.pool) return;
    Page page{"host_zpool.txt", "zpool", "status"};
    print_pool(*server.pool, page, book);
    page.is_vital();
    pages.push_back(page);
}

}  // namespace truth
