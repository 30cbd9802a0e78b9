#include "show/show_table.h"

#include <cstdio>
#include <sstream>

#include "place.h"
#include "show/link.h"
#include "show/text_table.h"
#include "show/visible.h"

using namespace qvhost;

namespace {

TEST(Visible, NothingReachesTheTerminalButText) {
    struct Case {
        std::string text;
        std::string visible;
    };
    const Case cases[] = {
        {"", ""},
        {"plain \xc3\xa4 \xe6\xbc\xa2", "plain \xc3\xa4 \xe6\xbc\xa2"},
        {"line\n", "line"},
        {"line\r\n", "line"},
        {"one\ntwo\n", "one\ntwo"},
        {"tab\there", "tab    here"},
        {"\x1b[31mred", "\\x1b[31mred"},
        {std::string("a\0b", 3), "a\\x00b"},
        {"back\bspace\x7f", "back\\x08space\\x7f"},
        {"\xc2\x9b"
         "31m",
         "\\u009b31m"},  // the 8-bit escape
        {"\xe2\x80\xae"
         "gpj.exe",
         "\\u202egpj.exe"},  // right-to-left override
        {"\xff\xfe", "\\xff\\xfe"},
        {"cut \xe6\xbc", "cut \\xe6\\xbc"},
        {"a\rb", "a\\x0db"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(visible(text), expected);
    EXPECT_EQ(one_line("a\nb\n"), "a\\x0ab");
}

// Every character that is not seen, or turns the direction of what follows.
TEST(Visible, HiddenCharactersAreShown) {
    const struct {
        char32_t first, last;
    } hidden[] = {
        {0x7f, 0x9f},     {0xad, 0xad},     {0x61c, 0x61c},   {0x180e, 0x180e}, {0x200b, 0x200f},
        {0x2028, 0x202e}, {0x2060, 0x206f}, {0xfeff, 0xfeff}, {0xfff9, 0xfffb},
    };
    for (const auto& [first, last] : hidden) {
        for (auto code = first; code <= last; ++code) {
            std::string text = "a";
            if (code < 0x80) {
                text += static_cast<char>(code);
            } else if (code < 0x800) {
                text += static_cast<char>(0xc0 | (code >> 6));
            } else {
                text += static_cast<char>(0xe0 | (code >> 12));
                text += static_cast<char>(0x80 | ((code >> 6) & 0x3f));
            }
            if (code >= 0x80) text += static_cast<char>(0x80 | (code & 0x3f));
            char shown[16];
            std::snprintf(shown, sizeof shown, code < 0x80 ? "a\\x%02x" : "a\\u%04x",
                          static_cast<unsigned>(code));
            EXPECT_EQ(visible(text), shown);
        }
    }
    EXPECT_EQ(visible("\xf3\xa0\x80\xa0"), "\\ue0020") << "a tag";
}

TEST(Visible, WidthsAreThoseOfTheTerminal) {
    EXPECT_EQ(display_width("abc"), 3u);
    EXPECT_EQ(display_width("\xc3\xa4"), 1u);
    EXPECT_EQ(display_width("\xe6\xbc\xa2"), 2u);  // a wide character
    EXPECT_EQ(display_width("e\xcc\x81"), 1u);     // a combining accent
    EXPECT_EQ(shortened("abcdef", 6), "abcdef");
    EXPECT_EQ(shortened("abcdefg", 6), "abc...");
    EXPECT_EQ(shortened("\xe6\xbc\xa2\xe6\xbc\xa2\xe6\xbc\xa2", 5), "\xe6\xbc\xa2...");
    EXPECT_EQ(shortened("abcdef", 2), "..");
}

TEST(Visible, Wrapping) {
    using Lines = std::vector<std::string>;
    EXPECT_EQ(wrapped("", 5), (Lines{""}));
    EXPECT_EQ(wrapped("one two three", 7), (Lines{"one two", "three"}));
    EXPECT_EQ(wrapped("abcdefgh", 3), (Lines{"abc", "def", "gh"}));
    EXPECT_EQ(wrapped("a\n\nb", 9), (Lines{"a", "", "b"}));
    EXPECT_EQ(wrapped("\xe6\xbc\xa2\xe6\xbc\xa2", 1), (Lines{"\xe6\xbc\xa2", "\xe6\xbc\xa2"}));
    EXPECT_EQ(wrapped("abc", 0), (Lines{"a", "b", "c"}));
    // No text is lost, whatever the width.
    const std::string text = "Corrected memory error \xe6\xbc\xa2 on DIMM_A1, slot 3 of 24";
    for (std::size_t width = 1; width < 60; ++width) {
        std::string joined;
        for (const auto& line : wrapped(text, width)) {
            EXPECT_LE(display_width(line), std::max<std::size_t>(width, 2));
            joined += line;
        }
        auto without = [](std::string s) {
            std::erase(s, ' ');
            return s;
        };
        EXPECT_EQ(without(joined), without(text));
    }
}

class Show : public test::Place {
protected:
    Show() : store(dir / "s", Store::Mode::create) { store.add_module("M", "Module"); }
    std::string shown(const std::string& table, unsigned width, bool colour = false,
                      TableForm form = TableForm::fitting) {
        std::ostringstream out;
        for (const auto& module : store.modules()) {
            for (const auto& info : module.tables) {
                if (info.id == table) show_table(out, store, module, info, {width, colour}, form);
            }
        }
        return out.str();
    }
    Store store;
};

TEST_F(Show, AHeaderRowWithSharesOfTheWidth) {
    store.add_table("M", "T");
    store.set_layout("T", RowLayout{{"a", "b"}, {75, 25}, false});
    store.add(
        {"T",
         "n",
         -1,
         {{"a", "Alpha", " one two three four five \n"}, {"b", "Beta", 7}, {"c", "Also", "x"}}});
    EXPECT_EQ(shown("T", 40),
              "T (Module), 1 record\n"
              "Alpha                    Beta   Also\n"
              "-----------------------  -----  -----\n"
              "one two three four five  7      x\n");
    EXPECT_EQ(shown("T", 30),
              "T (Module), 1 record\n"
              "Alpha             Beta   Also\n"
              "----------------  -----  -----\n"
              "one two three     7      x\n"
              "four five\n");
    EXPECT_EQ(shown("T", 16),
              "T (Module), 1\n"
              "record\n"
              "-- 1 -----------\n"
              "Alpha\n"
              "  one two three\n"
              "  four five\n"
              "Beta\n"
              "  7\n"
              "Also\n"
              "  x\n");
    EXPECT_EQ(shown("T", 20, false, TableForm::blocks),
              "T (Module), 1 record\n"
              "-- 1 ---------------\n"
              "Alpha  one two three\n"
              "       four five\n"
              "Beta   7\n"
              "Also   x\n");
}

// For grep and the like.
TEST_F(Show, WithoutAWidthARecordIsALine) {
    store.add_table("M", "T");
    store.set_layout("T", RowLayout{{"a", "b"}, {75, 25}, false});
    const std::string words(300, 'w');
    store.add({"T", "n", -1, {{"a", "Alpha", "one\n\n two\n"}, {"b", "Beta", "x"}}});
    store.add({"T", "n", -1, {{"a", "Alpha", words}, {"b", "Beta", "y\n"}}});
    EXPECT_EQ(shown("T", 0),
              "T (Module), 2 records\n"
              "Alpha" +
                  std::string(297, ' ') + "Beta\n" + std::string(300, '-') +
                  "  -----\n"
                  "one | two" +
                  std::string(293, ' ') + "x\n" + words + "  y\n");
}

TEST_F(Show, WithoutAWidthAHeaderColumnIsALineAProperty) {
    store.add_table("M", "T");
    store.set_layout("T", ColumnLayout{{"a", "b"}, 30, 4});
    store.add({"T", "n", -1, {{"a", "Alpha", "one\ntwo"}, {"b", "B", "x"}}});
    store.add({"T", "n", -1, {{"a", "Alpha", "three"}}});
    EXPECT_EQ(shown("T", 0),
              "T (Module), 2 records\nAlpha  one | two\nB      x\n\nAlpha  three\nB\n");
}

TEST_F(Show, LinksAreTheNamesOfCaptures) {
    const auto link = [](const std::string& name, const std::string& text) {
        return "\n<pre>\n<a href='../" + name + "' target='_blank'>../" + text + "</a>\n<pre>\n";
    };
    const struct {
        std::string value, name;
    } cases[] = {
        {link("pdlist.txt", "pdlist.txt"), "pdlist.txt"},
        {link("c0_pdlist.txt'", "c0_pdlist.txt'"), "c0_pdlist.txt"},
        {link("a b.log", "a b.log"), "a b.log"},
        {link("one.txt", "other.txt"), ""},
        {link("../passwd", "../passwd"), ""},
        {link("", ""), ""},
        {link("x", "x") + " ", ""},
        {"<a href='../x' target='_blank'>../x</a>", ""},
        {"", ""},
    };
    for (const auto& [value, name] : cases) EXPECT_EQ(linked_capture(value).value_or(""), name);

    store.add({"T", "n", -1, {{"a", "A", link("pdlist.txt'", "pdlist.txt'")}}});
    EXPECT_EQ(shown("T", 20), "T (), 1 record\nA\n----------\npdlist.txt\n");
}

TEST_F(Show, AHeaderColumnWithRecordsBesideEachOther) {
    store.add_table("M", "T");
    store.set_layout("T", ColumnLayout{{"a", "b"}, 30, 2});
    for (const char* value : {"1", "2", "3"}) store.add({"T", "n", -1, {{"a", "Alpha", value}}});
    EXPECT_EQ(shown("T", 40),
              "T (Module), 3 records\n"
              "Alpha  1  2\n"
              "b\n"
              "\n"
              "Alpha  3\n"
              "b\n");
}

TEST_F(Show, NoMoreRecordsBesideEachOtherThanCanBeRead) {
    store.add_table("M", "T");
    store.set_layout("T", ColumnLayout{{"a"}, 30, 4'000'000'000});
    for (const char* value : {"1", "2", "3"}) store.add({"T", "n", -1, {{"a", "Alpha", value}}});
    EXPECT_EQ(shown("T", 30), "T (Module), 3 records\nAlpha  1  2  3\n");
    EXPECT_EQ(shown("T", 12), "T (Module),\n3 records\nAlpha  1  2\n\nAlpha  3\n");
}

TEST_F(Show, OneColumnKeepsItsIndentation) {
    store.add_table("M", "T");
    store.set_layout("T", RowLayout{{"a"}, {100}, false});
    store.add({"T", "n", -1, {{"a", "A", "  indented\n"}}});
    EXPECT_EQ(shown("T", 20), "T (Module), 1 record\nA\n----------\n  indented\n");
}

TEST_F(Show, AnEmptyTableSaysWhy) {
    store.add_table("M", "T");
    store.set_reason("T", "the tool is not there");
    EXPECT_EQ(shown("T", 80), "T (Module), no records: the tool is not there\n");
    EXPECT_EQ(shown("T", 80, true),
              "\033[1mT (Module), no records: the tool is not there\033[0m\n");
}

TEST_F(Show, ATableWithoutALayoutShowsWhatThereIs) {
    store.add({"T", "n", -1, {{"a", "A", "1"}}});
    EXPECT_EQ(shown("T", 20), "T (), 1 record\nA\n-----\n1\n");
}

TEST(TextTables, EveryWidthHoldsItsLines) {
    for (unsigned width = 1; width < 200; ++width) {
        for (const auto form : {TableForm::fitting, TableForm::blocks}) {
            std::ostringstream out;
            TextTable table(out, {"First", "Second", "Third", "Fourth"}, {width, false}, form);
            table.add({"a long cell of words", "\x1b[0m", "x", "y", "surplus"});
            table.end();
            std::istringstream lines(out.str());
            for (std::string line; std::getline(lines, line);)
                EXPECT_LE(display_width(line), std::max(width, 5u)) << width << "\n" << out.str();
        }
    }
}

// Where rows do not fit, they are blocks: no column is so narrow that words stand on end in it.
TEST(TextTables, NoWordIsCut) {
    const std::vector<std::string> titles{"Time", "LogEntryQualifier", "LogDataDescription"};
    const std::vector<std::string> cells{"03/02/2026 04:12:07", "0x0002",
                                         "PhysDisk 1 in Encl 1 Slot 1 state changed to Missing"};
    for (unsigned width = 40; width < 120; ++width) {
        std::ostringstream out;
        print_table(out, titles, {cells}, {width, false});
        for (const auto& texts : {titles, cells}) {
            for (const auto& text : texts) {
                std::istringstream words(text);
                for (std::string word; words >> word;)
                    EXPECT_NE(out.str().find(word), std::string::npos) << width << "\n"
                                                                       << out.str();
            }
        }
        std::istringstream lines(out.str());
        std::size_t count = 0;
        for (std::string line; std::getline(lines, line); ++count)
            EXPECT_LE(display_width(line), width) << out.str();
        EXPECT_LE(count, 7u) << out.str();
    }
}

// The first rows tell the widths; a longer word that comes late is not cut either.
TEST(TextTables, RowsThatComeLateAreWhole) {
    std::ostringstream out;
    TextTable table(out, {"A", "B", "C"}, {40, false});
    for (int i = 0; i < 10'000; ++i) table.add({"short", "x", "y"});
    const auto before = out.str().size();
    EXPECT_GT(before, 10'000u) << "rows are printed while more come";
    table.add({"a-word-of-22-characters", "x", "y"});
    table.end();
    EXPECT_EQ(out.str().substr(before), "a-word-of-22-characters  x      y\n");
}

}  // namespace
