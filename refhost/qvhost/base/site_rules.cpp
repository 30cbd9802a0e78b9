#include "qvhost/base/site_rules.h"

#include <fcntl.h>

#include <cerrno>
#include <cstddef>
#include <ctime>
#include <stdexcept>
#include <system_error>

#include "files/descriptor.h"
#include "findings/rules_file.h"

namespace qvhost {

namespace {

constexpr std::size_t kLargestRules = 1 << 20;  // bytes

// "2026-11-21", where this system's clock is.
std::string today() {
    const auto now = std::time(nullptr);
    std::tm parts{};
    ::localtime_r(&now, &parts);
    char text[16];
    std::strftime(text, sizeof text, "%Y-%m-%d", &parts);
    return text;
}

}  // namespace

std::string read_rules_file(const std::filesystem::path& file) {
    const Descriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!opened)
        throw std::runtime_error(file.string() + ": " + std::generic_category().message(errno));
    if (!std::filesystem::is_regular_file(file))
        throw std::runtime_error(file.string() + ": it is no file");
    auto text = read_bytes(opened.get(), kLargestRules + 1);
    if (text.size() > kLargestRules)
        throw std::runtime_error(file.string() + ": it is longer than 1 MiB");
    try {
        rules_in(text);
    } catch (const findings::RulesError& error) {
        throw std::runtime_error(file.string() + ", line " + std::to_string(error.line) + ": " +
                                 error.what());
    }
    return text;
}

findings::Rules rules_in(const std::string& text) { return findings::parse_rules(text, today()); }

findings::Rules rules_of(const Store& store) {
    try {
        return rules_in(store.meta("rules"));
    } catch (const findings::RulesError&) {
        return {};
    }
}

}  // namespace qvhost
