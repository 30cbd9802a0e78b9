// A host for tests: it implements the host interface on its own and notes, in order, all that a
// module does. It stands in for the host's libraries under their names, so the built plug-in runs in
// it unchanged.
#pragma once

#include <string>
#include <vector>

#include "rinstanceswrapper.h"
#include "rrepository.h"

namespace fakehost {

// What happened, a line each:
//     $ COMMAND                                     a command given to the shell
//     log 3 qvmodules/rbmcinfo: [repo] Enter ...    a log record
//     add TABLE "name" -1: id "display"="value", id "display"=7
//     columns: ID ID / 30 1                         a layout of either kind
//     rows: ID=19 ID=9 / false
// Control bytes and quotes in texts are escaped as in C.
extern std::vector<std::string> notes;

extern unsigned min_log_level;
extern std::string log_dir;  // ends with "/"

extern int records_made;  // how often an RInstance was constructed

// When not 0: that many more records can be added; the next one throws std::runtime_error.
extern int records_until_failure;

void reset();
std::string escaped(const std::string& text);

marlox::repository::RRepository& repository();
marlox::repository::RInstancesWrapper& wrapper();

}  // namespace fakehost
