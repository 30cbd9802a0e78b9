// Writes log records as a module does: log_writer DIR FILE LEVEL
#include <cstdlib>
#include <iostream>
#include <string>

#include "logger/control.h"
#include "xmodule.h"

int main(int, char** arguments) {
    try {
        qvhost::open_log({.log_dir = arguments[1],
                          .log_file = arguments[2],
                          .min_level = static_cast<unsigned>(std::atoi(arguments[3]))});
    } catch (const std::exception& error) {
        std::cout << "cannot: " << error.what() << '\n';
        return 1;
    }
    char buffer[8] = "used...";
    XModule::GetLogDir(buffer, sizeof buffer);
    std::cout << XModule::Log::GetMinLogLevel() << ' ' << buffer << '\n';
    XModule::Log(3, "qvmodules/one", 12).Stream() << "[repo] Enter " << 5;
    XModule::Log(4, "qvmodules/two", 7).Stream()
        << std::string("[repo] a\nb\rc\td\\e\x1b[31m\0f {} \xc3\xa4\xff", 30);
    std::cout << "failure: " << qvhost::log_failure() << '\n';
}
