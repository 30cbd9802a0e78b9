// `qvhost export`: a report in another format.
#pragma once

#include <string>
#include <vector>

#include "qvhost/base/options.h"

namespace qvhost {

// The formats.
std::vector<std::string> export_formats();

// Why the options contradict each other; empty: they do not.
std::string export_misuse(const ExportOptions& options);

// Writes the report in another format, to standard output or to where the options say; there it
// replaces nothing. Throws std::runtime_error naming the file if it cannot.
void export_report(const ExportOptions& options);

}  // namespace qvhost
