#include "qvhost/cli/settings_file.h"

#include <unistd.h>

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "qvhost/base/collect_options.h"
#include "qvhost/base/limits.h"
#include "qvhost/base/trust.h"
#include "qvhost/cli/command_line.h"
#include "show/terminal.h"
#include "show/text_table.h"
#include "text/size.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

const CollectOption* option_named(const std::string& name) {
    const auto& rows = collect_options();
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [&](const CollectOption& one) { return one.name == name; });
    return row == rows.end() || row->use == CollectOption::Use::internal ? nullptr : &*row;
}

bool is_list(const CollectOption& row) {
    return std::holds_alternative<std::vector<std::string> CollectOptions::*>(row.place);
}

// What `collect` makes of these arguments. Throws CLI::ParseError.
CollectOptions collected_from(std::vector<std::string> arguments) {
    ParsedArguments parsed;
    const auto app = command_line(parsed);
    arguments.insert(arguments.begin(), "collect");
    if (std::none_of(arguments.begin(), arguments.end(),
                     [](const std::string& one) { return one.starts_with("--log-dir="); }))
        arguments.emplace_back("--log-dir=/");
    std::reverse(arguments.begin(), arguments.end());
    app->parse(arguments);
    return parsed.collect;
}

Setting setting_in(const std::string& line) {
    const auto equal = line.find('=');
    if (equal == std::string::npos) throw std::runtime_error("it is not NAME = VALUE");
    Setting setting{boost::trim_copy(line.substr(0, equal)),
                    boost::trim_copy(line.substr(equal + 1))};
    if (!option_named(setting.name))
        throw std::runtime_error("there is no option \"" + setting.name + "\"");
    if (setting.value.empty()) throw std::runtime_error(setting.name + " has no value");
    try {
        collected_from({setting.argument()});
    } catch (const CLI::ParseError& error) {
        throw std::runtime_error(error.what());
    }
    return setting;
}

bool is_given(const std::vector<std::string>& arguments, const std::string& name) {
    const auto option = "--" + name;
    return std::any_of(arguments.begin(), arguments.end(), [&](const std::string& one) {
        return one == option || one.starts_with(option + "=");
    });
}

}  // namespace

fs::path settings_file() {
    const char* const file = std::getenv("QVHOST_CONF");
    return file ? file : "/etc/qvhost.conf";
}

std::vector<Setting> read_settings_file(const fs::path& file) {
    std::error_code error;
    if (!fs::exists(file, error)) return {};
    if (const auto why = why_program_not_trusted(file); !why.empty())
        throw std::runtime_error("the settings are not used: " + why);
    std::ifstream in(file);
    if (!in || !fs::is_regular_file(file, error))
        throw std::runtime_error(file.string() + ": cannot be read");
    std::vector<Setting> settings;
    unsigned number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        line = boost::trim_copy(line.substr(0, line.find('#')));
        if (line.empty()) continue;
        try {
            auto setting = setting_in(line);
            const auto earlier =
                std::find_if(settings.begin(), settings.end(),
                             [&](const Setting& one) { return one.name == setting.name; });
            if (earlier != settings.end() && !is_list(*option_named(setting.name)))
                throw std::runtime_error(setting.name + " stands in line " +
                                         std::to_string(earlier->line) + " already");
            setting.line = number;
            settings.push_back(std::move(setting));
        } catch (const std::runtime_error& wrong) {
            throw std::runtime_error(file.string() + ":" + std::to_string(number) + ": " +
                                     wrong.what());
        }
    }
    return settings;
}

std::vector<std::string> with_settings(const std::vector<std::string>& arguments) {
    if (arguments.empty() || (arguments[0] != "collect" && arguments[0] != "replay"))
        return arguments;
    auto whole = arguments;
    auto place = whole.begin() + 1;
    for (const auto& setting : read_settings_file(settings_file())) {
        if (is_given(arguments, setting.name)) continue;
        place = whole.insert(place, setting.argument()) + 1;
    }
    return whole;
}

void print_settings() {
    const auto file = settings_file();
    const auto settings = read_settings_file(file);
    std::vector<std::string> arguments;
    for (const auto& setting : settings) arguments.push_back(setting.argument());
    Limits limits;
    try {
        limits = limits_for(collected_from(arguments));
    } catch (const CLI::ParseError& error) {
        throw std::runtime_error(file.string() + ": " + error.what());
    }
    const std::vector<std::pair<std::string, std::string>> derived = {
        {"tool-timeout",    std::to_string(limits.tool_seconds)   },
        {"silence-timeout", std::to_string(limits.silence_seconds)},
        {"module-timeout",  std::to_string(limits.module_seconds) },
        {"run-timeout",     std::to_string(limits.run_seconds)    },
        {"capture-size",    exact_size_text(limits.capture_bytes) },
        {"table-size",      exact_size_text(limits.table_bytes)   },
        {"archive-size",    exact_size_text(limits.archive_bytes) },
        {"run-size",        exact_size_text(limits.run_bytes)     },
    };

    std::vector<std::vector<std::string>> rows;
    for (const auto& row : collect_options()) {
        if (row.use == CollectOption::Use::internal) continue;
        bool is_set = false;
        for (const auto& setting : settings) {
            if (setting.name != row.name) continue;
            is_set = true;
            rows.push_back(
                {row.name, setting.value, file.string() + ":" + std::to_string(setting.line)});
        }
        if (is_set) continue;
        std::string value = row.range.most > 0 ? usual_text(row) : "";
        std::string from = "default";
        for (const auto& [name, in_force] : derived) {
            if (name != row.name) continue;
            if (in_force != value) from = "follows from the others";
            value = in_force;
        }
        rows.push_back({row.name, value, from});
    }
    print_table(std::cout, {"Option", "In force", "From"}, rows, terminal_style(STDOUT_FILENO));
}

}  // namespace qvhost
