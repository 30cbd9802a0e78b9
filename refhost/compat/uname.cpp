// `uname -i` prints the hardware platform: "x86_64" where the distribution has patched it in, "unknown"
// elsewhere (Debian, and others). The vendors' tools are chosen by it, and the machine is what it means.
#include "compat/script_parts.h"

namespace qvhost::compat {

std::string uname_script(const Place& place) {
    if (found_in(place.search_path, "uname").empty()) return "";
    return beginning(place) +
           "if [ \"$*\" = -i ] && [ \"$(uname -i 2>/dev/null)\" = unknown ]; then\n"
           "    note \"uname -i: unknown; answered $(uname -m)\"\n"
           "    exec uname -m\n"
           "fi\n" +
           start("uname");
}

}  // namespace qvhost::compat
