#include "page/data_file.h"

#include <algorithm>

namespace qvhost::page {

// One string that the page parses: browsers read large JSON texts much faster than the same
// written as code. JSON has no control characters and needs no single quote.
std::string data_script(const char* function, std::string_view json) {
    std::string script = std::string("qv.") + function + "('";
    script.reserve(json.size() + json.size() / 16 + 32);
    for (auto at = json.begin();;) {
        const auto stop =
            std::find_if(at, json.end(), [](char c) { return c == '\\' || c == '\''; });
        script.append(at, stop);
        if (stop == json.end()) break;
        script += {'\\', *stop};
        at = stop + 1;
    }
    return script + "')\n";
}

}  // namespace qvhost::page
