// ipmitool sel info: how full the event log is.
//     SEL Information
//     Version          : 1.5 (v1.5, v2 compliant)
//     Entries          : 60
//     Free Space       : 64576 bytes
//     Percent Used     : unknown
//     Overflow         : false
//     # of Alloc Units : 4000
//     # Free Units     : 3572
#include <map>
#include <string>

#include "inventory/each_line.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/readers.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

// Where the tool does not say it: from the units that it counts, else from the free bytes.
Real used_percent(const std::map<std::string, std::string, std::less<>>& told_by_key,
                  Integer entries) {
    const auto value = [&](std::string_view key) -> std::string_view {
        const auto found = told_by_key.find(key);
        return found == told_by_key.end() ? std::string_view() : found->second;
    };
    constexpr double kEntryBytes = 16;
    if (const auto percent = leading_real(value("Percent Used"))) return percent;
    const auto units = integer(value("# of Alloc Units"));
    const auto free_units = integer(value("# Free Units"));
    if (units && free_units && *units > 0 && *free_units >= 0 && *free_units <= *units)
        return 100.0 * static_cast<double>(*units - *free_units) / static_cast<double>(*units);
    const auto free_space = value("Free Space");
    const auto free_bytes = leading_real(free_space);
    // "65535 bytes or more" tells nothing.
    if (!entries || !free_bytes || *free_bytes < 0 ||
        free_space.find("or more") != std::string_view::npos)
        return std::nullopt;
    const double used_bytes = static_cast<double>(*entries) * kEntryBytes;
    if (used_bytes + *free_bytes <= 0) return std::nullopt;
    return 100.0 * used_bytes / (used_bytes + *free_bytes);
}

}  // namespace

void read_sel_info(CaptureLines& lines, Reading& reading) {
    std::map<std::string, std::string, std::less<>> told_by_key;
    std::int64_t where = 0;
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = without_chatter(line.text);
        const auto pair = key_value(text, ":");
        if (trimmed(text) == "SEL Information") return;
        if (!pair || is_tool_error(text)) {
            read_aside(line, reading);
            return;
        }
        if (pair->key == "Entries") where = line.number;
        if (!line.ended && pair->key != "Max Record Size") {
            add_gap(reading, line.number, "the capture ends in the middle");
            return;
        }
        told_by_key.emplace(pair->key, pair->value);
    });
    SelLog log;
    log.place = reading.at(where);
    log.entries = integer(told_by_key["Entries"]);
    if (!log.entries || *log.entries < 0) {
        log.entries.reset();
        if (reading.how.lines > 0) add_gap(reading, reading.how.lines, "no count of entries");
        return;
    }
    log.used_percent = used_percent(told_by_key, log.entries);
    const auto overflow = told_by_key.find("Overflow");
    if (overflow != told_by_key.end()) {
        if (overflow->second == "true") log.overflow = true;
        if (overflow->second == "false") log.overflow = false;
    }
    if (!log.overflow) add_gap(reading, reading.how.lines, "no word on an overflow");
    reading.found.sel_logs.push_back(std::move(log));
}

}  // namespace qvhost::inventory
