// The captures that are measured, each with the parser that files it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "rrepository.h"

namespace bench {

struct Kind {
    std::string_view name;
    const char* file;  // in the directory of captures
    void (*parse)(marlox::repository::RRepository&);
};

std::span<const Kind> kinds();

// Parsers find their captures in this directory from now on.
void read_captures_in(const std::string& directory);

struct Count {
    std::uint64_t records = 0;
    std::uint64_t properties = 0;
};

// Reads the capture and files its records, in a host that only counts them (counting_host.cpp) or in
// ours, which makes and keeps each record (our_host.cpp).
Count count(const Kind& kind);

}  // namespace bench
