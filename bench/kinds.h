// The captures that are measured, each with the parser that files it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "repository/sink.h"
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

// A repository that only counts.
struct Counter : marlox::repository::RRepository::Impl {
    std::uint64_t records = 0;
    std::uint64_t properties = 0;

    void add(const qvhost::Record& record) override {
        ++records;
        properties += record.properties.size();
    }
};

}  // namespace bench
