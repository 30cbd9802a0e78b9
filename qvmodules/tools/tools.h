// Functions and globals that all modules use to run the tools in qv_tools, which lies beside the host
// program: where the tools are, which build fits the system, and what a command's status means.
#pragma once

#include "export.h"

// The program directory for the first sample module's commands. It ends with "/", as the two below.
QV_EXPORT extern char current_absolute_path[256];

namespace marlox::repository {

QV_EXPORT extern char current_absolute_path_bmc[256];  // for the BMC module's commands
QV_EXPORT extern char current_absolute_path2[256];     // for the second sample module's commands
QV_EXPORT extern int abs_path;        // what GetProgramDir returned in the first sample module
QV_EXPORT extern int abs_path2;       // and in the second
QV_EXPORT extern char fullpath[256];  // the log directory, as the BMC module found it

// The system's word size, 32 or 64; 64 until check_linux_bit() has found out.
QV_EXPORT extern int linux_x32_x64;

// Judges the wait status of a command that fetched `name` ("MC", "SEL", ...): 0 if it succeeded, 1
// if not, and logs which. A self-test tells its result by its exit code, so every code of
// "selftest" is a success, and so is code 1 of "FRU", which ipmitool returns when it could read
// some of the devices only.
QV_EXPORT int check_system_call(int status, const char* name);

// Writes the directory of the running program, ending with "/", into `buffer`, which has 256 zero
// bytes. Returns 0, or -1 (and says so on standard output) if it is unknown or the program's path has
// more than 255 bytes; `buffer` is then an empty text, and no tool may be run.
QV_EXPORT int GetProgramDir(char* buffer);

// Asks the system for its word size. Returns 0, or 1 if it could not be asked.
QV_EXPORT int check_linux_bit();

// Upper-cases `text` in place and returns it.
QV_EXPORT char* strupr(char* text);

// Replaces every `from` in `text` by `to`, in place; what was inserted is not searched again. The
// caller provides the room.
QV_EXPORT void StrReplace(char* text, char* from, char* to);

// Makes every file in qv_tools executable: the tools are delivered without that permission.
void make_tools_executable(const char* program_dir);

}  // namespace marlox::repository
