#include "qvhost/replay/recording.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>
#include <system_error>

#include "files/descriptor.h"
#include "files/new_file.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

using nlohmann::ordered_json;

constexpr int kDirectory = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

bool is_inside(const fs::path& name) {
    return !name.empty() && name.is_relative() && name.native().find('\0') == std::string::npos &&
           std::none_of(name.begin(), name.end(), [](const fs::path& part) {
               return part == ".." || part == "." || part.empty();
           });
}

bool is_utf8(const std::string& text) {
    try {
        (void)nlohmann::json(text).dump();
        return true;
    } catch (const nlohmann::json::exception&) {
        return false;
    }
}

bool can_stand_in_json(const std::string& text) {
    return text.find('\0') == std::string::npos && is_utf8(text);
}

// Letters, digits and little else, so that every system takes the name.
std::string plain_name(const std::string& name) {
    constexpr std::string_view kKept = "._-+";
    std::string plain;
    for (const char c : name) {
        const bool is_kept = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                             (c >= '0' && c <= '9') || kKept.find(c) != std::string_view::npos;
        plain += is_kept ? c : '_';
    }
    constexpr std::size_t kMost = 120;
    if (plain.size() > kMost) plain.resize(kMost);
    if (plain.empty() || plain.front() == '.' || plain.front() == '-') plain.insert(0, "_");
    return plain;
}

void copy_bytes(int from, const Content& content, int to, const fs::path& place) {
    constexpr std::size_t kBlock = std::size_t{1} << 16;
    for (;;) {
        errno = 0;
        const auto block = read_bytes(from, kBlock);
        if (block.empty() && errno != 0)
            throw std::system_error(errno, std::generic_category(),
                                    (content.root / content.name).string());
        if (!write_bytes(to, block))
            throw std::system_error(errno, std::generic_category(), place.string());
        if (block.size() < kBlock) return;
    }
}

class Writer {
public:
    Writer(Recording& recording, const fs::path& directory)
        : recording_(recording), directory_(directory) {}

    void write() {
        ordered_json root = {
            {"description", recording_.description},
            {"uname",       recording_.uname      }
        };
        const auto note = [&](const char* key, const std::optional<std::string>& value) {
            if (value && !value->empty() && can_stand_in_json(*value)) root[key] = *value;
        };
        note("recorded", recording_.recorded);
        note("host", recording_.identity.host);
        note("os", recording_.identity.os);
        note("kernel", recording_.identity.kernel);
        note("machine_id", recording_.identity.machine_id);
        if (recording_.identity.uptime_seconds)
            root["uptime_seconds"] = *recording_.identity.uptime_seconds;
        std::string commands;
        for (const auto& command : recording_.commands) {
            const auto entry = entry_of(command);
            if (entry) commands += (commands.empty() ? "\n    " : ",\n    ") + entry->dump();
        }
        if (!recording_.lacks.empty())
            root["lacks"] = objects(recording_.lacks, "subsystem", "words");
        root["asked"] = objects(recording_.asked, "tool", "args");
        if (!recording_.not_known.empty()) root["not_known"] = recording_.not_known;
        auto text = root.dump(2, ' ', false, ordered_json::error_handler_t::replace);
        text.resize(text.rfind('\n'));
        // A command a line, as people write them.
        write_new_file(directory_ / "machine.json",
                       text + ",\n  \"commands\": [" + commands + "\n  ]\n}\n");
    }

private:
    static ordered_json objects(const std::vector<std::pair<std::string, std::string>>& pairs,
                                const char* first, const char* second) {
        auto all = ordered_json::array();
        for (const auto& [one, other] : pairs)
            all.push_back({
                {first,  one  },
                {second, other}
            });
        return all;
    }

