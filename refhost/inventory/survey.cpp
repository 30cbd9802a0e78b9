#include "inventory/survey.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>

#include "inventory/capture_lines.h"
#include "inventory/capture_reader.h"
#include "inventory/ipmi/captures.h"
#include "inventory/ipmi/join.h"
#include "inventory/storage/captures.h"
#include "inventory/storage/join.h"
#include "inventory/system/captures.h"
#include "inventory/system/join.h"
#include "text/shell_error.h"

namespace qvhost::inventory {

namespace {

namespace fs = std::filesystem;

// The names of the files in the directory, and of those in its subdirectories, sorted.
std::set<std::string> files_in(const fs::path& log_dir, const std::set<std::string>& foreign) {
    std::set<std::string> names;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(log_dir, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry.depth() > 0) entry.disable_recursion_pending();
        if (entry->is_symlink(error) || !entry->is_regular_file(error)) continue;
        const auto name = entry->path().lexically_relative(log_dir);
        if (!foreign.contains(*name.begin())) names.insert(name.string());
    }
    return names;
}

// A regular file, not through a link; what waits (a pipe) is not opened.
int open_capture(const fs::path& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    struct stat info = {};
    if (fd >= 0 && (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode))) {
        ::close(fd);
        errno = EINVAL;
        return -1;
    }
    return fd;
}

// So much is kept in memory of a capture, and of all. A server with a thousand drives has a quarter of it.
constexpr std::size_t kMostBytes = std::size_t{4}
                                   << 20;  // a log is handed on, and may have any size
constexpr std::size_t kMostAllBytes = std::size_t{16} << 20;
constexpr std::size_t kMostEntities = 4'096;
constexpr std::size_t kMostAllEntities = 12'288;

template <class... Entities>
std::size_t count_of(const std::vector<Entities>&... lists) {
    return (lists.size() + ...);
}

// Names all lists, so that an Inventory with another one does not compile before it is counted here.
std::size_t entities_in(const Inventory& inventory) {
    const auto& [systems, processors, memory_modules, bmcs, sensors, power_supplies, frus,
                 controllers, batteries, enclosures, volumes, drives, volume_members, topology,
                 pci_devices, controller_counts, sel_logs, ipmi_devices, clocks, host_facts,
                 empty_memory_slots, chassis_states, leds, component_versions, sdr_sensors,
                 ipmiutil_sensors, firmware_power_supplies, kernel_processors] = inventory;
    return count_of(systems, processors, memory_modules, bmcs, sensors, power_supplies, frus,
                    controllers, batteries, enclosures, volumes, drives, volume_members, topology,
                    pci_devices, controller_counts, sel_logs, ipmi_devices, clocks, host_facts,
                    empty_memory_slots, chassis_states, leds, component_versions, sdr_sensors,
                    ipmiutil_sensors, firmware_power_supplies, kernel_processors);
}

// Reads the capture as far as there is room for it; what is left out is a gap. Takes the descriptor, and what
// it read off the room.
void read_bounded(const CaptureReader& reader, int fd, Reading& reading, std::size_t& room) {
    CaptureLines lines(fd);
    const auto bytes = reader.log ? SIZE_MAX : std::min(room, kMostBytes);
    const auto before = entities_in(reading.found);
    const auto entities =
        before + (reader.log ? kMostEntities
                             : std::min(kMostEntities,
                                        kMostAllEntities - std::min(before, kMostAllEntities)));
    lines.stop_when([&] { return lines.bytes() > bytes || entities_in(reading.found) > entities; });
    read_lines(reader, lines, reading);
    if (!reader.log) room -= std::min(room, lines.bytes());
    if (lines.was_stopped())
        reading.how.gaps.push_front({lines.count(), "it is too long: its first " +
                                                        std::to_string(lines.bytes() >> 10) +
                                                        " KiB were read"});
}

class Surveyor {
public:
    Surveyor(const fs::path& log_dir, const std::vector<CaptureOrigin>& origins,
             const EventSink& events, const std::set<std::string>& foreign, Survey& survey)
        : log_dir_(log_dir), origins_(origins), events_(events), survey_(survey) {
        names_ = files_in(log_dir, foreign);
        for (const auto& origin : origins) names_.insert(origin.capture);
    }

