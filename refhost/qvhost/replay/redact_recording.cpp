#include "qvhost/replay/redact_recording.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <stdexcept>

#include "files/new_file.h"
#include "redact/read_back.h"
#include "redact/redactor.h"
#include "redact/store_values.h"
#include "redact/text_file.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

using nlohmann::ordered_json;

constexpr const char* kMachine = "machine.json";

struct Field {
    const char* name;
    redact::Class which;
};
constexpr Field kFields[] = {
    {"host",       redact::Class::network},
    {"machine_id", redact::Class::serials}
};

// Calls `take` with every text, those that name files and the machine's own fields excepted.
void each_text(ordered_json& value, const std::function<void(std::string&)>& take) {
    if (value.is_string()) {
        auto text = value.get<std::string>();
        take(text);
        value = text;
        return;
    }
    if (!value.is_structured()) return;
    for (const auto& item : value.items()) {
        const bool is_field =
            std::any_of(std::begin(kFields), std::end(kFields),
                        [&](const Field& field) { return item.key() == field.name; });
        if (!is_field) each_text(item.value(), take);
    }
}

// Without the file: what it held is not known any more.
void forget_file(ordered_json& machine, const std::string& file) {
    for (auto& command : machine["commands"]) {
        for (const char* key : {"stdout", "stderr"}) {
            if (command.contains(key) && command[key] == file) command.erase(key);
        }
        if (!command.contains("files")) continue;
        auto kept = ordered_json::object();
        for (const auto& [written, source] : command["files"].items()) {
            if (source != file) kept[written] = source;
        }
        command["files"] = std::move(kept);
    }
}

std::string text_of(const ordered_json& machine) {
    auto head = machine;
    head.erase("commands");
    auto text = head.dump(2);
    text.resize(text.rfind('\n'));
    std::string commands;
    for (const auto& command : machine["commands"])
        commands += (commands.empty() ? "\n    " : ",\n    ") + command.dump();
    return text + ",\n  \"commands\": [" + commands + "\n  ]\n}\n";
}

}  // namespace

void redact_recording(const Store& store, const fs::path& from, const fs::path& to,
                      redact::ClassSet classes, redact::Substitutes& substitutes) {
    std::ifstream in(from / kMachine);
    auto machine = ordered_json::parse(in);
    redact::Values values(redact::words_of_reports(store));
    redact::gather_from_store(store, values);
    for (const auto& [key, which] : kFields) {
        if (machine.contains(key))
            values.add(machine[key].get<std::string>(), which,
                       redact::form_in_field(which, machine[key].get<std::string>()), true);
    }
    each_text(machine, [&](std::string& text) { redact::gather_from_text(text, values); });
    std::set<fs::path> files;
    for (const auto& entry : fs::directory_iterator(from)) {
        const auto name = entry.path().filename();
        if (name == kMachine) continue;
        if (const auto reason = redact::why_not_redacted(entry.path()); !reason.empty()) {
            forget_file(machine, name);
            machine["not_known"].push_back(name.string() + ": left out: " + reason);
            continue;
        }
        files.insert(name);
        redact::gather_from_file(entry.path(), values);
    }
    substitutes.assign(values);
    const redact::Redactor redactor(classes, values, substitutes);
    for (const auto& name : files)
        redact::redact_file(from / name, to / redactor.text(name.string()), redactor,
                            redact::Look::fields_too);
    each_text(machine, [&](std::string& text) { text = redactor.text(text); });
    for (const auto& [key, which] : kFields) {
        if (machine.contains(key))
            machine[key] = redactor.declared(key, machine[key].get<std::string>(), which);
    }
    for (auto& command : machine["commands"]) {
        if (!command.contains("files")) continue;
        auto renamed = ordered_json::object();
        for (const auto& [written, source] : command["files"].items())
            renamed[redactor.text(written)] = source;
        command["files"] = std::move(renamed);
    }
    machine["redacted"] = redact::text_of(classes);
    write_new_file(to / kMachine, text_of(machine));

    redact::ReadBack read(redactor.search());
    for (const auto& entry : fs::directory_iterator(to)) {
        const auto name = entry.path().filename().string();
        using redact::JsonNumbers;
        read.begin(name, name == kMachine ? std::optional(JsonNumbers(JsonNumbers::Written::json))
                                          : std::nullopt);
        std::ifstream file(entry.path(), std::ios::binary);
        std::string block(std::size_t{1} << 20, '\0');
        while (file.read(block.data(), static_cast<std::streamsize>(block.size())),
               file.gcount() > 0)
            read.add(std::string_view(block).substr(0, static_cast<std::size_t>(file.gcount())));
    }
    read.end();
    if (!read.found_in().empty())
        throw std::runtime_error("nothing is recorded: in \"" + read.found_in() +
                                 "\" stood a value that should have been replaced");
}

}  // namespace qvhost
