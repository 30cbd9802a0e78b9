// The other host's logger: a record holds its text itself.
#pragma once

#include <sstream>
#include <string>

namespace XModule {

class Log {
public:
    static unsigned GetMinLogLevel();

    Log(unsigned level, const char* file, int line);
    ~Log();

    std::ostream& Stream();

private:
    std::string head_;
    std::ostringstream text_;
};

void GetLogDir(char* buffer, unsigned long size);

}  // namespace XModule