    void read_all(std::span<const CaptureReader> readers) {
        for (const auto& row : readers) {
            for (const auto& name : names_) {
                if (reader_for(readers, name) != &row || !is_wanted(row, name)) continue;
                if (row.log && row.log != std::string_view(kOwnLog)) {
                    logs_[row.log].push_back({&row, name});
                } else {
                    read(row, name, events_);
                }
            }
        }
        for (const auto& [log, captures] : logs_) read_log(captures);
        logs_.clear();
    }

private:
    // An event that two captures tell is one event: of the two the one is read that has its end.
    bool is_wanted(const CaptureReader& reader, const std::string& name) const {
        if (reader.instead_of && names_.contains(reader.instead_of))
            return !has_end(reader.instead_of);
        for (const auto& other : storage_captures()) {
            if (other.instead_of && name == other.instead_of && names_.contains(other.pattern))
                return has_end(name);
        }
        return true;
    }

    bool has_end(const std::string& name) const {
        const int fd = open_capture(log_dir_ / name);
        if (fd < 0) return false;
        constexpr off_t kTail = 4096;  // bytes
        const off_t size = ::lseek(fd, 0, SEEK_END);
        std::string tail(static_cast<std::size_t>(std::clamp<off_t>(size, 0, kTail)), '\0');
        const auto got = ::pread(fd, tail.data(), tail.size(), std::max<off_t>(0, size - kTail));
        ::close(fd);
        return got == static_cast<ssize_t>(tail.size()) && events_are_whole(tail);
    }

    struct LogCapture {
        const CaptureReader* reader;
        std::string name;
        std::int64_t events = 0;
    };

    // Of several captures of one log the first whole one's events are handed on, else those of the
    // longest.
    void read_log(std::vector<LogCapture> captures) {
        for (auto& one : captures) {
            const bool is_alone = captures.size() == 1;
            const EventSink count = [&](Event&& event) {
                ++one.events;
                if (is_alone) events_(std::move(event));
            };
            read(*one.reader, one.name, count);
            check_count(survey_.captures.back(), one.events);
        }
        if (captures.size() == 1) return;
        const auto is_worse = [&](const LogCapture& a, const LogCapture& b) {
            const bool a_whole = survey_.find(a.name)->whole();
            const bool b_whole = survey_.find(b.name)->whole();
            return a_whole == b_whole ? !a_whole && a.events < b.events : b_whole;
        };
        const auto best = std::max_element(captures.begin(), captures.end(), is_worse);
        Inventory known;
        Reading reading{best->name, known, events_};
        if (const int fd = open_capture(log_dir_ / best->name); fd >= 0)
            read_bounded(*best->reader, fd, reading, room_);
        else
            reading.how.gaps.push_back(cannot_be_read(errno));
        // It could be read when events were counted; now it may break off.
        for (auto& capture : survey_.captures) {
            if (capture.name == best->name && capture.how.gaps.empty() && !reading.how.gaps.empty())
                capture.how.gaps.push_back(reading.how.gaps.front());
        }
    }

    // ipmitool's own count of the event log's entries stands in a capture of its own.
    void check_count(SurveyedCapture& capture, std::int64_t entries) const {
        for (const auto& log : survey_.inventory.sel_logs) {
            if (log.place.capture != "host_sel_info.txt" || capture.name != "host_sel.txt" ||
                log.entries.value_or(0) <= entries)
                continue;
            capture.how.gaps.push_back({capture.how.lines, std::to_string(*log.entries) +
                                                               " entries announced, " +
                                                               std::to_string(entries) + " read"});
        }
    }

