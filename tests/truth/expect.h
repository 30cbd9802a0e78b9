// What must be found of a server, what may be, and how each subsystem may be called.
#pragma once

#include <map>
#include <set>

#include "evidence.h"
#include "print.h"

namespace truth {

enum class Level { notice, warning, critical };
const char* word(Level level);

struct Expected {
    std::string about;               // for people: "drive 10:3 of controller 0"
    std::vector<std::string> rules;  // one of these
    Level least = Level::warning, most = Level::warning;
    std::string subsystem;
    std::vector<Spot> spots;              // the evidence is one of these
    std::vector<std::string> holds = {};  // one of these stands in its subject or in what it says
    bool is_certain = true;               // false: it may be there
    bool is_once = true;                  // no second finding has evidence at these lines
};

std::vector<Expected> expected_findings(const Server& server, const Book& book, const Fates& fates);

// By subsystem: the words that are right.
std::map<std::string, std::set<std::string>> expected_health(const Server& server,
                                                             const std::vector<Expected>& findings,
                                                             const Fates& fates);

// Whether a line of a page is left, and can be read for what it is.
enum class Left { gone, shaky, sure };
Left left_of(const Spot& spot, const Fates& fates);

}  // namespace truth
