// Parse and file, against the floor: reading the same capture and counting its line ends.
//   engines DIRECTORY [Google Benchmark's options]
// DIRECTORY/1, DIRECTORY/10 and DIRECTORY/100 hold the captures, each ten times as long as before.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "kinds.h"

namespace {

// Returns the bytes of the file and counts its lines in `lines`.
std::size_t count_lines(const std::string& file, std::size_t& lines) {
    const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    std::vector<char> block(65536);
    std::size_t bytes = 0;
    lines = 0;
    for (;;) {
        const ssize_t n = ::read(fd, block.data(), block.size());
        if (n <= 0) break;
        bytes += static_cast<std::size_t>(n);
        const char* at = block.data();
        const char* const end = at + n;
        while (const void* found = std::memchr(at, '\n', static_cast<std::size_t>(end - at))) {
            at = static_cast<const char*>(found) + 1;
            ++lines;
        }
    }
    ::close(fd);
    return bytes;
}

void floor(benchmark::State& state, const std::string& file) {
    std::size_t bytes = 0;
    std::size_t lines = 0;
    for (auto _ : state) benchmark::DoNotOptimize(bytes = count_lines(file, lines));
    if (bytes == 0) state.SkipWithError("nothing to read");
    state.counters["bytes"] = static_cast<double>(bytes);
    state.counters["records"] = static_cast<double>(lines);
}

void parse_and_file(benchmark::State& state, const bench::Kind& kind,
                    const std::string& directory) {
    bench::read_captures_in(directory);
    bench::Count counted;
    for (auto _ : state) counted = bench::count(kind);
    if (counted.records == 0) state.SkipWithError("no records");
    state.counters["records"] = static_cast<double>(counted.records);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: engines DIRECTORY [OPTION]...\n");
        return 2;
    }
    const std::string captures = argv[1];
    argv[1] = argv[0];
    int options = argc - 1;
    benchmark::Initialize(&options, argv + 1);
    for (const auto& kind : bench::kinds()) {
        for (const char* times : {"1", "10", "100"}) {
            const auto directory = captures + "/" + times;
            const auto name = std::string(kind.name) + "/" + times;
            benchmark::RegisterBenchmark(("floor/" + name).c_str(), floor,
                                         directory + "/" + kind.file);
            benchmark::RegisterBenchmark(("ours/" + name).c_str(), parse_and_file, kind, directory);
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
