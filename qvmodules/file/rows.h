// Parsers of the kind "each line is a row": one property, set anew for every line.
#pragma once

#include <string_view>

#include "file/record.h"
#include "read/lines.h"
#include "read/text.h"

namespace marlox::repository::capture {

// Lines as they were read, blank ones included, each with its line end.
inline void read_lines(Lines& lines, const Column& column, Record record) {
    const PropertyName name(column);
    while (const auto line = lines.next()) {
        record.set(name, *line);
        record.add();
    }
}

inline constexpr std::string_view kLineEnds = "\n\r";

// A text cut at kLineEnds: lines without their ends; blank ones give no row. `note` sees each line before it is
// filed. The record is made for the first line: a text without lines makes none.
template <class LineTokens, class Note>
void read_split_lines(LineTokens lines, const Column& column, RRepository& repository,
                      const Table& table, Note note) {
    auto line = lines.next();
    if (!line) return;
    const PropertyName name(column);
    for (Record record(repository, table); line; line = lines.next()) {
        note(*line);
        record.set(name, *line);
        record.add();
    }
}

}  // namespace marlox::repository::capture
