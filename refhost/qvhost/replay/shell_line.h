// A command line of a collection, taken apart as the shell does it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvhost {

// Where a stream of a command goes.
struct Stream {
    enum class To {
        caller,
        file,
        other
    } to = To::caller;      // "caller": the next stage, or who asked
    std::string file = {};  // as it is written there
    bool operator==(const Stream&) const = default;
};

// One command of a pipeline.
struct ShellStage {
    std::vector<std::string> words;  // without quotes
    bool has_pattern = false;        // a word of it stands for files: "/tmp/nts_linux*"
    Stream out;
    Stream err;
    bool is_merged = false;  // standard error goes the way of standard output ("2>&1")
};

// The stages of a line such as "'/P/storcli' /c0 show >'/L/a.txt' 2>&1" or "lsmod|grep ipmi|wc -l". Nothing: the
// line needs more of a shell than that.
std::optional<std::vector<ShellStage>> stages_of(std::string_view line);

}  // namespace qvhost
