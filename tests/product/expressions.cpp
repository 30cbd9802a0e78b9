#include "expressions.h"

#include <regex>

namespace test {

std::string replaced(const std::string& text, const std::string& expression,
                     const std::string& by) {
    return std::regex_replace(text, std::regex(expression), by);
}

bool has_match(const std::string& text, const std::string& expression) {
    return std::regex_search(text, std::regex(expression));
}

}  // namespace test
