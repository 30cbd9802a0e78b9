#include "inventory/storage/software.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "inventory/columns.h"
#include "inventory/storage/keys.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

void gap(Reading& reading, std::int64_t line, std::string words) {
    reading.how.gaps.push_back({line, std::move(words)});
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// "  5.5% (57600/1046528)"
Real percent_in(std::string_view text) {
    const auto mark = text.find('%');
    if (mark == npos) return std::nullopt;
    auto begin = mark;
    while (begin > 0 && (is_digit(text[begin - 1]) || text[begin - 1] == '.')) --begin;
    return real(text.substr(begin, mark - begin));
}

// A member of an array that is out of it.
void add_faulty(Reading& reading, std::int64_t line, std::string_view device) {
    auto drive = reading.entity_at<Drive>(line);
    drive.device = drive_of(device);
    drive.state = "faulty";
    reading.found.drives.push_back(std::move(drive));
}

VolumeMember member_of(const Volume& volume, const Reading& reading, std::int64_t line) {
    auto member = reading.entity_at<VolumeMember>(line);
    member.volume_name = volume.name;
    member.is_spare = false;
    return member;
}

// "sda", "/dev/sda1", or a name of /dev/disk/by-id: "wwn-0x5000c500a0000000-part1",
// "ata-ST1000NM0045_Z1X00000".
template <class Entity>
void name_drive(Entity& drive, std::string_view name) {
    if (const auto slash = name.rfind('/'); slash != npos) name.remove_prefix(slash + 1);
    const auto part = name.rfind("-part");
    if (part != npos) name = name.substr(0, part);
    if (name.starts_with("wwn-0x")) {
        drive.wwn = told(name.substr(6));
    } else if (name.starts_with("ata-") || name.starts_with("nvme-") || name.starts_with("scsi-")) {
        const auto mark = name.rfind('_');
        if (mark != npos) drive.serial = told(name.substr(mark + 1));
        if (!drive.serial) drive.device = "/dev/disk/by-id/" + std::string(name);
    } else {
        drive.device = drive_of(name);
    }
}

// The name of a pool's device. One that is missing has a number, and what it was called: "1234567890123
// UNAVAIL  0  0  0  was /dev/sdb1". Another drive may be /dev/sdb now; a name made of a serial number or a
// WWN stays.
template <class Entity>
void name_device(Entity& entity, const std::vector<std::string_view>& cells) {
    if (cells[0].find_first_not_of("0123456789") != npos) return name_drive(entity, cells[0]);
    const auto was = std::find(cells.begin(), cells.end(), "was");
    if (was == cells.end() || was + 1 == cells.end()) return;
    name_drive(entity, *(was + 1));
    entity.device.reset();
}

template <class Entity>
bool has_name(const Entity& entity) {
    return entity.device || entity.serial || entity.wwn;
}

// An array of md, and the drives in it.
struct Md {
    Volume array;
    std::vector<VolumeMember> members;
    bool is_container = false;  // of a firmware's RAID
};

void file(Md&& md, Reading& reading) {
    reading.found.volumes.push_back(std::move(md.array));
    for (auto& member : md.members) reading.found.volume_members.push_back(std::move(member));
}

// Whether the member of each position is in sync.
std::map<std::int64_t, bool> positions_of(const std::vector<VolumeMember>& members) {
    std::map<std::int64_t, bool> positions;
    for (const auto& member : members) {
        if (!member.position) continue;
        auto& is_in_sync = positions[*member.position];
        is_in_sync = is_in_sync || (member.state && member.state->starts_with("active sync"));
    }
    return positions;
}

// "clean, degraded [U_], recovering": shows which members are there, as /proc/mdstat does.
void show_members(std::string& state, const std::map<std::int64_t, bool>& positions) {
    constexpr std::string_view kDegraded = ", degraded";
    const auto at = state.find(kDegraded);
    if (at == npos) return;
    std::string shown;
    for (const auto& [position, is_in_sync] : positions) shown += is_in_sync ? 'U' : '_';
    state.insert(at + kDegraded.size(), " [" + shown + "]");
}

// A spare of a pool has a state and no counters: "sdz  INUSE     currently in use"
void add_spare(const Volume& pool, const std::vector<std::string_view>& cells, Reading& reading,
               std::int64_t number) {
    auto member = member_of(pool, reading, number);
    name_device(member, cells);
    member.state = std::string(cells[1]);
    member.is_spare = true;
    reading.found.volume_members.push_back(std::move(member));
    if (cells[1] == "AVAIL" || cells[1] == "INUSE") return;
    auto drive = reading.entity_at<Drive>(number);
    name_device(drive, cells);
    drive.state = std::string(cells[1]);
    if (has_name(drive)) reading.found.drives.push_back(std::move(drive));
}

// "Nov 23 19:00:00 | sdb: path state = failed": multipath's own words.
bool is_message(std::string_view text) { return text.find(" | ") != npos; }

// "| `- 3:0:0:1 sdb 8:16 active ready running": the map's word, the path checker's and the device's
bool is_usable_path(const std::vector<std::string_view>& cells) {
    struct State {
        std::string_view of_map, of_path, of_device;
    };
    constexpr auto kUsable = std::to_array<State>({
        {"active", "ready",         "running"},
        {"active", "ghost",         "running"}, // it waits for the others
        {"active", "ready",         "undef"  },
        {"n/a",    "optimized",     "live"   },
        {"n/a",    "non-optimized", "live"   },
    });
    const auto end = cells.size();
    const State state{cells[end - 3], cells[end - 2], cells[end - 1]};
    return std::any_of(kUsable.begin(), kUsable.end(), [&](const State& one) {
        return one.of_map == state.of_map && one.of_path == state.of_path &&
               one.of_device == state.of_device;
    });
}

}  // namespace

