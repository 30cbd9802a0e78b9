// The page's data as the page reads it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "check.h"

namespace fuzz {

// What a script hands to the page: "qv.FUNCTION('JSON')", where \ and ' are escaped and nothing else.
inline nlohmann::json handed_over(const std::filesystem::path& file, const std::string& function) {
    std::ifstream in(file, std::ios::binary);
    const std::string script{std::istreambuf_iterator<char>(in), {}};
    const std::string head = "qv." + function + "('";
    const std::string_view tail = "')\n";
    expect(script.starts_with(head) && script.ends_with(tail) &&
               script.size() >= head.size() + tail.size(),
           "data is one call");
    std::string json;
    for (auto at = head.size(); at < script.size() - tail.size(); ++at) {
        const auto byte = static_cast<unsigned char>(script[at]);
        expect(byte >= 0x20 && byte != '\'', "the text of a script does not end early");
        if (byte == '\\') ++at;
        json += script[at];
    }
    auto value = nlohmann::json::parse(json, nullptr, false);
    expect(!value.is_discarded(), "data is JSON");
    return value;
}

}  // namespace fuzz
