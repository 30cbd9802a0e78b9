// What happens to captures on their way: cut off, empty, mixed with other tools' words, never made. Each
// page has a fate, which says what of its lines is left, where it stands, and what may rest on it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "page.h"
#include "random.h"

namespace truth {

enum class Damage {
    none,
    crlf,
    no_last_line_end,
    words_before,  // another tool's error text
    words_after,
    words_between,
    cut,     // at a random byte; nothing says that the tool did not end well
    killed,  // the same, by a signal
    empty,
    rows_dropped,  // fewer than the capture says there are
    failure,       // "Status = Failure"
    tool_missing,
    not_captured,  // no such file
};
const char* word(Damage damage);
std::vector<Damage> all_damages();

enum class Trust {
    whole,   // `ok` may rest on it
    unsure,  // nobody could tell that something is missing; or it holds words of another tool
    broken,  // it shows that something is missing: no `ok` may rest on it
};

struct Fate {
    const Page* page = nullptr;
    Damage damage = Damage::none;
    Trust trust = Trust::whole;
    bool is_there = true;
    bool is_sure = true;  // every line that is left can be read for what it is
    std::string bytes;
    std::string ended_badly;
    std::vector<int> where;       // by line of the page: its number now, from 1; 0: it is gone
    int cut_line = -1;            // the line of the page that lost its end; -1: none
    bool is_cut_in_tail = false;  // where nobody could tell
    int open_line = -1;  // the last line, whole but without its end: nobody can tell that it is
};

struct Fates {
    std::map<std::string, Fate> by_page;
    const Fate& of(const std::string& page) const { return by_page.at(page); }
};

// Whether this can happen to the page at all.
bool fits(const Page& page, Damage damage);
// A cut is made at this byte, or at a random one.
Fate suffer(const Page& page, Damage damage, Random& random,
            std::optional<std::size_t> cut_at = std::nullopt);

// Most servers' captures are whole; the others' suffer once or twice.
Fates suffer_all(const std::vector<Page>& pages, Random& random, int percent_hurt);

}  // namespace truth
