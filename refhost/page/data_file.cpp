#include "page/data_file.h"

namespace qvhost::page {

// One string that the page parses: browsers read large JSON texts much faster than the same
// written as code. JSON has no control characters and needs no single quote.
std::string data_script(const char* function, const nlohmann::ordered_json& value) {
    using nlohmann::ordered_json;
    const auto json = value.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
    std::string script = std::string("qv.") + function + "('";
    script.reserve(json.size() + json.size() / 16 + 32);
    for (const char c : json) {
        if (c == '\\' || c == '\'') script += '\\';
        script += c;
    }
    return script + "')\n";
}

}  // namespace qvhost::page
