// What the scripts of stand-ins are made of, and the stand-ins themselves.
#pragma once

#include <filesystem>
#include <string>

#include "compat/layer.h"

namespace qvhost::compat {

// The beginning of each script: the system's own search path, so that the tools behind the stand-in meet no
// stand-in, and `note TEXT`, which writes a line into the log.
std::string beginning(const Place& place);

// If the tool has gone meanwhile, the shell says so in the words in which it would have said it to the
// plug-in.
std::string unless_gone(const std::string& tool);

// Starts the tool with the script's arguments, unless it has gone.
std::string start(const std::string& tool);

// "exec PROGRAM stand-in NAME LOG LEVEL", to which the stand-in's arguments are added.
std::string start_in_program(const Place& place, const std::string& name);

// Notes which support archives are in /tmp already: they are not this collection's.
void remember_archives(const std::filesystem::path& notes);

std::string uname_script(const Place& place);
std::string service_script(const Place& place);
std::string ipmitool_script(const Place& place);
std::string sosreport_script(const Place& place);
std::string supportconfig_script(const Place& place);
std::string mv_script(const Place& place);

}  // namespace qvhost::compat
