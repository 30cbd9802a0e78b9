#include "cpu_list.h"

#include <array>

#include "file/keys.h"
#include "log/unit_log.h"
#include "read/lines.h"
#include "run/command.h"
#include "run/process.h"

namespace marlox::repository {

namespace {

constexpr capture::UnitLog unit{"qvmodules/example"};

// lscpu:
//     Architecture:            x86_64
//     CPU(s):                  32
//     Model name:              Example CPU @ 2.40GHz
constexpr auto kCpu = std::to_array<capture::Key>({
    {"Architecture:", "Architecture", "Architecture"},
    {"Model name:",   "ModelName",    "Model name"  },
    {"Socket(s):",    "Sockets",      "Socket(s)"   },
});
static_assert(capture::well_formed(kCpu, "Sockets"));

}  // namespace

void cpu_list(RRepository& repository) {
    const auto command = capture::expand("lscpu > '{L}lscpu.txt'", {});
    unit.progress("cpu list raw path:", command);
    capture::run(command);

    auto lines = capture::Lines::open(capture::log_dir() + "lscpu.txt");
    if (!lines) {
        unit.detail("Failed to open cpu list file");
        return;
    }
    capture::read_keys(*lines, kCpu, "Sockets", {repository, "CPULIST", "Processors"});
}

}  // namespace marlox::repository