std::string drive_of(std::string_view device) {
    if (device.starts_with("/dev/")) device.remove_prefix(5);
    auto name = device;
    while (!name.empty() && is_digit(name.back())) name.remove_suffix(1);
    const bool counts_drives = device.starts_with("nvme") || device.starts_with("mmcblk");
    if (counts_drives) {
        // "nvme0n1p2": the partition stands behind a "p" that follows a digit
        const bool is_part = name.size() < device.size() && name.ends_with('p') &&
                             name.size() > 1 && is_digit(name[name.size() - 2]);
        name = is_part ? name.substr(0, name.size() - 1) : device;
    } else if (!device.starts_with("sd") && !device.starts_with("hd") &&
               !device.starts_with("vd") && !device.starts_with("xvd")) {
        name = device;
    }
    return "/dev/" + std::string(name);
}

// Personalities : [raid1] [raid6] [raid5] [raid4]
// md0 : active raid1 sdb1[1](F) sda1[0]
//       1046528 blocks super 1.2 [2/1] [U_]
//       [=>...................]  recovery =  5.5% (57600/1046528) finish=0.2min speed=57600K/sec
//
// unused devices: <none>
//
// A firmware's RAID has a container, which is never active, beside the arrays in it:
// md126 : active raid1 sda[1] sdb[0]
//       1046528 blocks super external:/md127/0 [2/2] [UU]
// md127 : inactive sdb[1](S) sda[0](S)
//       5928 blocks super external:imsm
void read_mdstat(CaptureLines& lines, Reading& reading) {
    std::optional<Md> md;
    std::vector<Md> containers;
    std::set<std::string> containers_in_use;
    bool has_head = false, has_end = false, has_blocks = true, inactive = false;
    std::int64_t number = 0;
    const auto finish = [&] {
        if (!md) return;
        if (!has_blocks && !inactive) gap(reading, number, "an array that is cut off");
        if (md->is_container)
            containers.push_back(std::move(*md));
        else
            file(std::move(*md), reading);
        md.reset();
    };
    while (const auto line = lines.next()) {
        number = line->number;
        const auto text = trimmed(line->text);
        if (text.empty()) continue;
        if (text.starts_with("Personalities")) {
            has_head = true;
        } else if (text.starts_with("unused devices")) {
            finish();
            has_end = line->ended;
        } else if (const auto pair = key_value(text, " : "); pair && pair->key.starts_with("md")) {
            finish();
            const auto cells = words(pair->value);
            md.emplace().array = reading.entity_at<Volume>(number);
            Volume& array = md->array;
            array.name = std::string(pair->key);
            array.device = "/dev/" + *array.name;
            inactive = cells[0] != "active";
            has_blocks = false;
            std::string state(cells[0]), faulty;
            for (std::size_t i = 1; i < cells.size(); ++i) {
                const auto cell = cells[i];
                if (cell.starts_with('(')) {  // "(auto-read-only)"
                    state += " " + std::string(cell);
                } else if (cell.find('[') == npos) {
                    if (!array.raid && line->ended) array.raid = std::string(cell);
                } else {
                    const auto device = cell.substr(0, cell.find('['));
                    auto member = member_of(array, reading, number);
                    member.device = drive_of(device);
                    if (cell.ends_with("(F)")) {
                        member.state = "faulty";
                        faulty += ", " + std::string(device) + " faulty";
                        add_faulty(reading, number, device);
                    } else if (cell.ends_with("(S)")) {
                        // An array that does not run calls all of its members so.
                        if (inactive)
                            member.is_spare.reset();
                        else
                            member.is_spare = true;
                    }
                    md->members.push_back(std::move(member));
                }
            }
            // Half a word is no state.
            if (line->ended || cells.size() > 1) array.state = state + faulty;
        } else if (md && text.find(" blocks") != npos) {
            has_blocks = true;
            Volume& array = md->array;
            constexpr std::string_view kExternal = " super external:";
            if (const auto at = text.find(kExternal); at != npos) {
                auto metadata = text.substr(at + kExternal.size());
                metadata = metadata.substr(0, metadata.find(' '));
                // "/md127/0", "-md127/0": the container, and which array in it
                if (metadata.starts_with('/') || metadata.starts_with('-')) {
                    metadata.remove_prefix(1);
                    containers_in_use.emplace(metadata.substr(0, metadata.find('/')));
                } else {
                    md->is_container = true;
                    array.raid = "container";
                }
            }
            const auto blocks = integer(text.substr(0, text.find(' ')));
            if (!blocks || *blocks < 0 || *blocks > (std::int64_t{1} << 50))
                gap(reading, number, "a size that cannot be read");
            else
                array.capacity_bytes = *blocks * 1024;
            const auto bracket = text.rfind('[');
            const auto members = bracket == npos ? std::string_view() : text.substr(bracket);
            if (array.state && members.find('_') != npos &&
                members.find_first_not_of("[]U_") == npos) {
                *array.state += ", degraded " + std::string(members);
                array.place.line = number;
            }
        } else if (md && (text.starts_with('[') || text.find('=') != npos)) {
            // "recovery =  5.5% (...)", "resync=DELAYED"
            for (const std::string_view operation :
                 {"recovery", "resync", "reshape", "check", "repair"}) {
                if (text.find(operation) == npos) continue;
                md->array.operation = std::string(operation);
                md->array.progress_percent = percent_in(text);
                md->array.elsewhere.push_back({"operation", reading.at(number)});
                break;
            }
        } else if (!md || !text.starts_with("bitmap")) {
            reading.how.unknown_line(number);
        }
    }
    finish();
    // With an array in it that runs a container is no volume; without one its data cannot be reached.
    for (auto& container : containers) {
        if (!containers_in_use.contains(*container.array.name)) file(std::move(container), reading);
    }
    if (!has_head || !has_end) gap(reading, number, "it has no end or no beginning");
    reading.how.lines = lines.count();
}

