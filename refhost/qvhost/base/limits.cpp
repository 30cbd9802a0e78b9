#include "qvhost/base/limits.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "text/size.h"

namespace qvhost {

namespace {

// `text_of_one` tells a limit to people.
template <class Number, class Text>
void expect_no_less(const char* outer_name, Number outer, const char* inner_name, Number inner,
                    Text text_of_one) {
    if (outer >= inner) return;
    throw std::invalid_argument(std::string(outer_name) + " " + text_of_one(outer) +
                                " is less than " + inner_name + " " + text_of_one(inner));
}

std::string seconds_text(unsigned seconds) { return std::to_string(seconds); }

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

namespace {

// Sizes that were asked for stand; the others are as usual, or fit around these.
void set_sizes(const CollectOptions& asked, Limits& limits) {
    struct Size {
        const char* name;
        std::optional<std::uint64_t> asked;
        std::uint64_t usual;
        std::uint64_t Limits::*place;
    };
    const Size sizes[] = {
        {"--table-size",   asked.table_bytes,   kUsualLimits.table_bytes,   &Limits::table_bytes  },
        {"--capture-size", asked.capture_bytes, kUsualLimits.capture_bytes, &Limits::capture_bytes},
        {"--archive-size", asked.archive_bytes, kUsualLimits.archive_bytes, &Limits::archive_bytes},
        {"--run-size",     asked.run_bytes,     kUsualLimits.run_bytes,     &Limits::run_bytes    },
    };
    for (const auto* inner = std::begin(sizes); inner != std::end(sizes); ++inner) {
        auto size = inner->asked.value_or(inner->usual);
        for (const auto* other = std::begin(sizes); other != std::end(sizes); ++other) {
            if (!other->asked || other == inner) continue;
            const bool is_outer = other > inner;
            if (inner->asked && is_outer)
                expect_no_less(other->name, *other->asked, inner->name, *inner->asked,
                               exact_size_text);
            if (!inner->asked)
                size = is_outer ? std::min(size, *other->asked) : std::max(size, *other->asked);
        }
        limits.*(inner->place) = size;
    }
    limits.processes = asked.processes.value_or(kUsualLimits.processes);
}

}  // namespace

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
            expect_no_less(outer.name, *outer.seconds, inner.name, *inner.seconds, seconds_text);
    }

    // The longest limit of a single tool.
    unsigned longest = 0;
    for (const auto& one : asked.tool_limits) {
        const auto [name, seconds] = tool_limit(one);
        for (const auto& outer : {run, module}) {
            if (outer.seconds)
                expect_no_less(outer.name, *outer.seconds, ("--limit " + name).c_str(), seconds,
                               seconds_text);
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
    set_sizes(asked, limits);
    return limits;
}

std::uint64_t free_bytes_for(const CollectOptions& asked, const std::filesystem::path& directory) {
    if (asked.free_bytes) return *asked.free_bytes;
    std::error_code unknown;
    const auto space = std::filesystem::space(directory, unknown);
    if (unknown) return 0;
    return std::min<std::uint64_t>(space.capacity / 100 * kFreePercent, kMostFreeBytes);
}

std::string free_text(const CollectOptions& asked) {
    if (asked.free_bytes) return exact_size_text(*asked.free_bytes);
    return std::to_string(kFreePercent) + " % of the disk, at most " +
           exact_size_text(kMostFreeBytes);
}

std::string text_of(const Limits& limits) {
    const auto part = [](const char* name, unsigned seconds) {
        return std::string(name) + " " + std::to_string(seconds) + " s";
    };
    return part("run", limits.run_seconds) + ", " + part("module", limits.module_seconds) + ", " +
           part("archive", limits.archive_seconds) + ", " + part("tool", limits.tool_seconds) +
           ", " + part("silence", limits.silence_seconds) + "; all files " +
           exact_size_text(limits.run_bytes) + ", an archive " +
           exact_size_text(limits.archive_bytes) + ", a capture " +
           exact_size_text(limits.capture_bytes) + ", a table " +
           exact_size_text(limits.table_bytes) + "; " + std::to_string(limits.processes) +
           " processes of a tool";
}

}  // namespace qvhost
