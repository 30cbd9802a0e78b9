// Times as reports have them: "2026-11-21T01:20:40Z".
#pragma once

#include <ctime>
#include <optional>
#include <string>

namespace qvhost {

// Seconds since 1970; nothing: it is no such time.
inline std::optional<std::time_t> seconds_of_utc(const std::string& utc) {
    std::tm parts{};
    const char* const end = ::strptime(utc.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    if (!end || *end != '\0') return std::nullopt;
    return ::timegm(&parts);
}

// The same moment as this system's clock shows it, "2026-11-21T02:20:40": captures have local times. "": it is
// no such time.
inline std::string local_time_of_utc(const std::string& utc) {
    const auto seconds = seconds_of_utc(utc);
    if (!seconds) return "";
    std::tm local{};
    ::localtime_r(&*seconds, &local);
    char text[32];
    const auto size = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    return std::string(text, size);
}

}  // namespace qvhost
