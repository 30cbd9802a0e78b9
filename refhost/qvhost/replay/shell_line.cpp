#include "qvhost/replay/shell_line.h"

namespace qvhost {

namespace {

constexpr std::string_view kBlanks = " \t\n";
constexpr std::string_view kPatterns = "*?[";
constexpr std::string_view kNotUnderstood = "$`;&(){}<#~!";

class LineReader {
public:
    explicit LineReader(std::string_view line) : line_(line) {}

    std::optional<std::vector<ShellStage>> read() {
        std::vector<ShellStage> stages(1);
        for (skip_blanks(); at_ < line_.size(); skip_blanks()) {
            if (line_[at_] == '|') {
                ++at_;
                stages.emplace_back();
            } else if (!take_redirection(stages.back()) && !take_word(stages.back())) {
                return std::nullopt;
            }
        }
        for (const auto& stage : stages) {
            if (stage.words.empty()) return std::nullopt;
        }
        return stages;
    }

private:
    void skip_blanks() { at_ = std::min(line_.find_first_not_of(kBlanks, at_), line_.size()); }

    // ">FILE", "1>FILE", "2> FILE", "2>&1"
    bool take_redirection(ShellStage& stage) {
        const bool has_number = line_[at_] == '1' || line_[at_] == '2';
        const auto arrow = at_ + (has_number ? 1 : 0);
        if (arrow >= line_.size() || line_[arrow] != '>') return false;
        const bool is_err = line_[at_] == '2';
        auto& stream = is_err ? stage.err : stage.out;
        at_ = arrow + 1;
        if (line_.substr(at_).starts_with("&1") && is_err) {
            at_ += 2;
            stage.err = stage.out;
            stage.is_merged = true;
            return true;
        }
        skip_blanks();
        bool has_pattern = false;
        const auto file = word(has_pattern);
        if (!file || has_pattern) return false;
        stream = *file == "/dev/null" ? Stream{Stream::To::other} : Stream{Stream::To::file, *file};
        // What standard error was led to before stays where it is.
        if (!is_err && stage.is_merged) stage.is_merged = false;
        return true;
    }

    bool take_word(ShellStage& stage) {
        auto text = word(stage.has_pattern);
        if (text) stage.words.push_back(std::move(*text));
        return text.has_value();
    }

    // Nothing: there is none, or what only a shell understands.
    std::optional<std::string> word(bool& has_pattern) {
        const auto begin = at_;
        std::string text;
        for (; at_ < line_.size(); ++at_) {
            const char c = line_[at_];
            if (c == '\'' || c == '"') {
                const auto end = line_.find(c, at_ + 1);
                if (end == std::string_view::npos) return std::nullopt;
                const auto quoted = line_.substr(at_ + 1, end - at_ - 1);
                if (c == '"' && quoted.find_first_of("$`\\") != std::string_view::npos)
                    return std::nullopt;
                text += quoted;
                at_ = end;
            } else if (c == '\\') {
                if (++at_ == line_.size()) return std::nullopt;
                text += line_[at_];
            } else if (c == '|' || c == '>' || kBlanks.find(c) != std::string_view::npos) {
                break;
            } else if (kNotUnderstood.find(c) != std::string_view::npos) {
                return std::nullopt;
            } else {
                has_pattern = has_pattern || kPatterns.find(c) != std::string_view::npos;
                text += c;
            }
        }
        if (at_ == begin) return std::nullopt;
        return text;
    }

    std::string_view line_;
    std::size_t at_ = 0;
};

}  // namespace

std::optional<std::vector<ShellStage>> stages_of(std::string_view line) {
    return LineReader(line).read();
}

}  // namespace qvhost
