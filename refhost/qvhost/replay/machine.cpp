#include "qvhost/replay/machine.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "qvhost/base/json_words.h"
#include "qvhost/base/log_dir.h"
#include "show/visible.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

using nlohmann::json;

constexpr int kMostLevels = 16;  // of arrays and objects in one another
constexpr std::uintmax_t kMostBytes = std::uintmax_t{64} << 20;

class Reader {
public:
    explicit Reader(const fs::path& directory)
        : directory_(fs::absolute(directory)), file_(directory_ / "machine.json") {}

    Machine read() const {
        if (!is_file(file_)) fail("cannot be read");
        expect_within(file_);
        if (fs::file_size(file_) > kMostBytes) fail("is too large");
        std::ifstream in(file_);
        if (!in) fail("cannot be read");
        json root;
        try {
            root = json::parse(in, [](int depth, json::parse_event_t, const json&) {
                if (depth > kMostLevels) throw std::runtime_error("is nested too deep");
                return true;
            });
        } catch (const json::exception& error) {
            fail(json_words(error));
        } catch (const std::exception& error) {
            fail(error.what());
        }
        if (!root.is_object()) fail("is not an object");

        Machine machine;
        machine.description = text(root, "description");
        machine.uname = text(root, "uname");
        machine.recorded = time(root, "recorded");
        machine.identity = {.host = known_text(root, "host"),
                            .machine_id = known_text(root, "machine_id"),
                            .os = known_text(root, "os"),
                            .kernel = known_text(root, "kernel"),
                            .uptime_seconds = std::nullopt};
        if (root.contains("uptime_seconds"))
            machine.identity.uptime_seconds =
                number(root, "uptime_seconds", std::numeric_limits<int>::max());
        const auto lacks = root.value("lacks", json::array());
        if (!lacks.is_array()) fail("\"lacks\" is not an array");
        for (const auto& one : lacks) {
            if (!one.is_object()) fail("one of \"lacks\" is not an object");
            machine.lacks.emplace_back(one_line(text(one, "subsystem")),
                                       one_line(text(one, "words")));
        }
        if (root.contains("asked")) {
            if (!root["asked"].is_array()) fail("\"asked\" is not an array");
            machine.asked.emplace();
            for (const auto& one : root["asked"]) {
                if (!one.is_object()) fail("one of \"asked\" is not an object");
                machine.asked->emplace_back(text(one, "tool"), text(one, "args"));
            }
        }
        if (!root.contains("commands") || !root["commands"].is_array())
            fail("\"commands\" is not an array");
        const auto& commands = root["commands"];
        for (const auto& entry : commands) machine.commands.push_back(command(entry));
        return machine;
    }

private:
    [[noreturn]] void fail(const std::string& reason) const {
        // A name in it may hold a NUL, which would end the message.
        throw std::runtime_error(file_.string() + ": " + one_line(reason));
    }

    std::string text(const json& object, const char* key) const {
        if (!object.contains(key)) return "";
        if (!object[key].is_string()) fail("\"" + std::string(key) + "\" is not a text");
        if (has_nul(object[key])) fail("\"" + std::string(key) + "\" has a NUL in it");
        return object[key];
    }

    std::optional<std::string> known_text(const json& object, const char* key) const {
        auto value = text(object, key);
        return value.empty() ? std::nullopt : std::optional(std::move(value));
    }

    std::string time(const json& object, const char* key) const {
        auto value = text(object, key);
        std::tm parts{};
        const char* end = ::strptime(value.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
        if (!value.empty() && (!end || *end != '\0'))
            fail("\"" + std::string(key) + "\" is not a time such as \"2026-11-20T07:30:05\"");
        return value;
    }

    int number(const json& object, const char* key, int most) const {
        if (!object.contains(key)) return 0;
        const auto& value = object[key];
        if (!value.is_number_integer() || value < 0 || value > most)
            fail("\"" + std::string(key) + "\" is not a number from 0 to " + std::to_string(most));
        return value;
    }

    // A file of the machine: beside machine.json, never outside.
    fs::path file_beside(const std::string& name) const {
        auto path = directory_ / name;
        if (!is_inside(name)) fail("\"" + name + "\" does not lie beside it");
        if (!is_file(path)) fail("there is no file \"" + name + "\"");
        expect_within(path);
        return path;
    }

    // A recording may come from an untrusted place: a link in it must not lead to the user's own files.
    void expect_within(const fs::path& path) const {
        const auto target = fs::canonical(path);
        const auto home = fs::canonical(directory_);
        if (std::mismatch(home.begin(), home.end(), target.begin(), target.end()).first !=
            home.end())
            fail(path.filename().string() + " is a symbolic link that leads to " + target.string());
    }

    // Behind a NUL, the system and the shell would not see what was checked here.
    static bool has_nul(const std::string& text) { return text.find('\0') != std::string::npos; }

    // If the system refuses the name (too long), there is no such file.
    static bool is_file(const fs::path& path) {
        std::error_code ignored;
        return fs::is_regular_file(path, ignored);
    }

    static bool is_inside(const fs::path& name) {
        return !name.empty() && name.is_relative() && !has_nul(name) &&
               std::none_of(name.begin(), name.end(),
                            [](const auto& part) { return part == ".."; });
    }

    // Files that a collection makes by itself: no tool writes them.
    static bool is_ours(const fs::path& name) {
        const auto first = name.lexically_normal().begin()->string();
        return first == "." || LogDir::is_own(first);
    }

    RecordedCommand command(const json& entry) const {
        if (!entry.is_object()) fail("a command is not an object");
        RecordedCommand command;
        command.tool = text(entry, "tool");
        if (command.tool.empty() || command.tool.starts_with('.') ||
            command.tool.find('/') != std::string::npos)
            fail("a command has no \"tool\", or one that is no plain name");
        if (entry.contains("args")) command.arguments = text(entry, "args");
        if (const auto name = text(entry, "stdout"); !name.empty())
            command.stdout_file = file_beside(name);
        const auto errors = text(entry, "stderr");
        if (is_inside(errors) && is_file(directory_ / errors)) {
            command.stderr_file = file_beside(errors);
        } else {
            command.stderr_text = errors;
        }
        command.exit_code = number(entry, "exit", 255);
        command.signal = number(entry, "signal", 64);
        command.seconds = static_cast<unsigned>(number(entry, "seconds", 86400));
        const auto files = entry.value("files", json::object());
        if (!files.is_object()) fail("\"files\" is not an object");
        for (const auto& [written, source] : files.items()) {
            if (!is_inside(written))
                fail("\"" + written + "\" does not lie in the current directory");
            if (is_ours(written)) fail("\"" + written + "\" is a file of the report");
            if (!source.is_string()) fail("\"" + written + "\" names no file");
            command.files[written] = file_beside(source);
        }
        return command;
    }

    fs::path directory_;
    fs::path file_;
};

}  // namespace

Machine read_machine(const fs::path& directory) { return Reader(directory).read(); }

}  // namespace qvhost
