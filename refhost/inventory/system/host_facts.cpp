// What the operating system says of itself, a file or command each:
//     /proc/cmdline     BOOT_IMAGE=/vmlinuz root=/dev/mapper/system-root ro quiet
//     /etc/os-release   PRETTY_NAME="Debian GNU/Linux 12 (bookworm)"
//     /proc/uptime      350735.47 234388.90
//     uptime            10:11:12 up 3 days,  2:04,  1 user,  load average: 0.00, 0.01, 0.05
//     hostname          kp220.example.com
//     /etc/machine-id   0123456789abcdef0123456789abcdef
//     uname -r          6.1.0-18-amd64
//     /proc/version     Linux version 6.1.0-18-amd64 (debian-kernel@lists.debian.org) ...
#include <cmath>
#include <string>

#include "inventory/each_line.h"
#include "inventory/forms.h"
#include "inventory/ipmi/aside.h"
#include "inventory/system/readers.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

// One line, of which value_of() makes the fact.
template <class ValueOf>
void read_line(CaptureLines& lines, Reading& reading, const char* what, ValueOf value_of) {
    HostFacts facts;
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = trimmed(line.text);
        if (text.empty()) return;
        if (facts.place.line > 0 || is_tool_error(text) || !value_of(text, facts)) {
            read_aside(line, reading);
            return;
        }
        facts.place = reading.at(line.number);
    });
    if (facts.place.line > 0)
        reading.found.host_facts.push_back(std::move(facts));
    else if (reading.how.lines > 0)
        add_gap(reading, reading.how.lines, std::string("no ") + what);
}

// "3 days,  2:04", "2:04", "5 min"
Integer seconds_up(std::string_view text) {
    constexpr std::int64_t kMinute = 60, kHour = 3600, kDay = 86400;
    std::int64_t seconds = 0;
    bool any = false;
    for (const auto part : fields_between(text, ',')) {
        const auto parts = words(part);
        if (parts.empty()) continue;
        const auto number = integer(parts[0]);
        const auto colon = parts[0].find(':');
        if (parts.size() == 2 && number && *number >= 0 && *number < 1'000'000) {
            const auto unit = parts[1];
            if (unit.starts_with("day"))
                seconds += *number * kDay;
            else if (unit.starts_with("min"))
                seconds += *number * kMinute;
            else if (unit.starts_with("sec"))
                seconds += *number;
            else
                break;
        } else if (parts.size() == 1 && colon != std::string_view::npos) {
            const auto hours = integer(parts[0].substr(0, colon));
            const auto minutes = integer(parts[0].substr(colon + 1));
            if (!hours || !minutes || *hours < 0 || *hours > 24 || *minutes < 0) break;
            seconds += *hours * kHour + *minutes * kMinute;
        } else {
            break;
        }
        any = true;
    }
    return any ? Integer(seconds) : std::nullopt;
}

bool take_uptime(std::string_view text, HostFacts& facts) {
    const auto up = text.find(" up ");
    if (up != std::string_view::npos) {
        facts.uptime_seconds = seconds_up(text.substr(up + 4));
    } else {
        const auto parts = words(text);
        const auto seconds = real(parts[0]);
        if (parts.size() == 2 && seconds && *seconds >= 0 && *seconds < 1e15)
            facts.uptime_seconds = std::llround(std::floor(*seconds));
    }
    return facts.uptime_seconds.has_value();
}

bool take_kernel(std::string_view text, HostFacts& facts) {
    const auto parts = words(text);
    if (parts.size() >= 3 && parts[0] == "Linux")
        facts.kernel = std::string(parts[1] == "version" ? parts[2] : parts[1]);
    else if (parts.size() == 1)
        facts.kernel = std::string(parts[0]);
    return facts.kernel.has_value();
}

std::string_view unquoted(std::string_view text) {
    if (text.size() >= 2 && (text.front() == '"' || text.front() == '\'') &&
        text.back() == text.front())
        return text.substr(1, text.size() - 2);
    return text;
}

}  // namespace

void read_cmdline(CaptureLines& lines, Reading& reading) {
    read_line(lines, reading, "command line", [](std::string_view text, HostFacts& facts) {
        facts.cmdline = std::string(text);
        return true;
    });
}

void read_uptime(CaptureLines& lines, Reading& reading) {
    read_line(lines, reading, "uptime", take_uptime);
}

void read_hostname(CaptureLines& lines, Reading& reading) {
    read_line(lines, reading, "host name", [](std::string_view text, HostFacts& facts) {
        if (words(text).size() == 1) facts.host = std::string(text);
        return facts.host.has_value();
    });
}

void read_machine_id(CaptureLines& lines, Reading& reading) {
    constexpr std::size_t kDigits = 32;
    read_line(lines, reading, "machine id", [](std::string_view text, HostFacts& facts) {
        if (text.size() == kDigits &&
            text.find_first_not_of("0123456789abcdef") == std::string_view::npos)
            facts.machine_id = std::string(text);
        return facts.machine_id.has_value();
    });
}

void read_kernel(CaptureLines& lines, Reading& reading) {
    read_line(lines, reading, "kernel version", take_kernel);
}

void read_os_release(CaptureLines& lines, Reading& reading) {
    HostFacts facts;
    std::string name, version;
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto pair = key_value(line.text, "=");
        if (!pair || is_tool_error(line.text)) {
            if (!trimmed(line.text).starts_with('#')) read_aside(line, reading);
            return;
        }
        if (!line.ended && !pair->value.ends_with('"')) return;
        const auto value = unquoted(pair->value);
        if (pair->key == "NAME") name = std::string(value);
        if (pair->key == "VERSION") version = std::string(value);
        if (pair->key != "PRETTY_NAME" && pair->key != "NAME") return;
        if (facts.place.line == 0 || pair->key == "PRETTY_NAME")
            facts.place = reading.at(line.number);
        if (pair->key == "PRETTY_NAME") facts.os = told(value);
    });
    if (!facts.os) facts.os = told(name + " " + version);
    if (facts.os)
        reading.found.host_facts.push_back(std::move(facts));
    else if (reading.how.lines > 0)
        add_gap(reading, reading.how.lines, "no name of the operating system");
}

}  // namespace qvhost::inventory
