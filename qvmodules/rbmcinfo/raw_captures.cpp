#include "rbmcinfo/captures.h"
#include "rbmcinfo/command.h"
#include "runner/process.h"

namespace marlox::repository {

namespace {

// For a word size that is neither 32 nor 64 these two commands name no utility, and fail.
struct BySize {
    const char* on_32;
    const char* on_64;
    const char* else_text;
};

constexpr BySize kSensors = {
    "'{P}qv_tools/ipmiutil_x32_nh' sensor >'{L}sensor_with_id_string.txt'",
    "'{P}qv_tools/ipmiutil_x64_nh' sensor >'{L}sensor_with_id_string.txt'",
    "'{P}{L}sensor_with_id_string.txt'",
};

constexpr BySize kSelHex = {
    "'{P}qv_tools/ipmiutil_x32_nh' sel -r >'{L}SEL_Hex.txt'",
    "'{P}qv_tools/ipmiutil_x64_nh' sel -r >'{L}SEL_Hex.txt'",
    "'{P}{L}SEL_Hex.txt'",
};

int run_by_size(const BySize& command) {
    const char* text = linux_x32_x64 == 32   ? command.on_32
                       : linux_x32_x64 == 64 ? command.on_64
                                             : command.else_text;
    return runner::run(bmc_command(text));
}

}  // namespace

int sen_id() { return run_by_size(kSensors); }

int selhex() { return run_by_size(kSelHex); }

}  // namespace marlox::repository
