#include "compare.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace truth {

namespace {

std::string text(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

bool holds(const Json& list, const std::string& one) {
    return list.is_array() && std::find(list.begin(), list.end(), one) != list.end();
}

const Json& at(const Json& object, const char* key) {
    static const Json kNull;
    const auto found = object.find(key);
    return found == object.end() ? kNull : *found;
}

// ---- Values -----------------------------------------------------------------------------------------

bool is_nothing(const Json& value) {
    return value.is_null() || (value.is_array() && value.empty());
}

// Sizes are printed with three decimals, so one may be read as the printed text or as whole sectors.
bool same(const std::string& field, const Json& expected, const Json& actual) {
    if (is_nothing(expected) || is_nothing(actual))
        return is_nothing(expected) && is_nothing(actual);
    if (expected.is_boolean() || actual.is_boolean()) return expected == actual;
    if (expected.is_number() && actual.is_number()) {
        const double one = expected.get<double>();
        const double other = actual.get<double>();
        const double room = field == "capacity_bytes"                                ? one * 0.001
                            : expected.is_number_float() || actual.is_number_float() ? 0.0006
                                                                                     : 0.0;
        return std::abs(one - other) <= room;
    }
    return expected == actual;
}

bool is_right(const Json& entity, const std::string& field, const Json& actual) {
    const auto& how = entity.at("compare");
    if (holds(at(how, "free"), field)) return true;
    Json values = Json::array({entity.at(field)});
    if (const auto& also = at(at(how, "also"), field.c_str()); also.is_array()) {
        for (const auto& value : also) values.push_back(value);
    }
    const bool may_begin = holds(at(how, "begins"), field);
    const bool was_cut = holds(at(how, "cut"), field);
    for (const auto& value : values) {
        if (same(field, value, actual)) return true;
        if (was_cut && (is_nothing(actual) || (value.is_number() && actual.is_number())))
            return true;
        if (!value.is_string() || !actual.is_string()) continue;
        const auto& expected = value.get_ref<const std::string&>();
        const auto& read = actual.get_ref<const std::string&>();
        if (may_begin && read.starts_with(expected)) return true;
        if (was_cut && expected.starts_with(read)) return true;
    }
    return false;
}

// ---- Inventory --------------------------------------------------------------------------------------

std::string place_of(const Json& one) {
    return text(at(one, "capture")) + " line " + text(at(one, "line"));
}

bool stands_in(const Json& places, const Json& capture, const Json& line) {
    return line.is_number() && std::any_of(places.begin(), places.end(), [&](const Json& place) {
               return place.at("capture") == capture && line >= place.at("first") &&
                      line <= place.at("last");
           });
}

// Of captures that the truth does not know, nobody knows the lines.
// Behind what a killed tool has printed the shell may say "Killed": in a line of its own, if the last
// one had its end.
bool is_line_there(const Json& truth, const Json& capture, const Json& line) {
    return std::all_of(
        truth.at("captures").begin(), truth.at("captures").end(), [&](const Json& one) {
            const bool has_word = one.at("ended_badly") != "" && one.find("cut_line") == one.end();
            return one.at("capture") != capture ||
                   (line.is_number() && line <= one.at("lines").get<int>() + (has_word ? 1 : 0));
        });
}

std::string name_of(const std::string& kind, const Json& entity) {
    std::string name = kind;
    for (const char* field :
         {"controller", "enclosure", "slot", "number", "name", "socket", "device", "serial"}) {
        const auto& value = at(entity, field);
        if (!value.is_null()) name += " " + std::string(field) + "=" + text(value);
    }
    return name + " (" + place_of(entity) + ")";
}

class Differences {
public:
    void add(const std::string& line) { lines_.push_back(line); }
    std::vector<std::string> take() { return std::move(lines_); }

private:
    std::vector<std::string> lines_;
};

std::vector<std::string> wrong_fields(const Json& entity, const Json& actual) {
    std::vector<std::string> wrong;
    for (const auto& [field, value] : entity.items()) {
        if (field == "compare" || field == "capture" || field == "line") continue;
        if (!is_right(entity, field, at(actual, field.c_str()))) wrong.push_back(field);
    }
    return wrong;
}

bool fits(const Json& entity, const Json& actual) {
    for (const auto& field : entity.at("compare").at("match")) {
        const auto& name = field.get_ref<const std::string&>();
        if (!is_right(entity, name, at(actual, name.c_str()))) return false;
    }
    return true;
}

// A line that lost its end may have been read for another thing.
bool stands_at_cut(const Json& truth, const Json& entity) {
    for (const auto& capture : truth.at("captures")) {
        const auto cut = capture.find("cut_line");
        if (cut != capture.end() && capture.at("capture") == at(entity, "capture") &&
            at(entity, "line") == *cut)
            return true;
    }
    return false;
}

// A power supply may be told by its sensor or its field replaceable unit as well.
bool may_be_more(const std::string& kind, const Json& entity) {
    return kind == "power_supplies" && at(entity, "capture") != "psuinfo.txt";
}

void compare_kind(const Json& truth, const std::string& kind, const Json& expected,
                  const Json& actual, Differences& differences) {
    if (!actual.is_array()) {
        differences.add("inventory has no list " + kind);
        return;
    }
    std::vector<bool> is_used(actual.size(), false);
    for (const auto& entity : expected) {
        const auto& places = entity.at("compare").at("places");
        const bool is_certain = entity.at("compare").at("certain").get<bool>();
        std::optional<std::size_t> best;
        std::vector<std::string> wrong;
        for (std::size_t index = 0; index < actual.size(); ++index) {
            if (is_used[index] || !fits(entity, actual[index])) continue;
            // An entity that may be missing is not found elsewhere.
            if (!is_certain &&
                !stands_in(places, at(actual[index], "capture"), at(actual[index], "line")))
                continue;
            const auto these = wrong_fields(entity, actual[index]);
            if (best && these.size() >= wrong.size()) continue;
            best = index;
            wrong = these;
        }
        if (!best) {
            if (is_certain) differences.add("missing: " + name_of(kind, entity));
            continue;
        }
        is_used[*best] = true;
        for (const auto& field : wrong)
            differences.add(name_of(kind, entity) + ": " + field + " is " +
                            text(at(actual[*best], field.c_str())) + ", not " +
                            text(entity.at(field)));
        if (!stands_in(places, at(actual[*best], "capture"), at(actual[*best], "line")))
            differences.add(name_of(kind, entity) + ": stands at " + place_of(actual[*best]));
    }
    for (std::size_t index = 0; index < actual.size(); ++index) {
        if (is_used[index] || stands_at_cut(truth, actual[index]) ||
            may_be_more(kind, actual[index]))
            continue;
        differences.add("unexpected: " + name_of(kind, actual[index]));
    }
}

// ---- Findings ---------------------------------------------------------------------------------------

std::string finding_name(const Json& finding) {
    std::string name = "finding " + text(at(finding, "rule")) + " (" +
                       text(at(finding, "severity")) + ") of " + text(at(finding, "subject")) +
                       ": " + text(at(finding, "says"));
    for (const auto& place : at(finding, "evidence")) name += ", " + place_of(place);
    return name;
}

bool has_evidence_in(const Json& finding, const Json& places) {
    const auto& evidence = at(finding, "evidence");
    return std::any_of(evidence.begin(), evidence.end(), [&](const Json& place) {
        return stands_in(places, at(place, "capture"), at(place, "line"));
    });
}

bool is_rule_of(const Json& finding, const Json& expected) {
    const auto& rules = expected.at("rules");
    return rules.empty() ||
           std::find(rules.begin(), rules.end(), at(finding, "rule")) != rules.end();
}

bool is_about(const Json& finding, const Json& expected) {
    return is_rule_of(finding, expected) && has_evidence_in(finding, expected.at("places"));
}

bool is_of_broken_capture(const Json& truth, const Json& finding) {
    const auto& evidence = at(finding, "evidence");
    return std::any_of(evidence.begin(), evidence.end(), [&](const Json& place) {
        for (const auto& capture : truth.at("captures")) {
            if (capture.at("capture") == at(place, "capture"))
                return !capture.at("whole").get<bool>();
        }
        return true;  // it was never made
    });
}

// What colours nothing and tells of a log's lines, or of lines nobody knows.
bool is_harmless(const Json& finding) {
    const auto& rule = at(finding, "rule");
    if (at(finding, "severity") != "notice" || !rule.is_string()) return false;
    const auto& name = rule.get_ref<const std::string&>();
    return name.starts_with("event_") || name == "not_understood";
}

void check_match(const Json& finding, const Json& expected, Differences& differences) {
    const auto& severities = expected.at("severity");
    if (std::find(severities.begin(), severities.end(), at(finding, "severity")) ==
        severities.end())
        differences.add(finding_name(finding) + ": severity should be " + text(severities));
    if (at(finding, "subsystem") != expected.at("subsystem"))
        differences.add(finding_name(finding) + ": subsystem is " + text(at(finding, "subsystem")) +
                        ", not " + text(expected.at("subsystem")));
    const auto& words = expected.at("holds");
    const auto all = text(at(finding, "subject")) + text(at(finding, "says"));
    const bool names_it = std::any_of(words.begin(), words.end(), [&](const Json& word) {
        return all.find(word.get_ref<const std::string&>()) != std::string::npos;
    });
    if (!words.empty() && !names_it)
        differences.add(finding_name(finding) + ": does not name " + text(words));
}

void compare_findings(const Json& truth, const Json& actual, Differences& differences) {
    if (!actual.is_array()) {
        differences.add("there are no findings");
        return;
    }
    std::vector<bool> is_known(actual.size(), false);
    for (const bool certain : {true, false}) {
        for (const auto& expected : truth.at("findings")) {
            if (expected.at("certain").get<bool>() != certain) continue;
            int found = 0;
            for (std::size_t index = 0; index < actual.size(); ++index) {
                if (!is_about(actual[index], expected)) continue;
                ++found;
                if (!is_known[index]) check_match(actual[index], expected, differences);
                is_known[index] = true;
            }
            if (certain && found == 0)
                differences.add("no finding: " + text(expected.at("about")) + " " +
                                text(expected.at("severity")) + " at " +
                                text(expected.at("places")));
            if (found > 1 && expected.at("once").get<bool>())
                differences.add(text(expected.at("about")) + " is told " + std::to_string(found) +
                                " times");
        }
    }
    for (std::size_t index = 0; index < actual.size(); ++index) {
        const auto& finding = actual[index];
        for (const auto& place : at(finding, "evidence")) {
            const bool is_of_capture = at(place, "line") == 0;  // it is about all of it
            if (!is_of_capture && !is_line_there(truth, at(place, "capture"), at(place, "line")))
                differences.add(finding_name(finding) + ": there is no such line");
        }
        if (at(finding, "evidence").empty())
            differences.add(finding_name(finding) + ": it has no evidence");
        if (is_known[index] || is_harmless(finding)) continue;
        const bool is_unread =
            at(finding, "severity") == "unknown" || at(finding, "rule") == "tool_missing";
        if (is_unread && is_of_broken_capture(truth, finding)) continue;
        differences.add("unexpected " + finding_name(finding));
    }
}

// ---- Health, events ---------------------------------------------------------------------------------

void compare_health(const Json& truth, const Json& actual, Differences& differences) {
    for (const auto& [subsystem, words] : truth.at("health").items()) {
        const auto& name = subsystem;  // Clang's lambdas take no structured binding
        const auto found = std::find_if(actual.begin(), actual.end(), [&](const Json& one) {
            return at(one, "subsystem") == name;
        });
        if (found == actual.end()) {
            differences.add("no health of " + subsystem);
            continue;
        }
        const auto& health = at(*found, "health");
        if (std::find(words.begin(), words.end(), health) == words.end())
            differences.add("health of " + subsystem + " is " + text(health) + ", not " +
                            text(words) + "; missing: " + text(at(*found, "missing")));
        if (health == "ok" && at(*found, "judged_by").empty())
            differences.add("health of " + subsystem + " is ok and rests on nothing");
        if (health == "unknown" && at(*found, "missing").empty())
            differences.add("health of " + subsystem + " is unknown and does not say why");
    }
}

void compare_events(const Json& truth, const Json& actual, Differences& differences) {
    for (const auto& expected : truth.at("events")) {
        const auto& words = expected.at("words").get_ref<const std::string&>();
        int found = 0;
        for (const auto& event : actual) {
            if (at(event, "source") != expected.at("source") ||
                !stands_in(expected.at("places"), at(event, "capture"), at(event, "line")))
                continue;
            ++found;
            if (!expected.at("certain").get<bool>()) continue;
            if (at(event, "time") != expected.at("time"))
                differences.add("event at " + place_of(event) + ": time is " +
                                text(at(event, "time")) + ", not " + text(expected.at("time")));
            const auto all = text(at(event, "subject")) + text(at(event, "text"));
            if (all.find(words) == std::string::npos)
                differences.add("event at " + place_of(event) + " says " + all + ", not " + words);
        }
        if (found == 0 && expected.at("certain").get<bool>())
            differences.add("no event: " + words + " at " + text(expected.at("places")));
        if (found > 1)
            differences.add("the event " + words + " at " + text(expected.at("places")) +
                            " is told " + std::to_string(found) + " times");
    }
}

}  // namespace

std::vector<std::string> compare(const Json& truth, const Json& report) {
    Differences differences;
    const auto& inventory = at(report, "inventory");
    for (const auto& [kind, expected] : truth.at("inventory").items())
        compare_kind(truth, kind, expected, at(inventory, kind.c_str()), differences);
    compare_findings(truth, at(report, "findings"), differences);
    compare_health(truth, at(report, "health"), differences);
    if (report.contains("events")) compare_events(truth, report.at("events"), differences);
    return differences.take();
}

}  // namespace truth
