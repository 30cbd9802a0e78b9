// What every format of `diff` shows. Events and rows are handed on one by one.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "compare/compare.h"
#include "qvhost/present/diff_rows.h"
#include "show/terminal.h"
#include "store/store.h"

namespace qvhost {

// An event, and how many others say the same at other times.
struct FoldedEvent {
    inventory::Event event;  // the last one
    std::uint64_t count = 0;
};

// Events that one report alone has, counted; of each severity the first ones that differ.
struct EventTally {
    std::array<std::uint64_t, 3> counts{};  // by inventory::Severity
    std::array<std::vector<FoldedEvent>, 3> first;
    std::array<std::uint64_t, 3> folded{};  // how many stand in `first`

    std::uint64_t all() const { return counts[0] + counts[1] + counts[2]; }
};

struct DiffView {
    struct Report {
        std::string path;  // as the user named it
        const Store& store;
        compare::Side side;
    };
    const Report& from;
    const Report& to;
    const compare::Difference& difference;
    EventDifference& events;
    EventTally new_events, gone_events;
    std::vector<std::string> raw_tables;  // whose rows are compared; none unless it was asked for
    bool has_raw_rows = false;            // set by whoever prints them

    bool is_same() const {
        return difference.is_empty() && new_events.all() == 0 && gone_events.all() == 0 &&
               !has_raw_rows;
    }
};

// "web1, KP220 Rack Server, serial A1, 2026-11-21T06:00:00Z (monday)"
std::string words_of(const DiffView::Report& report);

// How many different events of a severity are shown to people.
inline constexpr std::size_t kShownEvents = 20;

void print_diff_text(std::ostream& out, DiffView& view, const TerminalStyle& style);
void print_diff_json(std::ostream& out, DiffView& view);
void print_diff_html(std::ostream& out, DiffView& view);

// Rows of a table that one report alone has: first those that are gone, then new ones.
template <class TakeGone, class TakeNew>
void each_raw_row(const DiffView& view, const std::string& table, TakeGone take_gone,
                  TakeNew take_new) {
    RecordDifference rows(view.from.store, view.to.store, table);
    rows.each_gone(take_gone);
    rows.each_new(take_new);
}

}  // namespace qvhost
