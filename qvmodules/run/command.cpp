#include "run/command.h"

#include "xmodule.h"

namespace marlox::repository::capture {

namespace {

// Inside single quotes only a single quote is special to the shell: it is written as '\'', which
// closes the quotes, adds an escaped quote and opens them again.
std::string inside_quotes(std::string_view path) {
    std::string text;
    for (const char c : path) {
        if (c == '\'') {
            text += R"('\'')";
        } else {
            text += c;
        }
    }
    return text;
}

std::string path_text(std::string_view path, bool quoted) {
    if (quoted) return inside_quotes(path);
    const bool plain = path.find('\'') == std::string_view::npos;
    return plain ? std::string(path) : "'" + inside_quotes(path) + "'";
}

}  // namespace

std::string log_path(std::string_view file) {
    char directory[256] = {};
    XModule::GetLogDir(directory, sizeof directory);
    return std::string(directory).append(file);
}

std::string expand(std::string_view command, const Places& places) {
    std::string text;
    bool quoted = false;
    while (!command.empty()) {
        if (command.starts_with("{P}")) {
            text += path_text(places.program_dir, quoted);
        } else if (command.starts_with("{L}")) {
            text += path_text(log_path(""), quoted);
        } else if (command.starts_with("{x}")) {
            text += places.bits == 32 ? "x32" : "x64";
        } else if (command.starts_with("{n}")) {
            text += std::to_string(places.controller);
        } else {
            if (command.front() == '\'') quoted = !quoted;
            text += command.front();
            command.remove_prefix(1);
            continue;
        }
        command.remove_prefix(std::string_view("{P}").size());
    }
    return text;
}

}  // namespace marlox::repository::capture