    void read(const CaptureReader& reader, const std::string& name, const EventSink& events) {
        SurveyedCapture capture;
        capture.name = name;
        // The last command that wrote it.
        for (const auto& origin : origins_) {
            if (origin.capture != name) continue;
            capture.tool = origin.tool;
            capture.ended_badly = origin.ended_badly;
        }
        const int fd = open_capture(log_dir_ / name);
        if (fd >= 0) {
            capture.is_there = true;
            Reading reading{name, survey_.inventory, events};
            if (const auto text = without_refusal(fd, capture)) {
                ::close(fd);
                CaptureLines lines(*text);
                read_lines(reader, lines, reading);
            } else {
                read_bounded(reader, fd, reading, room_);
            }
            capture.how = std::move(reading.how);
            if (reader.may_be_none) forgive_absence(capture);
        } else if (errno != ENOENT) {
            capture.is_there = true;
            capture.how.gaps.push_back(cannot_be_read(errno));
        }
        survey_.captures.push_back(std::move(capture));
    }

    // The text of a capture in which the shell or the loader says that it cannot start the tool, with nothing
    // in the place of these lines: how the command ended tells it already. None: there is no such line.
    static std::optional<std::string> without_refusal(int fd, const SurveyedCapture& capture) {
        if (capture.ended_badly.empty()) return std::nullopt;
        constexpr std::size_t kMost = 4096;  // bytes; a tool that was not started says no more
        std::string text(kMost + 1, '\0');
        const auto got = ::pread(fd, text.data(), text.size(), 0);
        if (got <= 0 || static_cast<std::size_t>(got) > kMost) return std::nullopt;
        text.resize(static_cast<std::size_t>(got));
        bool is_there = false;
        for (std::size_t at = 0; at < text.size();) {
            const auto end = std::min(text.find('\n', at), text.size());
            if (tells_no_start(capture.tool, std::string_view(text).substr(at, end - at))) {
                std::fill(text.begin() + static_cast<std::ptrdiff_t>(at),
                          text.begin() + static_cast<std::ptrdiff_t>(end), ' ');
                is_there = true;
            }
            at = end + 1;
        }
        return is_there ? std::optional(text) : std::nullopt;
    }

    static void forgive_absence(SurveyedCapture& capture) {
        const auto forgiven = capture.how.errors.erase_if(
            [](const ToolError& error) { return says_there_is_none(error.words); });
        if (forgiven > 0 && capture.ended_badly.starts_with("exit code ") &&
            capture.ended_badly.find(':') == std::string::npos)
            capture.ended_badly.clear();
    }

    const fs::path& log_dir_;
    const std::vector<CaptureOrigin>& origins_;
    const EventSink& events_;
    Survey& survey_;
    std::set<std::string> names_;
    std::map<std::string, std::vector<LogCapture>> logs_;
    std::size_t room_ = kMostAllBytes;
};

}  // namespace

const SurveyedCapture* Survey::find(const std::string& capture) const {
    const auto found =
        std::find_if(captures.begin(), captures.end(),
                     [&](const SurveyedCapture& one) { return one.name == capture; });
    return found == captures.end() ? nullptr : &*found;
}

Survey survey(const fs::path& log_dir, const std::vector<CaptureOrigin>& origins,
              const EventSink& events, const std::set<std::string>& foreign) {
    Survey result;
    Surveyor surveyor(log_dir, origins, events, foreign, result);
    surveyor.read_all(storage_captures());
    surveyor.read_all(ipmi_captures());
    surveyor.read_all(system_captures());
    for (const auto& gaps : {join_storage(result.inventory), join_bmc(result.inventory)}) {
        for (const auto& [name, gap] : gaps) {
            for (auto& capture : result.captures) {
                if (capture.name == name) capture.how.gaps.push_back(gap);
            }
        }
    }
    join_machine(result.inventory);
    return result;
}

bool read_capture(const fs::path& log_dir, const std::string& name, Inventory& found) {
    for (const auto readers : {storage_captures(), ipmi_captures(), system_captures()}) {
        const auto* reader = reader_for(readers, name);
        const int fd = reader ? open_capture(log_dir / name) : -1;
        if (fd < 0) continue;
        Reading reading{name, found, [](Event&&) {}};
        auto room = kMostBytes;
        read_bounded(*reader, fd, reading, room);
        return reading.how.whole();
    }
    return false;
}

}  // namespace qvhost::inventory
