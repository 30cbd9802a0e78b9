// A capture while it is being printed, and the book of what each of its lines tells.
//
// A printer writes lines and, line by line, which field of which entity the line tells. What is known of
// the server is then exactly what some line told; a line that is damaged later takes its facts with it.
#pragma once

#include <deque>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace truth {

using Json = nlohmann::ordered_json;

struct Line {
    std::string text;
    int tail = -1;  // of a table's row: how many of its last bytes can be cut off and nobody
                    // could tell; -1: no row
    bool is_counted = false;  // the capture says how many of these there are
};

struct Page {
    std::string name;           // in the log directory: "c0_showall.txt"
    std::string tool;           // "storcli"
    std::string arguments;      // "/c0 show"
    bool holds_stderr = false;  // standard error goes into the capture as well
    int exit = 0;
    std::vector<Line> lines = {};
    int vital = -1;  // the last line that the capture's own counts and ends would miss

    int line(std::string text);  // its index, from 0
    int row(std::string text, int tail = 0, bool is_counted = false);
    void text(const std::string& lines);  // several lines, each with its end
    int last() const { return static_cast<int>(lines.size()) - 1; }
    void is_vital() { vital = last(); }
};

// A line, or a block of lines, of a page.
struct Spot {
    std::string page;
    int first = 0;  // from 0
    int last = 0;
};

// What a line says of a field: the value, and others that mean the same.
struct Told {
    template <class Value>
    requires(!std::is_same_v<std::remove_cvref_t<Value>, Told>) Told(Value&& told)
        : value(std::forward<Value>(told)) {}
    template <class Value>
    Told(Value&& told, std::vector<Json> alternatives)
        : value(std::forward<Value>(told)), also(std::move(alternatives)) {}
    Json value;
    std::vector<Json> also = {};
    bool begins = false;     // longer values that begin so are right as well
    bool is_free = false;    // any value is
    bool is_joined = false;  // the line is about another entity; a reader may join it to this one
    bool is_elsewhere = false;  // the same, and a reader must join it
};
inline Told beginning(Json value) {
    Told told(std::move(value));
    told.begins = true;
    return told;
}
inline Told anything(Json value) {
    Told told(std::move(value));
    told.is_free = true;
    return told;
}
template <class Value>
Told joined(Value&& value) {
    Told told(std::forward<Value>(value));
    told.is_joined = true;
    return told;
}

struct Saying {
    const char* field;
    Told told;
};

struct Fact {
    std::string field;
    Told told;
    Spot spot;
};

struct Subject {
    std::string kind;                // "drives"
    std::string id;                  // ours alone
    std::vector<std::string> match;  // the fields that say which entity it is
    std::vector<Fact> facts = {};
    bool may_be_missing =
        false;  // a reader may leave it out: an empty bay, a socket without processor

    void tell(const Page& page, int line, std::initializer_list<Saying> fields);
    // The line that told a field; none: nobody did.
    std::optional<Spot> spot_of(const std::string& field) const;
    std::vector<Spot> spots_of(const std::string& field) const;
};

struct EventTold {
    std::string source;
    std::optional<std::string> time;
    std::string words;         // its text holds them
    std::vector<Spot> spots;   // it may be told more than once
    bool is_optional = false;  // of no interest: a reader may leave it out
};

struct Book {
    Book() = default;
    Book(const Book&) = delete;  // by_id leads into subjects
    Book& operator=(const Book&) = delete;

    std::deque<Subject> subjects = {};
    std::map<std::pair<std::string, std::string>, Subject*> by_id = {};
    std::map<std::string, EventTold> events = {};  // by an id of ours, in the order of the sources

    Subject& subject(const std::string& kind, const std::string& id,
                     const std::vector<std::string>& match);
    const Subject* find(const std::string& kind, const std::string& id) const;
};

}  // namespace truth
