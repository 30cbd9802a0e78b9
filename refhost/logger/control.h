// How the host sets up the log that modules write through XModule::Log.
#pragma once

#include <string>
#include <string_view>

namespace qvhost {

struct LogSettings {
    std::string log_dir;   // what XModule::GetLogDir tells, ending with "/"
    std::string log_file;  // where records are appended, created with mode 0600; empty: nowhere
    unsigned min_level = 3;
};

// Opens the log. Call it once, before any module runs; the threshold stays for the process's life.
// Throws std::system_error when the log file cannot be opened.
void open_log(const LogSettings& settings);

// Why a record could not be written; empty: all were. A full disk must not stop a collection, so
// the log itself never throws.
std::string log_failure();

// Backslash, line ends, tabs and other control bytes as \\ \n \r \t \xNN, so that a text is one
// line and can be told from any other text.
std::string escape_log_text(std::string_view text);

}  // namespace qvhost
