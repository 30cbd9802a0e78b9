// What changed, in sections of lines, for every format that people read.
#pragma once

#include <array>
#include <functional>
#include <string>

#include "qvhost/present/diff_view.h"

namespace qvhost {

struct DiffLine {
    std::string text;                  // the whole line
    std::array<std::string, 3> cells;  // the same for a table with three columns
    compare::Trend trend = compare::Trend::none;
};

// Hands on each line and the title of its section; lines of a section follow each other. Rows of the plug-in's
// tables are read while they are handed on; `has_raw_rows` says afterwards whether there were any.
void each_line(DiffView& view,
               const std::function<void(const std::string& title, const DiffLine& line)>& take);

// Said at the end where nothing changed; empty: something did.
std::string outcome_of(const DiffView& view);

}  // namespace qvhost
