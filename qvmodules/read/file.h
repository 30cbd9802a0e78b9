// Opening and reading a capture's file; what goes wrong is told in the command log.
#pragma once

#include <cstddef>
#include <string>

namespace marlox::repository::capture {

// -1 if it cannot be opened or is not the one that this run's command wrote.
int open_for_reading(const std::string& path);

// How many bytes were read: 0 at the end, and after an error, where the text ends.
std::size_t read_some(int fd, char* to, std::size_t size);

}  // namespace marlox::repository::capture
