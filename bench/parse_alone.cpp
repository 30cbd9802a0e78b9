// From capture to records in a host that only counts them, as a process of its own.
//   parse_alone KIND CAPTURES
#include <cstdio>

#include "kinds.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: parse_alone KIND CAPTURES\n");
        return 2;
    }
    bench::read_captures_in(argv[2]);
    for (const auto& kind : bench::kinds()) {
        if (kind.name != argv[1]) continue;
        const auto counted = bench::count(kind);
        std::printf("%llu\n", static_cast<unsigned long long>(counted.records));
        return 0;
    }
    std::fprintf(stderr, "parse_alone: no capture of the kind %s\n", argv[1]);
    return 1;
}