// /dev/md0:
//            Version : 1.2
//         Raid Level : raid1
//         Array Size : 1046528 (1022.00 MiB 1071.64 MB)
//              State : clean, degraded, recovering
//     Rebuild Status : 5% complete
//
//     Number   Major   Minor   RaidDevice State
//        0       8        1        0      active sync   /dev/sda1
//        -       0        0        1      removed
//        1       8       17        -      faulty   /dev/sdb1
void read_mdadm(CaptureLines& lines, Reading& reading) {
    static constexpr auto kArray = std::to_array<Key<Volume>>({
        {"Raid Level", as_text<&Volume::raid> },
        {"State",      as_text<&Volume::state>},
    });
    std::optional<Md> md;
    bool in_members = false;
    std::int64_t number = 0, count = 0;
    Integer places;  // "Raid Devices": each has a row
    const auto finish = [&] {
        if (!md) return;
        // A container has no state: /proc/mdstat tells whether its arrays run.
        const bool is_container = md->array.raid == "container";
        if ((!md->array.state && !is_container) || !in_members)
            gap(reading, number, "an array that is cut off");
        const auto positions = positions_of(md->members);
        const auto rows = static_cast<std::int64_t>(positions.size());
        if (in_members && places && rows < *places)
            gap(reading, number,
                std::to_string(*places) + " members announced, " + std::to_string(rows) + " read");
        if (places && rows == *places && md->array.state) show_members(*md->array.state, positions);
        places.reset();
        if (!is_container) file(std::move(*md), reading);
        md.reset();
        in_members = false;
    };
    while (const auto line = lines.next()) {
        number = line->number;
        const auto text = trimmed(line->text);
        if (text.empty()) continue;
        if (text.starts_with("/dev/") && text.ends_with(':') && text.find_first_of(" \t") == npos) {
            finish();
            md.emplace().array = reading.entity_at<Volume>(number);
            Volume& array = md->array;
            array.device = std::string(text.substr(0, text.size() - 1));
            array.name = told(array.device->substr(array.device->rfind('/') + 1));
            ++count;
        } else if (text.starts_with("Number ") && md) {
            in_members = true;
        } else if (in_members && (is_digit(text.front()) || text.starts_with("- "))) {
            const auto cells = words(text);
            constexpr std::size_t kRaidDevice = 3, kState = 4;
            if (cells.size() <= kRaidDevice || !line->ended) {
                gap(reading, number, "a row that does not fit its heading");
                continue;
            }
            auto member = member_of(md->array, reading, number);
            member.position = integer(cells[kRaidDevice]);
            std::string state;
            for (auto i = kState; i < cells.size() && !cells[i].starts_with("/dev/"); ++i)
                state += (state.empty() ? "" : " ") + std::string(cells[i]);
            member.state = told(state);
            member.is_spare = !member.position && state.starts_with("spare");
            const auto device = text.rfind("/dev/");
            if (device != npos) member.device = drive_of(text.substr(device));
            if (device != npos && state.find("faulty") != npos)
                add_faulty(reading, number, text.substr(device));
            md->members.push_back(std::move(member));
        } else if (const auto pair = key_value(text, " : "); pair && md) {
            Volume& array = md->array;
            set_by_key(std::span<const Key<Volume>>(kArray), pair->key, pair->value, array);
            if (pair->key == "State") array.place.line = number;
            if (pair->key == "Raid Devices") places = integer(pair->value);
            if (pair->key == "Array Size") {
                const auto blocks = integer(pair->value.substr(0, pair->value.find(' ')));
                if (blocks && *blocks >= 0 && *blocks < (std::int64_t{1} << 50))
                    array.capacity_bytes = *blocks * 1024;
                else
                    gap(reading, number, "a size that cannot be read");
            }
            if (pair->key.ends_with(" Status") && pair->value.ends_with("complete")) {
                const auto operation = pair->key.substr(0, pair->key.size() - 7);
                array.operation = told(operation);
                array.progress_percent = percent_in(pair->value);
                array.elsewhere.push_back({"operation", reading.at(number)});
            }
        } else if (text.starts_with("mdadm:")) {
            reading.how.errors.push_back({number, std::string(text)});
        } else {
            reading.how.unknown_line(number);
        }
    }
    finish();
    if (count == 0 && reading.how.errors.empty()) gap(reading, number, "no array is in it");
    reading.how.lines = lines.count();
}

