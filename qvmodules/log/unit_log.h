// Logging as every module does it: a message of level L is built only when the host's threshold is
// at least L, its text begins with "[repo] ", and it is filed under the source unit of its module.
#pragma once

#include <ostream>

#include "xmodule.h"

namespace marlox::repository::capture {

inline constexpr unsigned kProgress = 3;  // "Enter ...", "Exit ..." and failures
inline constexpr unsigned kDetail = 4;    // details and successes

// The first words of a message and the source line that logs it.
struct Message {
    // Implicit, so that a call such as unit.detail("se:", text) passes its own source line.
    // (clang 14 has no std::source_location.)
    constexpr Message(const char* first_words, int calling_line = __builtin_LINE())
        : text(first_words), line(calling_line) {}

    const char* text;
    int line;
};

class UnitLog {
public:
    constexpr explicit UnitLog(const char* unit) : unit_(unit) {}

    template <class... Parts>
    void write(unsigned level, Message message, const Parts&... parts) const {
        if (XModule::Log::GetMinLogLevel() < level) return;
        XModule::Log record(level, unit_, message.line);
        ((record.Stream() << "[repo] " << message.text) << ... << parts);
    }

    template <class... Parts>
    void progress(Message message, const Parts&... parts) const {
        write(kProgress, message, parts...);
    }

    template <class... Parts>
    void detail(Message message, const Parts&... parts) const {
        write(kDetail, message, parts...);
    }

private:
    const char* unit_;
};

}  // namespace marlox::repository::capture
