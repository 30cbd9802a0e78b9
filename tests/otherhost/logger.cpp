// The log goes to standard error; QV_TEST_LOG_DIR, ending with "/", is the log directory.
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "xmodule.h"

namespace XModule {

unsigned Log::GetMinLogLevel() { return 3; }

Log::Log(unsigned level, const char* file, int) : head_(std::to_string(level) + " " + file) {}

Log::~Log() { std::cerr << head_ << ' ' << text_.str() << '\n'; }

std::ostream& Log::Stream() { return text_; }

void GetLogDir(char* buffer, unsigned long size) {
    const char* const directory = std::getenv("QV_TEST_LOG_DIR");
    if (directory && std::strlen(directory) < size) std::strcpy(buffer, directory);
}

}  // namespace XModule
