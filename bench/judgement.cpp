// What a verdict costs: inventory, findings and health of a log directory, against the plug-in's parsers
// of the same captures and against the floor, which reads them and counts their line ends.
//   judgement NAME=LOG_DIRECTORY... [Google Benchmark's options]
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "findings/judge.h"
#include "inventory/survey.h"
#include "kinds.h"

namespace {

namespace fs = std::filesystem;

void judge(benchmark::State& state, const fs::path& directory) {
    qvhost::findings::Circumstances circumstances;
    circumstances.now = "2026-11-21T12:00:00";
    std::uint64_t events = 0;
    std::size_t captures = 0;
    for (auto _ : state) {
        events = 0;
        qvhost::findings::EventJudge judge_events;
        const auto survey =
            qvhost::inventory::survey(directory, {}, [&](qvhost::inventory::Event&& event) {
                judge_events.take(event);
                ++events;
            });
        captures = survey.captures.size();
        benchmark::DoNotOptimize(qvhost::findings::judge(survey, judge_events, circumstances));
    }
    if (captures == 0) state.SkipWithError("nothing to judge");
    state.counters["events"] = static_cast<double>(events);
}

std::vector<bench::Kind> kinds_in(const fs::path& directory) {
    std::vector<bench::Kind> found;
    for (const auto& kind : bench::kinds()) {
        if (fs::exists(directory / kind.file)) found.push_back(kind);
    }
    return found;
}

void parse(benchmark::State& state, const fs::path& directory) {
    bench::read_captures_in(directory.string());
    const auto kinds = kinds_in(directory);
    std::uint64_t records = 0;
    for (auto _ : state) {
        records = 0;
        for (const auto& kind : kinds) records += bench::count(kind).records;
    }
    if (records == 0) state.SkipWithError("no records");
}

void floor(benchmark::State& state, const fs::path& directory) {
    std::int64_t lines = 0;
    for (auto _ : state) {
        lines = 0;
        for (const auto& entry : fs::recursive_directory_iterator(directory)) {
            if (!entry.is_regular_file()) continue;
            std::ifstream in(entry.path(), std::ios::binary);
            char block[65536];
            while (in.read(block, sizeof block) || in.gcount() > 0)
                lines += std::count(block, block + in.gcount(), '\n');
        }
    }
    if (lines == 0) state.SkipWithError("nothing to read");
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (int at = 1; at < argc; ++at) {
        const std::string_view argument = argv[at];
        const auto equals = argument.find('=');
        if (equals == std::string_view::npos) {
            std::fprintf(stderr, "usage: judgement NAME=LOG_DIRECTORY... [OPTION]...\n");
            return 2;
        }
        const std::string name(argument.substr(0, equals));
        const fs::path directory(argument.substr(equals + 1));
        benchmark::RegisterBenchmark(("verdict/" + name).c_str(), judge, directory);
        if (!kinds_in(directory).empty())
            benchmark::RegisterBenchmark(("parsers/" + name).c_str(), parse, directory);
        benchmark::RegisterBenchmark(("floor/" + name).c_str(), floor, directory);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
