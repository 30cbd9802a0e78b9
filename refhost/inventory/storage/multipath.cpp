#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "inventory/storage/software.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

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
        if (paths == 0 && !is_bare) reading.how.gap(number, "a map without paths");
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
                reading.how.gap(number, "a path that cannot be read");
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
