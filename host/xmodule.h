// The host's logger and its log directory.
#pragma once

#include <iosfwd>

namespace XModule {

// One log record: built on the stack, written through its stream, emitted when it is destroyed.
class Log {
public:
    // The threshold: a record of level L is wanted when this is at least L.
    static unsigned GetMinLogLevel();

    // `file` names the source unit (a literal: it is kept by address), `line` the line in it.
    Log(unsigned level, const char* file, int line);
    ~Log();

    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    std::ostream& Stream();

private:
    struct Impl;
    Impl* impl_;
};

// Writes the log directory into `buffer`, zero-terminated and ending with "/". `size` is the
// buffer's size; a directory that does not fit leaves an empty text.
void GetLogDir(char* buffer, unsigned long size);

}  // namespace XModule
