#include "inventory/storage/json.h"

#include <algorithm>
#include <utility>

#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

using nlohmann::json;

constexpr std::size_t kMostBytes = std::size_t{2} << 20;  // parsed, it takes sixteen times as much
constexpr int kMostDepth = 64;

// Whether brackets are nested no deeper than is sane. Brackets within texts count as well: a text with so
// many is not sane either.
bool is_shallow(std::string_view text) {
    int depth = 0;
    for (const char c : text) {
        if (c == '{' || c == '[') ++depth;
        if (c == '}' || c == ']') --depth;
        if (depth > kMostDepth) return false;
    }
    return true;
}

const json* at(const json& value, const char* path) {
    const json::json_pointer pointer(path);
    return value.contains(pointer) ? &value.at(pointer) : nullptr;
}

}  // namespace

std::int64_t JsonText::line_of(std::initializer_list<std::string_view> path) const {
    std::size_t place = 0;
    for (const auto key : path) {
        place = text.find(key, place);
        if (place == std::string::npos) return first_line;
    }
    return first_line +
           std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(place), '\n');
}

std::unique_ptr<const JsonText> read_json(CaptureLines& lines, Reading& reading) {
    std::unique_ptr<JsonText> result;
    const auto gap = [&](const char* words) {
        reading.how.gaps.push_back({lines.count(), words});
        reading.how.lines = lines.count();
    };
    while (const auto line = lines.next()) {
        if (!result) {
            if (!trimmed(line->text).starts_with('{')) {
                if (!trimmed(line->text).empty()) reading.how.unknown_line(line->number);
                continue;
            }
            result = std::make_unique<JsonText>(line->number);
        }
        if (result->text.size() + line->text.size() > kMostBytes) {
            while (lines.next()) continue;
            gap("it is too long");
            return nullptr;
        }
        result->text += line->text;
        result->text += '\n';
    }
    if (!result) {
        gap("no JSON is in it");
        return nullptr;
    }
    JsonText& found = *result;
    if (!is_shallow(found.text)) {
        gap("its JSON is nested too deeply");
        return nullptr;
    }
    found.value = json::parse(found.text, nullptr, false);
    if (found.value.is_discarded()) {
        // Other texts may stand behind the object, which ends with a line "}".
        const auto end = found.text.rfind("\n}\n");
        if (end != std::string::npos) {
            const auto object = std::string_view(found.text).substr(0, end + 3);
            auto value = json::parse(object, nullptr, false);
            if (value.is_object()) {
                reading.how.unknown_line(found.first_line +
                                         std::count(object.begin(), object.end(), '\n'));
                found.value = std::move(value);
            }
        }
    }
    if (!found.value.is_object()) {
        gap("its JSON cannot be read");
        return nullptr;
    }
    reading.how.lines = lines.count();
    return result;
}

Integer json_integer(const json& value, const char* path) {
    const json* const member = at(value, path);
    if (!member || !member->is_number_integer()) return std::nullopt;
    if (member->is_number_unsigned() && member->get<std::uint64_t>() > std::uint64_t{INT64_MAX})
        return std::nullopt;
    return member->get<std::int64_t>();
}

Text json_text(const json& value, const char* path) {
    const json* const member = at(value, path);
    if (!member || !member->is_string()) return std::nullopt;
    return told(member->get_ref<const std::string&>());
}

Flag json_flag(const json& value, const char* path) {
    const json* const member = at(value, path);
    if (!member || !member->is_boolean()) return std::nullopt;
    return member->get<bool>();
}

}  // namespace qvhost::inventory
