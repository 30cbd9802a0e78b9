// JSON that a tool printed, which may be anything: parsed only if it is of a sane size and depth.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

struct JsonText {
    explicit JsonText(std::int64_t line) : first_line(line) {}
    JsonText(const JsonText&) = delete;
    JsonText& operator=(const JsonText&) = delete;

    nlohmann::json value;
    std::string text;         // the object's own text
    std::int64_t first_line;  // of it in the capture

    // Where a key stands first, "\"passed\""; the object's first line if it is not found.
    std::int64_t line_of(std::string_view key) const { return line_of({key}); }
    // The same of a key within others: each stands behind the one before.
    std::int64_t line_of(std::initializer_list<std::string_view> path) const;
};

// The first object of the capture. Lines before it are counted as not understood; what is no JSON or is
// cut off is a gap, and null.
std::unique_ptr<const JsonText> read_json(CaptureLines& lines, Reading& reading);

// The member that the path leads to: "/nvme_smart_health_information_log/media_errors"; empty if there
// is none or it is of another type.
Integer json_integer(const nlohmann::json& value, const char* path);
Text json_text(const nlohmann::json& value, const char* path);
Flag json_flag(const nlohmann::json& value, const char* path);

}  // namespace qvhost::inventory
