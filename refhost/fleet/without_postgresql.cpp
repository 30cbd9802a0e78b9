// In place of postgresql_database.cpp in a tree that runs anywhere: the client library needs too much of a system.
#include <stdexcept>

#include "fleet/database.h"

namespace qvhost::fleet {

std::unique_ptr<Database> open_postgresql(const std::string&) {
    throw std::runtime_error(
        "this qvfleet is built without PostgreSQL; that of a distribution's package has it");
}

}  // namespace qvhost::fleet
