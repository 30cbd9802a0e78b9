// Reports to ask: a small one with values as bad as tools can print, and recorded servers.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "program.h"
#include "repository/record.h"

namespace test {

class ReportTest : public ProductTest {
protected:
    // A store with the table T (a header row of the ids a and b) and these records, and with an
    // empty table that has the same layout.
    std::filesystem::path store_with(const std::vector<qvhost::Record>& records) const;

    // The log directory of a replayed recorded server.
    std::filesystem::path replayed(const std::string& machine);
};

// A record of the table T.
qvhost::Record record(std::vector<qvhost::Property> properties);

std::vector<std::string> recorded_servers();

// Whether a collection from the recorded server is incomplete.
bool is_incomplete(const std::string& machine);

}  // namespace test
