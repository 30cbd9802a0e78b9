#include "qvhost/finish/runs.h"

#include <sys/stat.h>

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>
#include <charconv>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "files/sync.h"
#include "qvhost/base/options.h"
#include "qvhost/finish/commands.h"
#include "qvhost/finish/recover.h"
#include "runner/shell_words.h"
#include "store/declared_table.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

constexpr const char* kForeignKey = "foreign_files";
constexpr const char* kFilesKey = "files";
constexpr char kBetweenNames = '/';  // no name has it
constexpr std::string_view kNoTime = "unfinished";

std::optional<Store> opened(const LogDir& dir) {
    try {
        return std::optional<Store>(std::in_place, dir.store(), Store::Mode::read);
    } catch (const std::runtime_error&) {
        return std::nullopt;  // it is missing or damaged
    }
}

std::string meta(const LogDir& dir, const char* key) {
    try {
        const auto store = opened(dir);
        return store ? store->meta(key) : "";
    } catch (const std::runtime_error&) {
        return "";
    }
}

// Whether it may be the name of something in the directory that a run has left. What stands in a store is
// anybody's text.
bool is_plain_name(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos && !LogDir::is_own(name);
}

std::set<std::string> names_in(const std::string& text) {
    std::vector<std::string> parts;
    boost::split(parts, text, [](char c) { return c == kBetweenNames; });
    std::set<std::string> names;
    for (auto& part : parts) {
        if (is_plain_name(part)) names.insert(std::move(part));
    }
    return names;
}

template <class Names>
std::string joined(const Names& names) {
    return boost::join(names, std::string(1, kBetweenNames));
}

// What lies in the directory beside what is the program's own.
std::set<std::string> others_in(const LogDir& dir) {
    std::set<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(dir.path(), error), end; !error && entry != end;
         entry.increment(error)) {
        if (auto name = entry->path().filename().string(); !LogDir::is_own(name))
            names.insert(std::move(name));
    }
    return names;
}

// The first part of a path in the directory.
std::string first_part(const std::string& capture) { return capture.substr(0, capture.find('/')); }

// What a run of an older program has left, which did not note it: what its commands and tables name.
std::set<std::string> files_named_in(const Store& store) {
    std::set<std::string> names{"Firmware"};
    for (const auto& command : store.commands()) {
        for (const auto& file : runner::redirections(command.text))
            names.insert(fs::path(file).filename().string());
    }
    for (const auto& table : declared_tables(store)) names.insert(first_part(table.capture));
    return names;
}

std::set<std::string> files_of_run(const LogDir& dir) {
    std::set<std::string> named;
    try {
        if (const auto store = opened(dir))
            named = store->all_meta().contains(kFilesKey) ? names_in(store->meta(kFilesKey))
                                                          : files_named_in(*store);
    } catch (const std::runtime_error&) {
        // What cannot be read tells nothing.
    }
    std::set<std::string> files;
    for (auto& name : others_in(dir)) {
        if (named.contains(name)) files.insert(name);
    }
    for (const auto& own : {dir.log(), dir.console()}) {
        if (fs::exists(fs::symlink_status(own))) files.insert(own.filename().string());
    }
    return files;
}

// "20261121T012040Z"
std::string stamp_of(const std::string& started) {
    std::string stamp;
    for (const char c : started) {
        if ((c >= '0' && c <= '9') || c == 'T' || c == 'Z') stamp += c;
    }
    constexpr std::size_t kLongest = 16;
    stamp.resize(std::min(stamp.size(), kLongest));
    return stamp.empty() ? std::string(kNoTime) : stamp;
}

// A directory without a report is one into which a move was broken off: that goes on.
fs::path place_for(const LogDir& dir, const std::string& started) {
    const auto base = dir.runs() / stamp_of(started);
    auto place = base;
    for (int i = 2; fs::exists(fs::symlink_status(LogDir(place).report())); ++i)
        place = base.string() + "-" + std::to_string(i);
    return place;
}

// The report goes last: as long as it is here, the run is.
void move_run(const LogDir& dir, const std::set<std::string>& files, const fs::path& place) {
    make_private_directory(dir.runs());
    make_private_directory(place);
    for (const auto& name : files) fs::rename(dir.path() / name, place / name);
    fs::rename(dir.report(), LogDir(place).report());
    // The disk has the new names before it is told that the old ones are gone.
    sync_names(place);
    sync_names(dir.runs());
}

