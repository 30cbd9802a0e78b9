// Rows of a fleet's database in the formats that people and programs read.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "fleet/database.h"

namespace qvhost::fleet {

struct Printing {
    std::string format;  // one of row_formats()
    bool raw = false;    // in csv: values as they are
};

// What one statement gives, which only reads.
void print_query(Database& db, const std::string& sql, const Printing& how, std::ostream& out);

// A table or a view, its rows in an order that both dialects agree on. Throws std::runtime_error if there is none of
// that name.
void print_relation(Database& db, const std::string& name, const Printing& how, std::ostream& out);

// Rows that are texts.
void print_texts(const std::vector<std::string>& columns,
                 const std::vector<std::vector<std::string>>& rows, const Printing& how,
                 std::ostream& out);

}  // namespace qvhost::fleet
