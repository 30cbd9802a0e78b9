// The page of a log directory in which anything lies: what it shows of it, and that it shows nothing of
// what lies elsewhere.
//     input: entries of the directory (kind, name up to a NUL, length, bytes), the last of which is a
//     command as well
#include "page/write_page.h"

#include <sys/stat.h>

#include <map>

#include "check.h"
#include "outcome.h"
#include "page_data.h"
#include "scratch.h"
#include "sound_store.h"
#include "store/store.h"

using namespace qvhost;
namespace fs = std::filesystem;

namespace {

constexpr const char* kSecret = "what lies elsewhere";

bool is_name(const std::string& name) {
    return !name.empty() && name.size() < 200 && name != "." && name != ".." &&
           name.find('/') == std::string::npos && !name.starts_with("report");
}

// Returns the bytes of the files, by name; of what is no file there are none.
std::map<std::string, std::string> fill(const fs::path& log_dir, fuzz::Pieces& input,
                                        std::vector<CommandInfo>& commands) {
    std::map<std::string, std::string> entries;
    while (!input.at_end() && entries.size() < 20) {
        const auto kind = input.byte() % 8;
        const std::string name(input.until('\0'));
        const std::string bytes(input.take(input.byte()));
        commands.push_back({.text = "tool > '" + name + "'",
                            .started = "",
                            .seconds = 0.5,
                            .exit = kind,
                            .standard_error = bytes,
                            .remark = bytes});
        if (!is_name(name) || entries.contains(name)) continue;
        entries[name] = kind > 2 ? bytes : "";
        switch (kind) {
            case 0: fs::create_directory(log_dir / name); break;
            case 1: fs::create_symlink("../secret", log_dir / name); break;
            case 2: ::mkfifo((log_dir / name).c_str(), 0600); break;
            default: fuzz::write_file(log_dir / name, bytes);
        }
    }
    return entries;
}

// Text that is no UTF-8 is shown with marks in its place.
bool is_utf8(const std::string& text) {
    try {
        return !nlohmann::json(text).dump().empty();
    } catch (const nlohmann::json::type_error&) {
        return false;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    static const std::string sound = fuzz::sound_store(scratch / "sound.sqlite");
    const fs::path log_dir = scratch / "log";
    const fs::path file = scratch / "report.sqlite";
    fs::remove_all(log_dir);
    fs::create_directories(log_dir / "report");
    fuzz::write_file(scratch / "secret", kSecret);
    fuzz::write_file(file, sound);

    fuzz::Pieces input(fuzz::text_of(data, size));
    std::vector<CommandInfo> commands;
    const auto entries = fill(log_dir, input, commands);
    Store store(file, Store::Mode::update);
    store.set_commands(commands);
    store.set_facts({
        {"Fact", commands.empty() ? "" : commands.back().standard_error, ""}
    });
    write_page(store, log_dir / "report", log_dir);

    const auto report = log_dir / "report";
    const auto overview = fuzz::handed_over(report / "data" / "overview.js", "overview");
    fuzz::expect(overview["commands"].size() == commands.size(), "every command is told");
    fuzz::expect(overview["captures"].size() == entries.size(), "every capture is told");
    auto entry = entries.begin();
    for (const auto& capture : overview["captures"]) {
        const auto& [name, bytes] = *entry++;
        if (is_utf8(name)) fuzz::expect(capture["name"] == name, "they are told in order");
        const std::string shown = capture["data"];
        if (shown.empty()) continue;
        const auto text = fuzz::handed_over(report / shown, "capture");
        fuzz::expect(text != kSecret || bytes == kSecret, "no link is followed");
        if (is_utf8(bytes)) fuzz::expect(text == bytes, "a capture is shown as it is");
    }
    return 0;
}
