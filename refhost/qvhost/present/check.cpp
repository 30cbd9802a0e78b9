#include "qvhost/present/check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "files/failure.h"
#include "findings/finding.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/base/site_rules.h"
#include "qvhost/finish/judge_report.h"
#include "qvhost/present/open_report.h"
#include "report/json_text.h"
#include "report/verdict_json.h"
#include "show/visible.h"
#include "text/utc.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace qvhost {

namespace {

using findings::Finding;
using findings::Health;
using findings::HealthWord;
using findings::Severity;
using findings::Verdict;

struct State {
    const char* word;
    int status;
};

State state_of(HealthWord health) {
    switch (health) {
        case HealthWord::critical: return {"CRITICAL", kMonitoringCritical};
        case HealthWord::warning: return {"WARNING", kMonitoringWarning};
        case HealthWord::unknown: return {"UNKNOWN", kMonitoringUnknown};
        case HealthWord::ok:
        case HealthWord::absent: break;
    }
    return {"OK", kMonitoringOk};
}

// What is judged, and what beside it goes into the performance data.
struct Checked {
    Verdict verdict;
    std::vector<inventory::Sensor> sensors;
    std::optional<std::int64_t> age_seconds;
};

// Other rules need what the verdict was made from.
Verdict judged_by_rules(const CheckOptions& options, const Store& store) {
    const auto rules = rules_in(read_rules_file(options.rules));
    if (!std::filesystem::is_directory(options.report))
        throw std::runtime_error(options.report.string() +
                                 ": --rules needs the captures: name the directory of the report");
    return judge_again(store, LogDir(options.report), rules);
}

Checked read_report(const CheckOptions& options) {
    const auto report = open_report(options.report);
    Checked checked{read_verdict(report.store), {}, std::nullopt};
    if (checked.verdict.health.empty())
        throw std::runtime_error(options.report.string() +
                                 ": the report holds no verdict; it is an older version's");
    if (!options.rules.empty()) checked.verdict = judged_by_rules(options, report.store);
    checked.sensors = read_inventory(report.store).sensors;
    if (const auto finished = seconds_of_utc(report.store.meta("finished")))
        checked.age_seconds = std::max<std::int64_t>(0, std::time(nullptr) - *finished);
    return checked;
}

// Leaves what was asked for. A subsystem of which the report says nothing is unknown.
void select(const CheckOptions& options, Verdict& verdict) {
    const auto is_left_out = [&](findings::Subsystem subsystem) {
        return !options.subsystems.empty() &&
               std::find(options.subsystems.begin(), options.subsystems.end(), word(subsystem)) ==
                   options.subsystems.end();
    };
    std::erase_if(verdict.findings, [&](const Finding& one) { return is_left_out(one.subsystem); });
    std::vector<Health> asked;
    for (const auto subsystem : findings::kSubsystems) {
        if (is_left_out(subsystem)) continue;
        const auto found =
            std::find_if(verdict.health.begin(), verdict.health.end(),
                         [&](const Health& one) { return one.subsystem == subsystem; });
        asked.push_back(
            found != verdict.health.end()
                ? *found
                : Health{subsystem, HealthWord::unknown, {}, {"the report says nothing"}});
    }
    verdict.health = std::move(asked);
}

HealthWord told_as(const CheckOptions& options, HealthWord health) {
    if (health != HealthWord::unknown) return health;
    if (options.unknown_as == "ok") return HealthWord::ok;
    if (options.unknown_as == "warning") return HealthWord::warning;
    return health;
}

HealthWord worst_of(const CheckOptions& options, const Verdict& verdict) {
    HealthWord worst = HealthWord::absent;
    for (const auto& one : verdict.health) worst = std::min(worst, told_as(options, one.health));
    return worst;
}

// A bar begins the performance data.
std::string plain(const std::string& text) {
    auto line = one_line(text);
    std::replace(line.begin(), line.end(), '|', '/');
    return line;
}

std::string finding_text(const Finding& finding) {
    std::string text = plain(finding.subject) + ": " + plain(finding.says);
    if (finding.count > 1) text += " (x " + std::to_string(finding.count) + ")";
    return text;
}

std::string place_text(const findings::Place& place) {
    return plain(place.capture) + (place.line > 0 ? ", line " + std::to_string(place.line) : "");
}

// What matters most, in a few words.
std::string worst_words(const CheckOptions& options, const Verdict& verdict, HealthWord worst) {
    const auto is_told = [&](const Finding& one) {
        return (worst == HealthWord::critical && one.severity == Severity::critical) ||
               (worst == HealthWord::warning && one.severity == Severity::warning);
    };
    std::string text;
    std::size_t more = 0;
    for (const auto& one : verdict.findings) {
        if (!is_told(one)) continue;
        if (text.empty()) {
            text = finding_text(one);
        } else {
            ++more;
        }
    }
    if (text.empty()) {
        for (const auto& one : verdict.health) {
            const bool is_unknown = one.health == HealthWord::unknown;
            if (told_as(options, one.health) != worst || (worst >= HealthWord::ok && !is_unknown))
                continue;
            if (text.empty()) {
                text = std::string(word(one.subsystem)) +
                       (is_unknown ? " cannot be told" : " is " + std::string(word(one.health))) +
                       (one.missing.empty() ? "" : ": " + plain(one.missing.front()));
            } else {
                ++more;
            }
        }
    }
    if (text.empty()) {
        for (const auto& one : verdict.health) {
            if (one.health != HealthWord::ok) continue;
            text += (text.empty() ? "" : ", ") + std::string(word(one.subsystem));
        }
        return text.empty() ? "nothing is there to be judged" : text + " ok";
    }
    return more > 0 ? text + ", and " + std::to_string(more) + " more" : text;
}

std::string headline(const CheckOptions& options, const Verdict& verdict, HealthWord worst) {
    const auto known = std::count_if(verdict.findings.begin(), verdict.findings.end(),
                                     [](const Finding& one) { return one.acknowledged; });
    return worst_words(options, verdict, worst) +
           (known > 0 ? " (" + std::to_string(known) + " acknowledged)" : "");
}

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

// A label between single quotes, in which a quote is doubled and "=" may not stand.
std::string label(const std::string& name) {
    std::string text = "'";
    for (const char c : plain(name)) {
        if (c == '\'') text += '\'';
        text += c == '=' ? '_' : c;
    }
    return text + "'";
}

std::string limit(const inventory::Real& value) {
    return value && std::isfinite(*value) ? number(*value) : "";
}

// "critical=1 warning=0 ... age=12s temperature_max=45"
std::vector<std::string> performance_data(const CheckOptions& options, const Checked& checked) {
    std::vector<std::string> data;
    for (const auto severity : findings::kSeverities) {
        const auto count =
            std::count_if(checked.verdict.findings.begin(), checked.verdict.findings.end(),
                          [&](const Finding& one) { return one.severity == severity; });
        data.push_back(std::string(word(severity)) + "=" + std::to_string(count));
    }
    if (checked.age_seconds) data.push_back("age=" + std::to_string(*checked.age_seconds) + "s");
    std::optional<double> highest;
    for (const auto& sensor : checked.sensors) {
        if (sensor.kind == "temperature" && sensor.reading && std::isfinite(*sensor.reading))
            highest = std::max(highest.value_or(*sensor.reading), *sensor.reading);
    }
    if (highest) data.push_back("temperature_max=" + number(*highest));
    if (options.perfdata != "sensors") return data;
    for (const auto& sensor : checked.sensors) {
        if (!sensor.reading || !std::isfinite(*sensor.reading) || !sensor.name) continue;
        data.push_back(label(*sensor.name) + "=" + number(*sensor.reading) + ";" +
                       limit(sensor.unc) + ";" + limit(sensor.uc));
    }
    return data;
}

constexpr std::size_t kLongestLine = 1024;  // bytes, as monitoring systems read it

// Cuts a text at a character's beginning.
std::string shortened(const std::string& text, std::size_t most) {
    if (text.size() <= most) return text;
    std::size_t end = most > 3 ? most - 3 : 0;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    return text.substr(0, end) + "...";
}

void print_text(const CheckOptions& options, const Checked& checked, HealthWord worst) {
    std::string data;
    for (const auto& item : performance_data(options, checked)) {
        // Sensors that do not fit any more are left out whole.
        if (data.size() + item.size() + 1 > kLongestLine / 2) break;
        data += (data.empty() ? "" : " ") + item;
    }
    const auto beginning = std::string(state_of(worst).word) + ": ";
    const auto room = kLongestLine - beginning.size() - data.size() - 4;
    std::cout << beginning << shortened(headline(options, checked.verdict, worst), room) << " | "
              << data << '\n';
    for (const auto& one : checked.verdict.health) {
        std::cout << word(one.subsystem) << ": " << word(one.health) << '\n';
        for (const auto& words : one.missing) std::cout << "  missing: " << plain(words) << '\n';
    }
    for (const auto& one : checked.verdict.findings) {
        std::cout << '[' << word(one.severity) << "] " << finding_text(one);
        if (const auto first = since(one, checked.verdict); !first.empty())
            std::cout << ", since " << plain(first);
        if (!one.evidence.empty()) std::cout << " (" << place_text(one.evidence.front()) << ')';
        std::cout << '\n';
    }
}

// One line a subsystem, as Checkmk's agent reads local checks: status, name, metrics, text.
void print_checkmk(const CheckOptions& options, const Checked& checked) {
    for (const auto& one : checked.verdict.health) {
        std::string text;
        std::size_t count = 0;
        for (const auto& finding : checked.verdict.findings) {
            if (finding.subsystem != one.subsystem) continue;
            if (finding.severity == Severity::notice && !finding.acknowledged) continue;
            if (!finding.acknowledged) ++count;
            text += (text.empty() ? "" : ", ") + finding_text(finding);
        }
        for (const auto& words : one.missing) text += (text.empty() ? "" : ", ") + plain(words);
        if (text.empty()) text = word(one.health);
        std::cout << state_of(told_as(options, one.health)).status << " \"qvhost "
                  << word(one.subsystem) << "\" findings=" << count << ' ' << text << '\n';
    }
}

void print_json(const Verdict& verdict) {
    const nlohmann::ordered_json json{
        {"health",   json_of(verdict.health)  },
        {"findings", json_of(verdict.findings)},
    };
    std::cout << json_line(json, 2) << '\n';
}

// An old report says nothing of today.
std::string why_too_old(const CheckOptions& options, const Checked& checked) {
    if (!options.max_age_seconds) return "";
    if (!checked.age_seconds) return "the report does not say when it was finished";
    if (*checked.age_seconds <= static_cast<std::int64_t>(*options.max_age_seconds)) return "";
    return "the report is " + std::to_string(*checked.age_seconds) + " s old";
}

}  // namespace

