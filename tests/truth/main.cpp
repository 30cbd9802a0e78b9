// Writes a random server, as a log directory or as a recorded server, with the truth about it.
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "compare.h"
#include "truth.h"

namespace {

constexpr const char* kUsage =
    "truth_server --seed N --output DIR [--machine] [--now 2026-11-21T06:00:00] [--fault NAME]\n"
    "             [--page CAPTURE --damage NAME [--cut-at BYTE]] [--percent-hurt N]\n"
    "truth_server --compare truth.json report.json\n"
    "truth_server --list\n";

truth::Json read(const std::string& file) {
    std::ifstream in(file);
    if (!in) throw std::runtime_error("cannot read " + file);
    return truth::Json::parse(in);
}

int run(int count, char** arguments) {
    truth::Options options;
    options.now = truth::usual_now();
    std::string output;
    bool is_machine = false;
    for (int at = 1; at < count; ++at) {
        const std::string name = arguments[at];
        const auto value = [&]() -> std::string {
            if (at + 1 >= count) throw std::runtime_error(name + " needs a value\n" + kUsage);
            return arguments[++at];
        };
        if (name == "--seed") {
            options.seed = std::stoull(value());
        } else if (name == "--output") {
            output = value();
        } else if (name == "--machine") {
            is_machine = true;
            options.is_recorded = true;
        } else if (name == "--now") {
            options.now = truth::seconds_of_iso(value());
        } else if (name == "--fault") {
            options.fault = value();
        } else if (name == "--page") {
            options.page = value();
        } else if (name == "--cut-at") {
            options.cut_at = std::stoull(value());
        } else if (name == "--percent-hurt") {
            options.percent_hurt = std::stoi(value());
        } else if (name == "--damage") {
            const auto wanted = value();
            for (const auto damage : truth::all_damages()) {
                if (wanted == truth::word(damage)) options.damage = damage;
            }
        } else if (name == "--compare") {
            const auto truth = read(value());
            const auto differences = truth::compare(truth, read(value()));
            for (const auto& line : differences) std::cout << line << "\n";
            return differences.empty() ? 0 : 1;
        } else if (name == "--list") {
            for (const auto& fault : truth::fault_names()) std::cout << "fault " << fault << "\n";
            for (const auto damage : truth::all_damages())
                std::cout << "damage " << truth::word(damage) << "\n";
            return 0;
        } else {
            std::cerr << kUsage;
            return 2;
        }
    }
    if (output.empty()) {
        std::cerr << kUsage;
        return 2;
    }
    const auto made = truth::make(options);
    if (is_machine) {
        truth::write_machine(*made, output);
    } else {
        truth::write_log_dir(*made, output);
    }
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    try {
        return run(count, arguments);
    } catch (const std::exception& error) {
        std::cerr << "truth_server: " << error.what() << "\n";
        return 2;
    }
}
