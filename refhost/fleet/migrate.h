// Brings a database to the format of this program.
#pragma once

#include <string>
#include <vector>

#include "fleet/database.h"

namespace qvhost::fleet {

// Makes tables and views in an empty database if `may_create`, migrates those of an earlier format, and leaves those of
// this one. Throws std::runtime_error if there is no fleet, or one of a later format. Safe to do in several programs
// at the same time.
void prepare_schema(Database& db, bool may_create);

}  // namespace qvhost::fleet
