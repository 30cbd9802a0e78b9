#include "page/captures.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "files/read_beginning.h"

namespace qvhost::page {

namespace fs = std::filesystem;

namespace {

const char* kind_of(const fs::directory_entry& entry) {
    std::error_code ignored;
    const auto status = entry.symlink_status(ignored);
    if (fs::is_directory(status)) return "directory";
    if (!fs::is_regular_file(status)) return "other";
    return read_beginning(entry.path(), 4096).find('\0') == std::string::npos ? "text" : "binary";
}

// The commands that were seen to write the file. Older stores do not tell: there it is those that write
// it by its path or, from within the directory, by its name; else those that name it.
std::vector<std::size_t> makers_of(const fs::path& file, const std::vector<CommandInfo>& commands) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const auto& captures = commands[i].captures;
        if (std::find(captures.begin(), captures.end(), file.filename().string()) != captures.end())
            found.push_back(i);
    }
    if (!found.empty()) return found;
    const std::pair<bool (*)(const CommandInfo&, const std::string&), std::string> signs[] = {
        {writes, file.string()}, {writes, file.filename().string()}, {names, file.string()}};
    for (const auto& [made, name] : signs) {
        for (std::size_t i = 0; i < commands.size(); ++i) {
            if (made(commands[i], name)) found.push_back(i);
        }
        if (!found.empty()) return found;
    }
    return {};
}

}  // namespace

std::vector<Capture> captures_in(const fs::path& log_dir,
                                 const std::vector<CommandInfo>& commands) {
    std::vector<Capture> captures;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(log_dir, error)) {
        const auto name = entry.path().filename().string();
        if (name == "report" || name == "runs" || name.starts_with("report-")) continue;
        Capture capture;
        capture.name = name;
        capture.kind = kind_of(entry);
        std::error_code ignored;
        if (entry.is_regular_file(ignored)) capture.size = entry.file_size(ignored);
        capture.commands = makers_of(entry.path(), commands);
        captures.push_back(std::move(capture));
    }
    std::sort(captures.begin(), captures.end(),
              [](const Capture& a, const Capture& b) { return a.name < b.name; });
    return captures;
}

}  // namespace qvhost::page