int check_report(const CheckOptions& options) {
    std::string reason;
    try {
        auto checked = read_report(options);
        select(options, checked.verdict);
        reason = why_too_old(options, checked);
        if (reason.empty()) {
            const auto worst = worst_of(options, checked.verdict);
            if (options.format == "json") {
                print_json(checked.verdict);
            } else if (options.format == "checkmk") {
                print_checkmk(options, checked);
                return kMonitoringOk;
            } else {
                print_text(options, checked, worst);
            }
            return state_of(worst).status;
        }
    } catch (const std::ios_base::failure&) {
        throw;
    } catch (const std::exception& error) {
        reason = words_of(error);
    }
    return tell_unknown(reason);
}

int tell_unknown(const std::string& reason) {
    std::cout << "UNKNOWN: " << shortened(plain(reason), kLongestLine - 16) << '\n';
    return kMonitoringUnknown;
}

int tell_usage_error(const std::string& what) {
    return tell_unknown(what + " (see qvhost check --help)");
}

std::vector<std::string> check_formats() { return {"text", "json", "checkmk"}; }
std::vector<std::string> check_unknown_words() { return {"unknown", "warning", "ok"}; }
std::vector<std::string> check_perfdata() { return {"usual", "sensors"}; }

std::vector<std::string> subsystem_words() {
    std::vector<std::string> words;
    for (const auto subsystem : findings::kSubsystems) words.emplace_back(word(subsystem));
    return words;
}

}  // namespace qvhost
