#include "inventory/ipmi/aside.h"

#include <algorithm>
#include <array>
#include <string>

#include "inventory/forms.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

// Said on standard error by tools that then answer as ever; a longer form stands before one that it
// begins with.
constexpr auto kChatter = std::to_array<std::string_view>({
    // Debian and Ubuntu: no list of enterprise numbers is installed
    "IANA PEN registry open failed: No such file or directory",
    "IANA PEN registry open failed: Permission denied",
    // ipmitool -v, and some builds without it
    "Running Get PICMG Properties my_addr 0x20, transit 0, target 0x20",
    "Running Get PICMG Properties my_addr 0x20, transit 0, target 0",
    "Error Response 0xc1 from Get PICMG Properities",
    "Error response 0xc1 from Get PICMG Properities",
    "Error Response 0xcc from Get PICMG Properities",
    "Error response 0xcc from Get PICMG Properities",
    "No PICMG Extenstion discovered",
    "Running Get VSO Capabilities my_addr 0x20, transit 0, target 0",
    "Invalid completion code received: Invalid command",
    "Acquire IPMB address",
    "Discovered IPMB address 0x0",
    "Interface address: my_addr 0x20 transit 0:0 target 0x20:0 ipmb_target 0",
    // over the network, to a BMC that does not tell its cipher suites
    "Unable to Get Channel Cipher Suites",
    // locales that are not installed
    "bash: warning: setlocale: LC_ALL: cannot change locale (en_US.UTF-8)",
    "perl: warning: Setting locale failed.",
});

// '*' stands for any characters.
constexpr auto kErrors = std::to_array<std::string_view>({
    "*Error sending MS request*",
    "Error: *",
    "Error *",
    "*: Error 0x*",
    "sel: * error *",
    "* error, ret*",
    "Bad response*",
    "Cannot open an IPMI driver*",
    "Could not open device at *",
    "Get * command failed*",
    "Get * failed*",
    "Set * failed*",
    "* command failed*",
    "* request failed*",
    "Reading * failed*",
    "Unable to *",
    "unable to *",
    "Couldn't *",
    "Could not enable event receiver*",
    "Failed to *",
    "No data available*",
    "Invalid *",
    "*invalid option*",
    "Insufficient privilege*",
    "Unsupported *",
    "*Permission denied*",
    "*No such file or directory*",
    "*command not found*",
    "*cannot execute*",
    "*Connection timed out*",
    "*Address lookup for * failed*",
    "*Segmentation fault*",
    "*Killed",
    "*timed out*",
    "*timeout",
    "*Node busy*",
    "ipmilan_open_session error*",
    "*receive from BMC failed*",
    "*ipmiutil *, * error*",
    "SDR record not found*",
    "DCMI request failed*",
    "*SEL * error*",
});

}  // namespace

std::string_view without_chatter(std::string_view line) {
    for (bool again = true; again;) {
        again = false;
        for (const auto form : kChatter) {
            if (!trimmed(line).starts_with(form)) continue;
            line = trimmed(line).substr(form.size());
            again = true;
        }
    }
    return line;
}

bool is_tool_error(std::string_view line) {
    line = trimmed(line);
    return is_like_any(line, kErrors);
}

bool is_error_before_name(std::string_view name) {
    constexpr std::size_t kLongestName = 32;  // IPMI 2.0, section 43.15: 16 bytes of packed digits
    constexpr std::size_t kUsualName = 16;
    return name.size() > kLongestName || (name.size() > kUsualName && is_tool_error(name));
}

void read_aside(const CaptureLine& line, Reading& reading) {
    const auto text = trimmed(without_chatter(line.text));
    if (text.empty() && line.ended) return;
    if (is_tool_error(text))
        reading.how.errors.push_back({line.number, std::string(text)});
    else if (line.ended)
        reading.how.unknown_line(line.number);
    else
        add_gap(reading, line.number, "the capture ends in the middle of a line");
}

bool FirstLine::is_overwritten(const CaptureLine& line, std::string_view text, Reading& reading) {
    const bool is_to_check = has_message_ && !has_passed_;
    has_passed_ = true;
    if (!is_to_check || text.find(separator_) >= column_) return false;
    add_gap(reading, line.number, "messages may stand over the beginning of the line");
    return true;
}

void add_gap(Reading& reading, std::int64_t line, std::string words) {
    reading.how.gaps.push_back({line, std::move(words)});
}

}  // namespace qvhost::inventory
