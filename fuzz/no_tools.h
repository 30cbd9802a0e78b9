// In place of the plug-in's runner: no process is started, and every command has succeeded.
#pragma once

#include <string>

namespace fuzz {

// What every command prints whose output is read directly.
extern std::string printed;

}  // namespace fuzz
