#include "qvhost/base/json_words.h"

#include <string_view>

namespace qvhost {

// The library says
//     [json.exception.parse_error.101] parse error at line 1, column 9: syntax error while parsing value -
//     unexpected ','; expected string literal
//     [json.exception.out_of_range.406] number overflow parsing '1e999'
std::string json_words(const nlohmann::json::exception& error) {
    constexpr std::string_view kPlace = "parse error at ";
    std::string_view told = error.what();
    if (told.starts_with("[json.exception.")) told.remove_prefix(told.find("] ") + 2);
    if (!told.starts_with(kPlace)) return std::string(told);
    told.remove_prefix(kPlace.size());
    const auto colon = told.find(": ");
    if (colon == std::string_view::npos) return "no JSON: " + std::string(told);
    const auto place = told.substr(0, colon);
    auto why = told.substr(colon + 2);
    if (const auto dash = why.find(" - "); dash != std::string_view::npos)
        why.remove_prefix(dash + 3);
    return std::string(place) + ": no JSON: " + std::string(why.substr(0, why.find(';')));
}

}  // namespace qvhost