// The time and the number of a run's directory: {"20261121T012040Z", 2}. Nothing: it is none.
std::optional<std::pair<std::string, unsigned>> age_of(const std::string& name) {
    const auto stamp = name.substr(0, name.find('-'));
    const bool has_time =
        stamp.size() == 16 && stamp.find_first_not_of("0123456789TZ") == std::string::npos;
    if (!has_time && stamp != kNoTime) return std::nullopt;
    unsigned number = 1;
    if (name.size() > stamp.size()) {
        const auto* begin = name.data() + stamp.size() + 1;
        const auto [end, error] = std::from_chars(begin, name.data() + name.size(), number);
        if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;
    }
    return std::pair(has_time ? stamp : std::string(), number);
}

// What its files take on the disk, which is less than their sizes where they have holes. Links are not
// followed.
std::uint64_t room_of(const fs::path& directory) {
    constexpr std::uint64_t kBlockBytes = 512;  // of st_blocks
    std::uint64_t bytes = 0;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        struct stat info {};
        if (::lstat(entry->path().c_str(), &info) == 0)
            bytes += static_cast<std::uint64_t>(info.st_blocks) * kBlockBytes;
    }
    return bytes;
}

}  // namespace

Room make_room_for_run(const LogDir& dir, bool is_quick) {
    Room room;
    if (fs::exists(fs::symlink_status(dir.report()))) {
        if (is_quick && meta(dir, "profile") == kHealthProfile) {
            for (const auto& name : files_of_run(dir)) fs::remove_all(dir.path() / name);
            fs::remove_all(dir.report());
        } else {
            const auto recovered = recover(dir);
            const auto started = meta(dir, "started");
            const auto place = place_for(dir, started);
            move_run(dir, files_of_run(dir), place);
            room.found =
                (recovered.empty() ? "an earlier report" + (started.empty() ? "" : " of " + started)
                                   : recovered) +
                "; it is now in " + place.string();
        }
    }
    make_private_directory(dir.report());
    const auto others = others_in(dir);
    room.foreign.assign(others.begin(), others.end());
    return room;
}

void note_foreign_files(Store& store, const std::vector<std::string>& names) {
    store.set_meta(kForeignKey, joined(names));
}

std::set<std::string> foreign_files(const Store& store, const LogDir& dir) {
    auto foreign = names_in(store.meta(kForeignKey));
    // What was added when all that the run has left was known.
    if (const auto meta = store.all_meta(); meta.contains(kFilesKey)) {
        const auto files = names_in(meta.at(kFilesKey));
        for (const auto& name : others_in(dir)) {
            if (!files.contains(name)) foreign.insert(name);
        }
    }
    for (const auto& command : store.commands()) {
        for (const auto& capture : command.captures) foreign.erase(first_part(capture));
    }
    return foreign;
}

void note_files_of_run(Store& store, const LogDir& dir) {
    const auto foreign = foreign_files(store, dir);
    std::set<std::string> files;
    for (const auto& name : others_in(dir)) {
        if (!foreign.contains(name)) files.insert(name);
    }
    store.set_meta(kFilesKey, joined(files));
}

std::vector<std::string> files_of_latest_run(const LogDir& dir) {
    const auto files = files_of_run(dir);
    std::vector<std::string> names(files.begin(), files.end());
    names.push_back(dir.report().filename().string());
    return names;
}

std::vector<fs::path> earlier_runs(const fs::path& log_dir) {
    std::vector<std::pair<std::pair<std::string, unsigned>, fs::path>> found;
    std::error_code error;
    for (fs::directory_iterator entry(LogDir(log_dir).runs(), error), end; !error && entry != end;
         entry.increment(error)) {
        const auto age = age_of(entry->path().filename().string());
        if (age && fs::is_directory(fs::symlink_status(LogDir(entry->path()).report())))
            found.emplace_back(*age, entry->path());
    }
    std::sort(found.rbegin(), found.rend());
    std::vector<fs::path> runs;
    for (auto& [age, path] : found) runs.push_back(std::move(path));
    return runs;
}

void remove_earlier_runs(const LogDir& dir, const RunsKept& kept) {
    const auto runs = earlier_runs(dir.path());
    std::size_t stays = 0;
    std::uint64_t bytes = 0;
    for (; stays < std::min(runs.size(), kept.runs); ++stays) {
        bytes += room_of(runs[stays]);
        if (bytes > kept.bytes) break;
    }
    for (auto i = stays; i < runs.size(); ++i) fs::remove_all(runs[i]);
}

}  // namespace qvhost
