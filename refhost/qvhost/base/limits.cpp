#include "qvhost/base/limits.h"

#include <algorithm>
#include <stdexcept>

namespace qvhost {

namespace {

constexpr unsigned kTool = 300;
constexpr unsigned kSilence = 120;
constexpr unsigned kArchives = 6;  // how many times a tool's time packing whole logs may take
constexpr unsigned kModule = 3600;
constexpr unsigned kRun = 7200;

void expect_no_less(const char* outer_name, unsigned outer, const char* inner_name,
                    unsigned inner) {
    if (outer >= inner) return;
    throw std::invalid_argument(std::string(outer_name) + " " + std::to_string(outer) +
                                " is less than " + inner_name + " " + std::to_string(inner));
}

}  // namespace

Limits limits_for(const AskedLimits& asked) {
    if (asked.run && asked.module)
        expect_no_less("--run-timeout", *asked.run, "--module-timeout", *asked.module);
    if (asked.run && asked.tool)
        expect_no_less("--run-timeout", *asked.run, "--tool-timeout", *asked.tool);
    if (asked.module && asked.tool)
        expect_no_less("--module-timeout", *asked.module, "--tool-timeout", *asked.tool);
    if (asked.tool && asked.silence)
        expect_no_less("--tool-timeout", *asked.tool, "--silence-timeout", *asked.silence);

    // What was asked for stands; what was not fits around it.
    Limits limits;
    const unsigned most =
        std::min(asked.run.value_or(kMostSeconds), asked.module.value_or(kMostSeconds));
    limits.tool = asked.tool.value_or(std::min(std::max(kTool, asked.silence.value_or(0)), most));
    limits.silence = asked.silence.value_or(std::min(kSilence, limits.tool));
    limits.archive = std::min(limits.tool * kArchives, most);
    limits.module = asked.module.value_or(
        std::min(std::max(kModule, limits.archive), asked.run.value_or(kMostSeconds)));
    limits.run = asked.run.value_or(std::max(kRun, limits.module));
    return limits;
}

std::string text_of(const Limits& limits) {
    const auto seconds = [](const char* name, unsigned value) {
        return std::string(name) + " " + std::to_string(value) + " s";
    };
    return seconds("run", limits.run) + ", " + seconds("module", limits.module) + ", " +
           seconds("archive", limits.archive) + ", " + seconds("tool", limits.tool) + ", " +
           seconds("silence", limits.silence);
}

}  // namespace qvhost
