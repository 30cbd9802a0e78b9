// dmesg: the kernel's messages. Before a message stands its time since the start, with -T a date, with
// -H a shorter one, or nothing; with -r and -x its level, and the thread that said it.
//     [   30.373652] EDAC MC1: 1 CE memory read error on CPU_SrcID#1_Ha#0_Chan#0_DIMM#0
//     [Sat Nov 21 04:05:06 2026] blk_update_request: I/O error, dev sda, sector 1024
//     2026-11-21T04:05:06,373652+00:00 I/O error, dev sda, sector 1024
//     <3>[   30.373652][  T123] I/O error, dev sda, sector 1024
//     kern  :err   : [   30.373652] I/O error, dev sda, sector 1024
// The buffer is a ring: its beginning may be gone, and nothing is missing for that.
#include <array>
#include <optional>
#include <string>

#include "inventory/each_line.h"
#include "inventory/forms.h"
#include "inventory/ipmi/aside.h"
#include "inventory/system/kernel_messages.h"
#include "inventory/system/readers.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

struct Message {
    std::string_view text;
    Text time;
};

std::optional<int> small_number(std::string_view text) {
    const auto value = integer(text);
    if (!value || *value < 0 || *value > 9999) return std::nullopt;
    return static_cast<int>(*value);
}

// "04:05:06"
Text time_on(std::optional<int> year, std::optional<int> month, std::optional<int> day,
             std::string_view clock) {
    if (clock.size() < 8 || clock[2] != ':' || clock[5] != ':') return std::nullopt;
    const auto hour = small_number(clock.substr(0, 2));
    const auto minute = small_number(clock.substr(3, 2));
    const auto second = small_number(clock.substr(6, 2));
    if (!year || !month || !day || !hour || !minute || !second) return std::nullopt;
    return iso_time(*year, *month, *day, *hour, *minute, *second);
}

// "Sat Nov 21 04:05:06 2026"
Text date_between_brackets(std::string_view text) {
    const auto parts = words(text);
    if (parts.size() != 5) return std::nullopt;
    return time_on(small_number(parts[4]), month_number(parts[1]), small_number(parts[2]),
                   parts[3]);
}

// "2026-11-21T04:05:06,373652+00:00"
Text iso_date(std::string_view word) {
    if (word.size() < 19 || word[4] != '-' || word[7] != '-' || word[10] != 'T')
        return std::nullopt;
    return time_on(small_number(word.substr(0, 4)), small_number(word.substr(5, 2)),
                   small_number(word.substr(8, 2)), word.substr(11));
}

// The text without "<3>" or "kern  :err   : " at its beginning.
std::string_view without_level(std::string_view text) {
    if (text.starts_with('<')) {
        const auto end = text.find('>');
        if (end != std::string_view::npos && end <= 4) return text.substr(end + 1);
    }
    // "sd 0:0:1:0: [sdb]" is a message.
    const auto bracket = text.find(": [");
    if (bracket != std::string_view::npos && bracket <= 16 &&
        text.substr(0, bracket).find(':') != std::string_view::npos &&
        text.substr(0, bracket).find_first_not_of("abcdefghijklmnopqrstuvwxyz: ") ==
            std::string_view::npos)
        return text.substr(bracket + 2);
    return text;
}

Message message_of(std::string_view line) {
    Message message{without_level(line), std::nullopt};
    auto& text = message.text;
    while (text.starts_with('[')) {
        const auto end = text.find(']');
        const auto inside = text.substr(1, end == std::string_view::npos ? 0 : end - 1);
        // A message may begin with "[Hardware Error]".
        const bool is_stamp = real(inside) || trimmed(inside).starts_with('+') ||
                              trimmed(inside).starts_with('T') ||
                              trimmed(inside).starts_with('C') || month_number(inside) > 0 ||
                              date_between_brackets(inside);
        if (!is_stamp) break;
        if (!message.time) message.time = date_between_brackets(inside);
        text = trimmed(text.substr(end + 1));
    }
    const auto word = text.substr(0, text.find(' '));
    if (auto time = iso_date(word)) {
        message.time = std::move(time);
        text.remove_prefix(word.size());
    }
    text = trimmed(text);
    return message;
}

// The status of "CPU 3: Machine Check: 0 Bank 5: be00000000800400": bit 61 says whether the error was
// uncorrected.
std::optional<Severity> severity_of_bank(std::string_view text) {
    constexpr std::string_view kMark = " Bank ";
    const auto at = text.find(kMark);
    if (at == std::string_view::npos) return std::nullopt;
    const auto colon = text.find(": ", at);
    if (colon == std::string_view::npos) return std::nullopt;
    const auto status = words(text.substr(colon + 1));
    if (status.empty() || status[0].size() != 16) return std::nullopt;
    const auto high = integer("0x" + std::string(status[0].substr(0, 2)));
    if (!high) return std::nullopt;
    return (*high & 0x20) != 0 ? Severity::critical : Severity::info;
}

constexpr auto kErrors = std::to_array<std::string_view>({
    "dmesg: *",
    "*: dmesg: *",
});

bool is_error(std::string_view line) {
    for (const auto form : kErrors)
        if (is_like(line, form)) return true;
    return false;
}

}  // namespace

void read_dmesg(CaptureLines& lines, Reading& reading) {
    bool has_kernel = false;
    std::optional<Severity> reported;  // by the firmware, of the sections that follow
    each_line(lines, reading, [&](const CaptureLine& line) {
        if (!line.ended) add_gap(reading, line.number, "the capture ends in the middle of a line");
        if (is_error(line.text)) {
            reading.how.errors.push_back({line.number, std::string(trimmed(line.text))});
            return;
        }
        auto message = message_of(line.text);
        constexpr std::string_view kVersion = "Linux version ";
        if (!has_kernel && message.text.starts_with(kVersion)) {
            has_kernel = true;
            HostFacts facts;
            facts.place = reading.at(line.number);
            const auto version = message.text.substr(kVersion.size());
            facts.kernel = told(version.substr(0, version.find(' ')));
            if (line.ended) reading.found.host_facts.push_back(std::move(facts));
        }
        const auto judged = judge_kernel_message(message.text);
        if (!judged) return;
        Event event;
        event.place = reading.at(line.number);
        event.source = "kernel";
        event.time = std::move(message.time);
        event.severity = judged->form->severity.value_or(Severity::info);
        if (message.text.find("event severity: ") != std::string_view::npos)
            reported = event.severity;
        if (message.text.find("section_type: ") != std::string_view::npos)
            event.severity = reported.value_or(Severity::warning);
        if (message.text.find("Machine Check:") != std::string_view::npos)
            event.severity = severity_of_bank(message.text).value_or(event.severity);
        event.subject = std::string(judged->subject);
        event.text = std::string(message.text);
        reading.event(std::move(event));
    });
}

}  // namespace qvhost::inventory
