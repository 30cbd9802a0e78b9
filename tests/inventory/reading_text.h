// What a reader makes of a text, as a text: an entity a line, fields that are empty left out, then the
// events and how much was understood.
#pragma once

#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "inventory/capture_lines.h"
#include "inventory/fields.h"
#include "inventory/reading.h"

namespace qvhost::inventory::test {

inline std::string shown(const std::string& text) { return "'" + text + "'"; }
inline std::string shown(std::int64_t number) { return std::to_string(number); }
inline std::string shown(bool flag) { return flag ? "true" : "false"; }
inline std::string shown(double number) {
    char text[64];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

inline const char* shown(Severity severity) {
    return severity == Severity::info      ? "info"
           : severity == Severity::warning ? "warning"
                                           : "critical";
}

template <class Entity>
std::string text_of(const Entity& entity) {
    std::string text = std::to_string(entity.place.line) + ":";
    for (const auto& field : kind_of<Entity>().fields) {
        std::visit(
            [&](auto member) {
                using Value = std::remove_cvref_t<decltype(entity.*member)>;
                if constexpr (std::is_same_v<Value, Texts>) {
                    if ((entity.*member).empty()) return;
                    text += std::string(" ") + field.name + "=";
                    for (const auto& one : entity.*member) text += "[" + one + "]";
                } else if (entity.*member) {
                    text += std::string(" ") + field.name + "=" + shown(*(entity.*member));
                }
            },
            field.member);
    }
    return text;
}

inline std::string text_of(const Event& event) {
    std::string text = std::to_string(event.place.line) + ": " + event.source + " " +
                       event.time.value_or("-") + " " + shown(event.severity) + " ";
    return text + "{" + event.subject.value_or("") + "} " + event.text;
}

// What came of one or several captures.
struct Read {
    Inventory found;
    std::vector<Event> events;
    Understanding how;

    void add(std::string_view text, void (*read)(CaptureLines&, Reading&),
             const std::string& capture = "capture.txt") {
        CaptureLines lines(text);
        Reading reading{capture, found, [&](Event&& event) { events.push_back(std::move(event)); }};
        read(lines, reading);
        how = reading.how;
    }

    std::string entities() const {
        std::string text;
        each_kind([&](const auto& kind) {
            for (const auto& entity : found.*kind.list)
                text += std::string(kind.name) + " " + text_of(entity) + "\n";
        });
        return text;
    }

    std::string all() const {
        std::string text = entities();
        for (const auto& event : events) text += "event " + text_of(event) + "\n";
        for (const auto& gap : how.gaps)
            text += "gap " + std::to_string(gap.line) + ": " + gap.words + "\n";
        for (const auto& error : how.errors)
            text += "error " + std::to_string(error.line) + ": " + error.words + "\n";
        if (how.not_understood > 0)
            text += "not understood: " + std::to_string(how.not_understood) + " from " +
                    std::to_string(how.first_not_understood) + "\n";
        return text;
    }
};

inline Read read(std::string_view text, void (*reader)(CaptureLines&, Reading&)) {
    Read made;
    made.add(text, reader);
    return made;
}

inline std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

inline std::string with_crlf(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\n') result += '\r';
        result += c;
    }
    return result;
}

}  // namespace qvhost::inventory::test