//   pool: tank
//  state: DEGRADED
// status: One or more devices could not be used because the label is missing or
//         invalid.
//   scan: resilver in progress since Mon Nov 16 10:00:00 2026
//         1.20T scanned at 1.02G/s, 400G issued, 12.34% done, 01:02:03 to go
// config:
//
//         NAME        STATE     READ WRITE CKSUM
//         tank        DEGRADED     0     0     0
//           mirror-0  DEGRADED     0     0     0
//             sda     ONLINE       0     0     0
//             sdb     UNAVAIL      0     0     0  cannot open
//         logs
//           nvme0n1   ONLINE       0     0     0
//
// errors: No known data errors
void read_zpool(CaptureLines& lines, Reading& reading) {
    std::optional<Volume> pool;
    bool in_config = false, has_errors = false, has_answer = false;
    std::size_t pool_indent = 0, span_indent = 0;
    std::string section;  // of the pool: "logs", "cache", "spares", "special"
    std::string group;    // of the span: "mirror", "raidz2"
    Integer span;
    std::int64_t number = 0;
    const auto finish = [&] {
        if (!pool) return;
        if (!pool->state || !has_errors) gap(reading, number, "a pool that is cut off");
        reading.found.volumes.push_back(std::move(*pool));
        pool.reset();
        in_config = has_errors = false;
    };
    // "3", "1.2K"; more than 2^50 is no count of errors.
    const auto counter = [](std::string_view cell) -> Integer {
        const auto value = leading_real(cell);
        if (!value) return std::nullopt;
        const auto unit = std::string_view("KMGT").find(cell.back());
        double scaled = *value;
        for (std::size_t i = 0; unit != npos && i <= unit; ++i) scaled *= 1000;
        if (scaled < 0 || scaled > 0x1p50) return std::nullopt;
        return static_cast<std::int64_t>(scaled);
    };
    while (const auto line = lines.next()) {
        number = line->number;
        const auto text = trimmed(line->text);
        if (text.empty()) continue;
        if (text == "no pools available") {
            has_answer = true;
        } else if (const auto pair = key_value(text, ":");
                   pair && !in_config && pair->key == "pool") {
            finish();
            has_answer = true;
            pool = reading.entity_at<Volume>(number);
            pool->name = told(pair->value);
        } else if (pool && text.starts_with("errors:")) {
            has_errors = true;
            in_config = false;
            const auto errors = trimmed(text.substr(7));
            if (errors == "No known data errors") continue;
            if (!line->ended || errors.empty()) {
                gap(reading, number, "a line that is cut off");
            } else if (pool->state) {
                *pool->state += ", " + std::string(errors);
            }
        } else if (pool && in_config) {
            const auto indent = line->text.find_first_not_of(" \t");
            if (indent == 0) {  // another program's words, which end no group
                gap(reading, number, "a row that does not fit its heading");
                continue;
            }
            const auto cells = words(text);
            if (cells.size() == 1) {  // "logs", "spares", "cache"
                section = cells[0];
                group.clear();
                span.reset();
                continue;
            }
            if (cells[0] == "NAME") continue;
            if (section == "spares") {
                add_spare(*pool, cells, reading, number);
                continue;
            }
            if (cells.size() < 5) {
                gap(reading, number, "a row that does not fit its heading");
                continue;
            }
            if (indent <= span_indent) {
                group.clear();
                span.reset();
            }
            const std::string_view name = cells[0];
            if (name == pool->name && pool_indent == 0) {
                pool_indent = indent;
                continue;
            }
            if (name.starts_with("mirror") || name.starts_with("raidz") ||
                name.starts_with("draid") || name.starts_with("spare-") ||
                name.starts_with("replacing")) {
                const bool has_raid = !name.starts_with("spare-") && !name.starts_with("replacing");
                const bool has_data = section != "logs" && section != "cache";
                const auto kind = has_raid ? name.substr(0, name.find('-')) : "mirror";
                if (!pool->raid && has_raid && has_data) pool->raid = std::string(kind);
                if (!span && has_data) {  // "spare-1" and "replacing-1" stand within one
                    span = integer(name.substr(name.rfind('-') + 1));
                    span_indent = indent;
                    group = kind;
                }
                continue;
            }
            auto drive = reading.entity_at<Drive>(number);
            name_device(drive, cells);
            drive.state = std::string(cells[1]);
            if (section == "cache" || section == "logs")
                drive.pool_part = section == "logs" ? "log" : section;
            const auto reads = counter(cells[2]), writes = counter(cells[3]),
                       sums = counter(cells[4]);
            if (!reads || !writes || !sums) {
                gap(reading, number, "a row that does not fit its heading");
                continue;
            }
            drive.other_errors = *reads + *writes + *sums;
            if (section != "cache") {
                auto member = member_of(*pool, reading, number);
                name_device(member, cells);
                member.state = drive.state;
                member.span = span;
                member.group = section == "logs" ? "log" : group;
                reading.found.volume_members.push_back(std::move(member));
            }
            // One without a name is told by the pool's state and its member.
            if (has_name(drive)) reading.found.drives.push_back(std::move(drive));
        } else if (const auto head = key_value(text, ":"); pool && head && head->key == "state") {
            pool->state = told(head->value);
            pool->place.line = number;
        } else if (pool && head && head->key == "scan") {
            const auto in_progress = head->value.find(" in progress");
            if (in_progress != npos) {
                pool->operation = told(head->value.substr(0, in_progress));
                pool->elsewhere.push_back({"operation", reading.at(number)});
            }
        } else if (pool && head && head->key == "config") {
            in_config = true;
            pool_indent = span_indent = 0;
            section.clear();
            group.clear();
            span.reset();
        } else if (pool && pool->operation && text.find("% done") != npos) {
            pool->progress_percent = percent_in(text);
        } else if (!pool) {
            reading.how.unknown_line(number);
        }
    }
    finish();
    if (!has_answer) gap(reading, number, "no pool is in it");
    reading.how.lines = lines.count();
}