    std::optional<ordered_json> entry_of(const RecordingCommand& command) {
        const auto words = command.tool + (command.arguments.value_or("").empty() ? "" : " ") +
                           command.arguments.value_or("");
        if (!can_stand_in_json(words) || command.tool.empty() || command.tool.front() == '.' ||
            command.tool.find('/') != std::string::npos) {
            recording_.not_known.push_back(words +
                                           ": a recorded server cannot hold such a command");
            return std::nullopt;
        }
        ordered_json entry = {
            {"tool", command.tool}
        };
        if (command.arguments) entry["args"] = *command.arguments;
        if (command.out) note_file(entry, "stdout", *command.out, words);
        if (command.err) {
            // A text without a line's end could be the name of a file.
            const auto& bytes = command.err->bytes;
            if (command.err->root.empty() && bytes.ends_with('\n') && can_stand_in_json(bytes)) {
                entry["stderr"] = bytes;
            } else {
                note_file(entry, "stderr", *command.err, words);
            }
        }
        if (command.exit != 0) entry["exit"] = command.exit;
        if (command.signal != 0) entry["signal"] = command.signal;
        if (command.seconds != 0) entry["seconds"] = command.seconds;
        for (const auto& [name, content] : command.files) {
            if (!is_inside(name) || !can_stand_in_json(name)) {
                recording_.not_known.push_back(words + ": the file \"" + name + "\" that it wrote");
            } else if (const auto file = file_of(content, words); !file.empty()) {
                entry["files"][name] = file;
            }
        }
        return entry;
    }

    void note_file(ordered_json& entry, const char* key, const Content& content,
                   const std::string& words) {
        if (const auto file = file_of(content, words); !file.empty()) entry[key] = file;
    }

    // The name of the file with these bytes; empty: they are none, or cannot be had.
    std::string file_of(const Content& content, const std::string& words) {
        const auto source = std::pair(content.root.string(), content.name);
        if (!content.root.empty()) {
            if (const auto known = written_.find(source); known != written_.end())
                return known->second;
        } else if (content.bytes.empty()) {
            return "";
        }
        Descriptor from;
        if (!content.root.empty()) {
            from = open_below(content.root, content.name);
            if (!from) {
                recording_.not_known.push_back(words + ": \"" + content.name +
                                               "\" is no file of the report");
                return "";
            }
        }
        auto name = free_name(content.name);
        const auto place = directory_ / name;
        const auto file = create_private(place);
        if (from) {
            copy_bytes(from.get(), content, file.get(), place);
            written_[source] = name;
        } else if (!write_bytes(file.get(), content.bytes)) {
            throw std::system_error(errno, std::generic_category(), place.string());
        }
        return name;
    }

    std::string free_name(const std::string& wanted) {
        const fs::path plain = plain_name(wanted);
        std::string name = plain;
        for (int n = 2; !names_.insert(name).second; ++n)
            name = plain.stem().string() + "-" + std::to_string(n) + plain.extension().string();
        return name;
    }

    Recording& recording_;
    const fs::path& directory_;
    std::set<std::string> names_ = {"machine.json"};
    std::map<std::pair<std::string, std::string>, std::string> written_;
};

}  // namespace

Descriptor open_below(const fs::path& directory, const fs::path& name) {
    if (!is_inside(name)) return {};
    Descriptor here(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (const auto& part : name.parent_path()) {
        if (!here) return {};
        here = Descriptor(::openat(here.get(), part.c_str(), kDirectory));
    }
    if (!here) return {};
    Descriptor file(::openat(here.get(), name.filename().c_str(),
                             O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat info {};
    if (!file || ::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) return {};
    return file;
}

std::vector<std::string> files_below(const fs::path& directory, const std::string& name) {
    std::vector<std::string> files;
    if (!is_inside(name)) return files;
    std::error_code error;
    const auto type = fs::symlink_status(directory / name, error).type();
    if (type == fs::file_type::regular) files.push_back(name);
    if (type != fs::file_type::directory) return files;
    for (fs::recursive_directory_iterator it(directory / name, error), end; !error && it != end;
         it.increment(error)) {
        if (it->symlink_status(error).type() == fs::file_type::regular)
            files.push_back(it->path().lexically_relative(directory).string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void write_recording(Recording& recording, const fs::path& directory) {
    Writer(recording, directory).write();
}

}  // namespace qvhost
