#include "qvhost/doctor/doctor.h"

#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>

#include "show/visible.h"

namespace qvhost {

namespace {

using nlohmann::ordered_json;

// By the conditions' order.
constexpr struct {
    const char* word;
    const char* headline;
    int exit;
} kWords[] = {
    {"ok",       "OK",       0},
    {"unknown",  "UNKNOWN",  3},
    {"warning",  "WARNING",  1},
    {"critical", "CRITICAL", 2},
};

const auto& words_of(Condition condition) { return kWords[static_cast<std::size_t>(condition)]; }

void print_json(const std::vector<Examined>& lines, Condition worst) {
    ordered_json json{
        {"status", words_of(worst).word },
        {"lines",  ordered_json::array()}
    };
    for (const auto& [subject, condition, says, mend] : lines)
        json["lines"].push_back({
            {"subject", subject                                           },
            {"status",  words_of(condition).word                          },
            {"says",    says                                              },
            {"mend",    mend.empty() ? ordered_json() : ordered_json(mend)}
        });
    std::cout << json.dump(2, ' ', false, ordered_json::error_handler_t::replace) << '\n';
}

// The command that mends it stands below each line.
void print_text(const std::vector<Examined>& lines, Condition worst) {
    const auto amiss = std::count_if(lines.begin(), lines.end(), [](const Examined& line) {
        return line.condition != Condition::ok;
    });
    std::cout << words_of(worst).headline << ": "
              << (amiss == 0 ? "a collection finds what it needs"
                             : std::to_string(amiss) + " of " + std::to_string(lines.size()) +
                                   " lines need attention")
              << '\n';
    for (const auto& [subject, condition, says, mend] : lines) {
        std::string status = words_of(condition).word;
        status.resize(10, ' ');
        std::cout << status << one_line(subject) << ": " << one_line(says) << '\n';
        if (!mend.empty()) std::cout << "          " << one_line(mend) << '\n';
    }
}

}  // namespace

int doctor(const DoctorOptions& options) {
    const auto lines = examine(options);
    auto worst = Condition::ok;
    for (const auto& line : lines) worst = std::max(worst, line.condition);
    (options.format == "json" ? print_json : print_text)(lines, worst);
    return words_of(worst).exit;
}

}  // namespace qvhost