// mpatha (360050764008100dac000000000000100) dm-2 IBM,2145
// size=20G features='0' hwhandler='0' wp=rw
// |-+- policy='service-time 0' prio=50 status=active
// | `- 3:0:0:1 sdb 8:16 active ready running
// `-+- policy='service-time 0' prio=10 status=enabled
//   `- 4:0:0:1 sdc 8:32 failed faulty offline
//
// All paths of a map are gone:
// mpathb (360050764008100dac000000000000101) dm-3 ##,##
//
// Paths that the kernel itself joins:
// uuid.36363030-3030-3030 [nvme]:nvme1n1 NVMe,EXS NV960,1.0
// size=1875385008 features='n/a' hwhandler='ANA' wp=rw
// `-+- policy='n/a' prio=50 status=optimized
//   `- 1:1:1 nvme1c1n1 0:0 n/a optimized live
//
// The program's own messages:
// Nov 16 12:19:33 | dm-5: no usable paths found
void read_multipath(CaptureLines& lines, Reading& reading) {
    std::optional<Volume> map;
    std::int64_t number = 0, paths = 0, failed = 0, failed_line = 0;
    bool is_bare = false;  // it has no path, and says so
    const auto finish = [&] {
        if (!map) return;
        if (paths == 0 && !is_bare) gap(reading, number, "a map without paths");
        map->state = paths == 0 && is_bare ? "failed, no path is left" : "active";
        if (failed > 0) {
            const auto left = paths - failed;
            const auto count = std::to_string(failed) + " of " + std::to_string(paths);
            map->state = left == 0   ? "failed, no path is left"
                         : left == 1 ? "degraded, " + count + " paths failed"
                                     : "partially degraded, " + count + " paths failed";
            map->place.line = failed_line;
        }
        reading.found.volumes.push_back(std::move(*map));
        map.reset();
        paths = failed = 0;
        is_bare = false;
    };
    const auto begin = [&](std::string_view name) {
        finish();
        map = reading.entity_at<Volume>(number);
        map->name = std::string(name);
        map->raid = "multipath";
    };
    while (const auto line = lines.next()) {
        number = line->number;
        const auto text = trimmed(line->text);
        if (text.empty()) continue;
        const auto cells = words(text);
        const bool is_branch = text.front() == '|' || text.front() == '`' || text.front() == '\\';
        if (is_branch) {
            if (!map) {
                reading.how.unknown_line(number);
                continue;
            }
            // "| `- 3:0:0:1 sdb 8:16 active ready running"
            if (text.find("policy=") != npos) continue;
            if (cells.size() < 6 || !line->ended) {
                gap(reading, number, "a path that cannot be read");
                continue;
            }
            ++paths;
            if (!is_usable_path(cells) && failed++ == 0) failed_line = number;
        } else if (text.starts_with("size=") && map) {
            const auto size = std::string(text.substr(5, text.find(' ') - 5));
            if (!size.empty() && !is_digit(size.back()))  // else it is no number of bytes
                map->capacity_bytes = binary_bytes(size + "B");
        } else if (const auto nvme = text.find(" [nvme]:"); nvme != npos && !is_message(text)) {
            begin(text.substr(0, nvme));
            const auto device = text.substr(nvme + 8);
            map->device = "/dev/" + std::string(device.substr(0, device.find(' ')));
        } else if (text.find(" dm-") != npos && !is_message(text)) {
            begin(cells[0]);
            map->device = "/dev/mapper/" + *map->name;
            is_bare = text.ends_with(" ##,##") && line->ended;
        } else {
            reading.how.unknown_line(number);
        }
    }
    finish();
    reading.how.lines = lines.count();
}

}  // namespace qvhost::inventory
