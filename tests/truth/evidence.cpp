#include "evidence.h"

#include <algorithm>

namespace truth {

const char* word(Damage damage) {
    switch (damage) {
        case Damage::none: return "none";
        case Damage::crlf: return "crlf";
        case Damage::no_last_line_end: return "no_last_line_end";
        case Damage::words_before: return "words_before";
        case Damage::words_after: return "words_after";
        case Damage::words_between: return "words_between";
        case Damage::cut: return "cut";
        case Damage::killed: return "killed";
        case Damage::empty: return "empty";
        case Damage::rows_dropped: return "rows_dropped";
        case Damage::failure: return "failure";
        case Damage::tool_missing: return "tool_missing";
        case Damage::not_captured: return "not_captured";
    }
    return "";
}

std::vector<Damage> all_damages() {
    return {Damage::crlf,          Damage::no_last_line_end,
            Damage::words_before,  Damage::words_after,
            Damage::words_between, Damage::cut,
            Damage::killed,        Damage::empty,
            Damage::rows_dropped,  Damage::failure,
            Damage::tool_missing,  Damage::not_captured};
}

namespace {

constexpr const char* kWords[] = {
    "IANA PEN registry open failed: No such file or directory",
    "modprobe: FATAL: Module ipmi_devintf not found in directory /lib/modules/5.10.0-28-amd64",
    "bash: warning: setlocale: LC_ALL: cannot change locale (en_US.UTF-8)",
    "perl: warning: Setting locale failed.",
};

bool is_summary(const Page& page) { return page.name.ends_with("_showall.txt"); }

struct Lines {
    std::string bytes;
    std::vector<int> where;
    int written = 0;

