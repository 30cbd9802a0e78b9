#include "qvhost/finish/reasons.h"

#include <algorithm>
#include <charconv>
#include <csignal>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

namespace qvhost {

namespace fs = std::filesystem;

// Where a table's records come from.
struct Evidence::Source {
    const char* table;
    const char* label;    // in the log's messages on the command's status; "" if it has none
    const char* capture;  // the file that is read
    const char* tool;
    bool in_qv_tools;
};

namespace {

struct Fixed {
    const char* table;
    const char* reason;
};

// Tables that no module fills.
constexpr Fixed kNeverFilled[] = {
    {"AMTLOG",        "not collected"                 },
    {"ARPINFO",       "not collected on Linux"        },
    {"NETSTATINFO",   "not collected on Linux"        },
    {"PELADDTABLE",   "not collected"                 },
    {"CONTROLLER",    "not collected"                 },
    {"ENDDEVICEINFO", "not collected"                 },
    {"ARRAY",         "not collected"                 },
    {"VOLUME",        "not collected"                 },
    {"PMCINFO",       "collected only with --also pmc"},
    {"PMCVER",        "collected only with --also pmc"},
    {"PMCLINK",       "collected only with --also pmc"},
};

// What ends the collection of all BMC tables, as the log tells it; behind some a code follows.
struct Stop {
    const char* words;
    const char* reason;
};

constexpr Stop kBmcStops[] = {
    {"No BMC, return 4",                            "no BMC on this platform"                   },
    {"Fail to get the Product Name",                "the product name could not be read"        },
    {"Failed to get the Marlox path, exit",         "the program's directory could not be found"},
    {"Fail to get the Linux OS structure",          "the word size could not be read"           },
    {"Failed to start IPMI service,exit code:",     "the IPMI service did not start, exit code "},
    {"Signal terminal while starting IPMI service", "starting the IPMI service was killed"      },
    {"Failed to start IPMI service, could not",     "the IPMI service could not be started"     },
};

// Whether an IPMI tool speaks of an error in the first part of its answer.
bool holds_error(const fs::path& capture) {
    std::ifstream file(capture, std::ios::binary);
    std::string text(65536, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    for (const char* sign : {"Error", "Bad response", "Cannot open an IPMI driver"}) {
        if (text.find(sign) != std::string::npos) return true;
    }
    return false;
}

// Why there is no capture.
std::string not_asked(const std::string& table) {
    return table == "SAS2IRLOG" ? "no SAS2308 controller" : "not asked for on this server";
}

std::string tool_failed(const std::string& tool, const std::string& code) {
    if (code == "127") return tool + " is not installed (exit code 127)";
    if (code == "126") return tool + " cannot be run (exit code 126)";
    // A shell tells of a signal by 128 and the signal's number.
    int number = 0;
    std::from_chars(code.data(), code.data() + code.size(), number);
    if (number > 128 && number <= 128 + SIGTERM)
        return tool + " was killed by signal " + std::to_string(number - 128);
    return tool + " failed with code " + code;
}

}  // namespace

Evidence::Evidence(const LogDir& dir, fs::path tools, fs::file_time_type started,
                   std::vector<CommandInfo> commands)
    : captures_(dir.path()),
      tools_(std::move(tools)),
      started_(started),
      commands_(std::move(commands)) {
    std::ifstream log(dir.log());
    const std::string mark = "[repo] ";
    for (std::string line; std::getline(log, line);) {
        const auto at = line.find(mark);
        if (at != std::string::npos) messages_.push_back(line.substr(at + mark.size()));
    }
}

const std::string* Evidence::behind(const std::string& words, std::string& text) const {
    for (const auto& message : messages_) {
        if (!message.starts_with(words)) continue;
        text = message.substr(words.size());
        return &text;
    }
    return nullptr;
}

bool Evidence::is_installed(const std::string& tool) const {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(tools_, ignored)) {
        if (entry.path().filename().string().starts_with(tool)) return true;
    }
    return false;
}

std::string Evidence::from_log(const Source& source) const {
    const std::string label = source.label;
    if (label.empty()) return "";
    std::string rest;
    if (behind("Failed to get " + label + " info,exit code:", rest))
        return tool_failed(source.tool, rest);
    if (behind("Signal terminal while getting " + label + " info", rest))
        return std::string(source.tool) + " was killed, or took too long";
    if (behind("Failed to get " + label + " info", rest))
        return std::string(source.tool) + " could not be started";
    for (const auto& stop : kBmcStops) {
        if (!behind(stop.words, rest)) continue;
        const std::string reason = stop.reason;
        return reason.ends_with(' ') ? reason + rest : reason;
    }
    return "";
}

std::string Evidence::from_capture(const Source& source) const {
    const auto capture = captures_ / source.capture;
    std::error_code error;
    const auto written = fs::last_write_time(capture, error);
    const std::string tool = source.tool;
    if (error || written < started_) return not_asked(source.table);
    const bool installed = !source.in_qv_tools || is_installed(tool);
    if (fs::file_size(capture, error) == 0)
        return installed ? tool + " printed nothing" : tool + " is not in qv_tools";
    if (holds_error(capture)) return tool + " answered with an error, see " + source.capture;
    return "nothing to report in " + std::string(source.capture);
}

const Evidence::Source* Evidence::source_of(const std::string& table) {
    static const Source kSources[] = {
        {"MCINFO",     "MC",       "mcinfo.txt",     "ipmiutil",     true },
        {"SELFINFO",   "selftest", "selfinfo.txt",   "ipmitool",     false},
        {"VERINFO",    "version",  "verinfo.txt",    "ipmiutil",     true },
        {"PSUINFO",    "PSU",      "psuinfo.txt",    "ipmiutil",     true },
        {"LANINFO",    "LAN",      "laninfo.txt",    "ipmiutil",     true },
        {"LEDINFO",    "LED",      "ledinfo.txt",    "ipmiutil",     true },
        {"SENSORINFO", "sensor",   "sensorinfo.txt", "ipmitool",     false},
        {"SDRINFO",    "SDR",      "sdrinfo.txt",    "ipmitool",     false},
        {"FRUINFO",    "FRU",      "fruinfo.txt",    "ipmitool",     false},
        {"SELINFO",    "SEL",      "selinfo.txt",    "ipmiutil",     true },
        {"RAIDINFO",   "",         "c0_showall.txt", "storcli",      true },
        {"TINFO",      "",         "c0_showall.txt", "storcli",      true },
        {"VINFO",      "",         "c0_showall.txt", "storcli",      true },
        {"PINFO",      "",         "c0_showall.txt", "storcli",      true },
        {"PDLIST",     "",         "pdlist.txt",     "storcli",      true },
        {"EVENTLOG1",  "",         "raidevents.txt", "storcli",      true },
        {"EVENTLOG2",  "",         "raidevents.txt", "storcli",      true },
        {"EVENTLOG3",  "",         "raidevents.txt", "storcli",      true },
        {"EVENTLOG4",  "",         "raidevents.txt", "storcli",      true },
        {"EVENTLOG5",  "",         "raidevents.txt", "storcli",      true },
        {"FWTERMLOG",  "",         "fwtermlog.txt",  "storcli",      true },
        {"LSILINK",    "",         "ctrlcount.txt",  "storcli",      true },
        {"SAS2IRLOG",  "",         "ir.txt",         "SAS2IR_linux", true },
    };
    const auto source = std::find_if(std::begin(kSources), std::end(kSources),
                                     [&](const Source& s) { return table == s.table; });
    return source == std::end(kSources) ? nullptr : &*source;
}

// The last command that wrote the capture, if it was cut off.
std::string Evidence::from_command(const Source& source) const {
    const auto capture = (captures_ / source.capture).string();
    const auto last = std::find_if(commands_.rbegin(), commands_.rend(),
                                   [&](const CommandInfo& c) { return writes(c, capture); });
    if (last == commands_.rend() || !last->cut_off) return "";
    return std::string(source.tool) + ": " + last->outcome;
}

std::string Evidence::why_empty(const std::string& table) const {
    for (const auto& [id, reason] : kNeverFilled) {
        if (table == id) return reason;
    }
    const auto* source = source_of(table);
    if (!source) return "nothing to report";
    for (const auto& told : {from_command(*source), from_log(*source)}) {
        if (!told.empty()) return told;
    }
    return from_capture(*source);
}

std::string Evidence::why_partial(const std::string& table) const {
    const auto* source = source_of(table);
    return source ? from_command(*source) : "";
}

}  // namespace qvhost
