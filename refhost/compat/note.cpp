// Lines of stand-ins in the collection's log: what was asked, and what was done instead.
#include "compat/stand_in.h"
#include "logger/control.h"
#include "xmodule.h"

namespace qvhost::compat {

namespace {

constexpr unsigned kProgress = 3;

}  // namespace

void note(const StandInArguments& given, const std::string& text) {
    if (given.log_level < kProgress) return;
    try {
        open_log({.log_dir = "", .log_file = given.log.string(), .min_level = given.log_level});
    } catch (const std::exception&) {
        return;  // a log that cannot be written does not stop a tool
    }
    XModule::Log(kProgress, "refhost/compat", __LINE__).Stream() << text;
}

int note_stand_in(const StandInArguments& given) {
    for (const auto& text : given.arguments) note(given, text);
    return 0;
}

}  // namespace qvhost::compat