    void add(const std::string& text, const char* end = "\n") {
        bytes += text + end;
        ++written;
    }
    void add_of_page(const std::string& text, const char* end = "\n") {
        add(text, end);
        where.push_back(written);
    }
};

Lines plain(const Page& page, const char* end = "\n") {
    Lines lines;
    for (const auto& line : page.lines) lines.add_of_page(line.text, end);
    return lines;
}

Lines with_words(const Page& page, Damage damage, Random& random) {
    const std::string words = random.pick(kWords);
    const int count = static_cast<int>(page.lines.size());
    const int at = damage == Damage::words_before  ? 0
                   : damage == Damage::words_after ? count
                                                   : random.between(1, std::max(1, count - 1));
    Lines lines;
    for (int line = 0; line <= count; ++line) {
        if (line == at) lines.add(words);
        if (line < count) lines.add_of_page(page.lines[static_cast<std::size_t>(line)].text);
    }
    return lines;
}

// Keeps the first `size` bytes.
void cut(Fate& fate, std::size_t size) {
    std::size_t begin = 0;
    for (std::size_t line = 0; line < fate.page->lines.size(); ++line) {
        const auto& one = fate.page->lines[line];
        const auto end = begin + one.text.size();
        if (size <= begin) {
            fate.where[line] = 0;
        } else if (size < end) {
            fate.cut_line = static_cast<int>(line);
            fate.is_cut_in_tail = one.tail < 0 || size + static_cast<std::size_t>(one.tail) >= end;
        }
        begin = end + 1;
    }
    fate.bytes.resize(size);
}

int last_left(const Fate& fate) {
    int last = -1;
    for (std::size_t line = 0; line < fate.where.size(); ++line) {
        if (fate.where[line] > 0) last = static_cast<int>(line);
    }
    return last;
}

// A row that lacks cells shows that it was cut, and so does a capture that lacks what it announced.
Trust trust_of_cut(const Fate& fate) {
    if (fate.cut_line >= 0 && !fate.is_cut_in_tail) return Trust::broken;
    const int last = last_left(fate);
    const bool lacks_counted =
        last < fate.page->vital || (last == fate.page->vital && fate.cut_line == last);
    return lacks_counted || fate.bytes.empty() ? Trust::broken : Trust::unsure;
}

void drop_rows(Fate& fate, Random& random) {
    std::vector<std::size_t> counted;
    for (std::size_t line = 0; line < fate.page->lines.size(); ++line) {
        if (fate.page->lines[line].is_counted) counted.push_back(line);
    }
    random.shuffle(counted);
    counted.resize(
        std::min<std::size_t>(counted.size(), 1 + static_cast<std::size_t>(random.below(2))));
    Lines lines;
    for (std::size_t line = 0; line < fate.page->lines.size(); ++line) {
        if (std::find(counted.begin(), counted.end(), line) != counted.end()) {
            lines.where.push_back(0);
        } else {
            lines.add_of_page(fate.page->lines[line].text);
        }
    }
    fate.bytes = lines.bytes;
    fate.where = lines.where;
}

void lose_all(Fate& fate, const std::string& bytes) {
    fate.bytes = bytes;
    fate.where.assign(fate.page->lines.size(), 0);
    fate.trust = Trust::broken;
    fate.is_sure = false;
}

}  // namespace

bool fits(const Page& page, Damage damage) {
    if (page.lines.empty()) return damage == Damage::none;
    if (damage == Damage::rows_dropped)
        return std::any_of(page.lines.begin(), page.lines.end(),
                           [](const Line& line) { return line.is_counted; });
    if (damage == Damage::failure) return is_summary(page);
    if (damage == Damage::not_captured)
        return page.name != "c0_showall.txt" && page.name.starts_with("c") && is_summary(page);
    // The kernel's own files do not come from a tool that can be missing.
    if (damage == Damage::tool_missing) return page.tool != "cat" && page.tool != "dmesg";
    return true;
}

Fate suffer(const Page& page, Damage damage, Random& random, std::optional<std::size_t> cut_at) {
    Fate fate;
    fate.page = &page;
    fate.damage = damage;
    auto lines = plain(page);
    if (damage == Damage::crlf) lines = plain(page, "\r\n");
    const bool has_words = damage == Damage::words_before || damage == Damage::words_after ||
                           damage == Damage::words_between;
    if (has_words) lines = with_words(page, damage, random);
    fate.bytes = lines.bytes;
    fate.where = lines.where;
    switch (damage) {
        case Damage::none:
        case Damage::crlf: break;
        case Damage::no_last_line_end:
            // Empty lines at the end go as well, so that the last byte is one of text.
            while (!fate.bytes.empty() && fate.bytes.back() == '\n') fate.bytes.pop_back();
            for (std::size_t line = 0; line < page.lines.size(); ++line) {
                if (!page.lines[line].text.empty()) fate.open_line = static_cast<int>(line);
            }
            fate.trust = Trust::unsure;
            break;
        case Damage::words_before:
        case Damage::words_after:
        case Damage::words_between: fate.trust = Trust::unsure; break;
        case Damage::cut:
        case Damage::killed: {
            const auto size = static_cast<int>(fate.bytes.size());
            const bool is_late = damage == Damage::killed && random.chance(20);
            cut(fate, cut_at ? std::min(*cut_at, fate.bytes.size())
                             : static_cast<std::size_t>(is_late ? size : random.below(size)));
            fate.is_sure = false;
            fate.trust = damage == Damage::killed ? Trust::broken : trust_of_cut(fate);
            if (damage == Damage::killed) fate.ended_badly = "killed by signal 9";
            break;
        }
        case Damage::empty: lose_all(fate, ""); break;
        case Damage::rows_dropped:
            drop_rows(fate, random);
            fate.trust = Trust::broken;
            break;
        case Damage::failure:
            lose_all(fate,
                     "CLI Version = 007.1507.0000.0000 Sep 18, 2020\n"
                     "Operating system = Linux 5.10.0-28-amd64\n"
                     "Controller = " +
                         page.name.substr(1, page.name.find('_') - 1) +
                         "\nStatus = Failure\nDescription = Un-supported command\n\n");
            break;
        case Damage::tool_missing:
            lose_all(fate, page.holds_stderr ? "/bin/sh: 1: " + page.tool + ": not found\n" : "");
            break;
        case Damage::not_captured:
            lose_all(fate, "");
            fate.is_there = false;
            break;
    }
    return fate;
}

Fates suffer_all(const std::vector<Page>& pages, Random& random, int percent_hurt) {
    Fates fates;
    for (const auto& page : pages) {
        auto fate = suffer(page, Damage::none, random);
        if (page.lines.empty()) {  // its tool is not installed
            fate.trust = Trust::broken;
            fate.is_sure = false;
        }
        fates.by_page[page.name] = fate;
    }
    if (!random.chance(percent_hurt)) return fates;
    const auto damages = all_damages();
    for (int left = random.between(1, 2); left > 0; --left) {
        const auto damage = random.pick(damages);
        std::vector<const Page*> fit;
        for (const auto& page : pages) {
            if (fits(page, damage) && fates.of(page.name).damage == Damage::none)
                fit.push_back(&page);
        }
        if (fit.empty()) continue;
        const auto& page = *random.pick(fit);
        for (const auto& one : pages) {
            const bool goes_too = damage == Damage::tool_missing && one.tool == page.tool;
            if ((goes_too || &one == &page) && fits(one, damage))
                fates.by_page[one.name] = suffer(one, damage, random);
        }
    }
    return fates;
}

}  // namespace truth
