// report.json: the collection for programs.
#pragma once

#include <iosfwd>
#include <string>

#include "store/store.h"

namespace qvhost {

// Counts the changes of the format that a reader has to know of.
inline constexpr int kReportFormat = 1;

// One table a line, one record a line, so that two reports can be compared by eye. Bytes that are
// not UTF-8 become U+FFFD. Memory does not grow with the number of records.
void write_report_json(const Store& store, std::ostream& out);

// The same into a file (mode 0600) that is there whole or not at all. Throws std::runtime_error
// naming the file.
void write_report_json(const Store& store, const std::string& path);

}  // namespace qvhost
