#include "store/sqlite_words.h"

#include <sqlite3.h>

namespace qvhost::store {

namespace {

// clang-format off
constexpr struct {
    int code;
    const char* words;
} kWords[] = {
    {SQLITE_NOTADB,   "not a store of qvhost; a report is a log directory or its report/report.sqlite"},
    {SQLITE_CORRUPT,  "the store is damaged or cut short; copy it again from where it was made"},
    {SQLITE_BUSY,     "another program is using the store; try again when it has ended"},
    {SQLITE_LOCKED,   "another program is using the store; try again when it has ended"},
    {SQLITE_CANTOPEN, "the store cannot be opened"},
    {SQLITE_READONLY, "the store cannot be written"},
    {SQLITE_FULL,     "the disk is full"},
    {SQLITE_NOMEM,    "there is not enough memory to read the store"},
};
// clang-format on

}  // namespace

std::string sqlite_words(int code, const std::string& told) {
    for (const auto& [known, words] : kWords) {
        if (known == (code & 0xff)) return words;  // the rest is detail
    }
    return told;
}

}  // namespace qvhost::store
