// What the BMC module does, written short: a line "3 Enter ..." or "4 se:..." is a log record of that
// level; all other lines stand as the bench notes them.
#pragma once

#include <sstream>
#include <string>

// The notes that `text` stands for, up to a log threshold. A line end at the start is not part of it.
inline std::string bmc_notes(const std::string& text, unsigned threshold = 4) {
    std::istringstream lines(text);
    std::string notes;
    for (std::string line; std::getline(lines, line);) {
        if (line.empty()) continue;
        if (line.starts_with("3 ") || line.starts_with("4 ")) {
            const auto level = static_cast<unsigned>(line[0] - '0');
            if (level > threshold) continue;
            line = "log " + line.substr(0, 1) + " qvmodules/rbmcinfo: [repo] " + line.substr(2);
        }
        notes += line + "\n";
    }
    return notes;
}
