#include "qvhost/base/limits.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <utility>

namespace qvhost {

namespace {

void expect_no_less(const char* outer_name, unsigned outer, const char* inner_name,
                    unsigned inner) {
    if (outer >= inner) return;
    throw std::invalid_argument(std::string(outer_name) + " " + std::to_string(outer) +
                                " is less than " + inner_name + " " + std::to_string(inner));
}

struct ToolLimit {
    std::string tool;
    unsigned seconds;
};

ToolLimit tool_limit(const std::string& text) {
    const auto equal = text.find('=');
    unsigned seconds = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] =
        equal == std::string::npos
            ? std::from_chars_result{text.data(), std::errc::invalid_argument}
            : std::from_chars(text.data() + equal + 1, end, seconds);
    const auto tool = text.substr(0, equal);
    if (error != std::errc() || rest != end || seconds < 1 || seconds > kMaxSeconds ||
        tool.empty() || tool.find_first_of(",/ '") != std::string::npos)
        throw std::invalid_argument("--limit " + text + " is not TOOL=SECONDS, with 1 to " +
                                    std::to_string(kMaxSeconds) + " seconds");
    return {tool, seconds};
}

}  // namespace

std::string tool_limits_text(const CollectOptions& asked) {
    std::string text;
    for (const auto& one : asked.tool_limits) {
        const auto [tool, seconds] = tool_limit(one);
        text += (text.empty() ? "" : ",") + tool + "=" + std::to_string(seconds);
    }
    return text;
}

Limits limits_for(const CollectOptions& asked) {
    const bool is_quick = asked.profile == kHealthProfile;
    const struct {
        const char* name;
        std::optional<unsigned> seconds;
    } run{"--run-timeout", asked.run_seconds}, module{"--module-timeout", asked.module_seconds},
        tool{"--tool-timeout", asked.tool_seconds},
        silence{"--silence-timeout", asked.silence_seconds};
    for (const auto& [outer, inner] : {
             std::pair{run,    module },
             {run,    tool   },
             {module, tool   },
             {tool,   silence}
    }) {
        if (outer.seconds && inner.seconds)
            expect_no_less(outer.name, *outer.seconds, inner.name, *inner.seconds);
    }

    // The longest limit of a single tool.
    unsigned longest = 0;
    for (const auto& one : asked.tool_limits) {
        const auto [name, seconds] = tool_limit(one);
        for (const auto& outer : {run, module}) {
            if (outer.seconds)
                expect_no_less(outer.name, *outer.seconds, ("--limit " + name).c_str(), seconds);
        }
        longest = std::max(longest, seconds);
    }

    Limits limits;
    const auto usual = is_quick ? kHealthLimits : kUsualLimits;
    const unsigned longest_run =
        is_quick ? std::max({usual.run_seconds, asked.tool_seconds.value_or(0),
                             asked.module_seconds.value_or(0), asked.silence_seconds.value_or(0)})
                 : kMaxSeconds;
    const unsigned most = std::min(asked.run_seconds.value_or(longest_run),
                                   asked.module_seconds.value_or(longest_run));
    limits.tool_seconds = asked.tool_seconds.value_or(
        std::min(std::max(usual.tool_seconds, asked.silence_seconds.value_or(0)), most));
    limits.silence_seconds =
        asked.silence_seconds.value_or(std::min(usual.silence_seconds, limits.tool_seconds));
    limits.archive_seconds = std::min(limits.tool_seconds * kArchiveTimes, most);
    limits.module_seconds = asked.module_seconds.value_or(
        std::min(std::max({usual.module_seconds, limits.archive_seconds, longest}),
                 asked.run_seconds.value_or(kMaxSeconds)));
    limits.run_seconds =
        asked.run_seconds.value_or(std::max(usual.run_seconds, limits.module_seconds));
    return limits;
}

std::string text_of(const Limits& limits) {
    const auto part = [](const char* name, unsigned seconds) {
        return std::string(name) + " " + std::to_string(seconds) + " s";
    };
    return part("run", limits.run_seconds) + ", " + part("module", limits.module_seconds) + ", " +
           part("archive", limits.archive_seconds) + ", " + part("tool", limits.tool_seconds) +
           ", " + part("silence", limits.silence_seconds);
}

}  // namespace qvhost
