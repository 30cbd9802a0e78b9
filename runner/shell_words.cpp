#include "runner/shell_words.h"

#include <algorithm>

namespace runner {

namespace {

constexpr std::string_view kWordEnds = " \t\n;&|)<>";

// Calls `take` with the place behind each ">" that is not quoted.
template <class Take>
void each_redirection(std::string_view command, Take take) {
    bool quoted = false;
    for (std::size_t i = 0; i < command.size(); ++i) {
        if (command[i] == '\'') quoted = !quoted;
        if (command[i] == '\\' && !quoted) ++i;
        if (i < command.size() && command[i] == '>' && !quoted) take(i + 1);
    }
}

std::size_t end_of_word(std::string_view command, std::size_t begin, std::string& word) {
    bool quoted = false;
    std::size_t i = begin;
    for (; i < command.size(); ++i) {
        const char c = command[i];
        if (c == '\'') {
            quoted = !quoted;
        } else if (!quoted && c == '\\' && i + 1 < command.size()) {
            word += command[++i];
        } else if (!quoted && kWordEnds.find(c) != std::string_view::npos) {
            break;
        } else {
            word += c;
        }
    }
    return i;
}

}  // namespace

std::string shell_word(std::string_view command, std::size_t begin) {
    std::string word;
    end_of_word(command, begin, word);
    return word;
}

std::string_view behind_first_word(std::string_view command) {
    std::string word;
    return command.substr(end_of_word(command, 0, word));
}

std::string_view without_redirections(std::string_view command) {
    auto end = command.size();
    each_redirection(command, [&](std::size_t at) { end = std::min(end, at - 1); });
    if (end > 0 && end < command.size() && (command[end - 1] == '1' || command[end - 1] == '2'))
        --end;
    const auto last = command.substr(0, end).find_last_not_of(" \t");
    return command.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

std::vector<std::string> redirections(std::string_view command) {
    std::vector<std::string> files;
    each_redirection(command, [&](std::size_t at) {
        if (at < command.size() && command[at] == '>') return;  // ">>": the second one tells
        const auto begin = command.find_first_not_of(" \t", at);
        if (begin == std::string_view::npos || command[begin] == '&') return;
        auto word = shell_word(command, begin);
        if (!word.empty() && std::find(files.begin(), files.end(), word) == files.end())
            files.push_back(std::move(word));
    });
    return files;
}

NamedInDirectory named_in_directory(std::string_view command,
                                    const std::filesystem::path& directory) {
    auto path = directory.string();
    if (!path.ends_with('/')) path += '/';
    NamedInDirectory named;
    for (const auto& written : redirections(command)) {
        const auto file = std::filesystem::path(written).lexically_normal().string();
        if (file.starts_with(path) && file.size() > path.size()) {
            named.files.push_back(file.substr(path.size()));
        } else if (file.find('/') == std::string::npos) {
            named.files.push_back(file);
        }
    }
    for (std::size_t at = 0; at < command.size(); ++at) {
        std::string word;
        at = end_of_word(command, at, word);
        named.itself = named.itself || word + '/' == path || word == path;
    }
    return named;
}

}  // namespace runner
