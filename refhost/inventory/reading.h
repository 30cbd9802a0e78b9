// What a reader makes of one capture: the entities it found and how much it understood.
//
// A reader is a function void(CaptureLines&, Reading&). It goes by headings and names, never by counted
// columns, and says what it could not read; it never throws for what a tool printed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "inventory/inventory.h"

namespace qvhost::inventory {

// Something that should stand in a capture and does not, or that cannot be read: a row that does not
// fit its heading, fewer rows than announced, a table without its end. A capture with a gap was not
// read whole, and nothing that rests on it may be called well.
struct Gap {
    std::int64_t line = 0;
    std::string words;  // "3 virtual drives announced, 2 read"
};

struct CaptureGap {
    std::string capture;
    Gap gap;
};

// What the tool itself called an error: "Description = Un-supported command".
struct ToolError {
    std::int64_t line = 0;
    std::string words;
};

// The first few, and no more, however much a capture gives cause for: nobody reads the others.
template <class One>
class FirstFew {
public:
    static constexpr std::size_t kMost = 100;

    void push_back(One one) {
        if (few_.size() < kMost) few_.push_back(std::move(one));
    }
    // Stands before the others.
    void push_front(One one) { few_.insert(few_.begin(), std::move(one)); }

    bool empty() const { return few_.empty(); }
    std::size_t size() const { return few_.size(); }
    const One& front() const { return few_.front(); }
    const One& operator[](std::size_t at) const { return few_[at]; }
    auto begin() const { return few_.begin(); }
    auto end() const { return few_.end(); }

    template <class Test>
    std::size_t erase_if(Test test) {
        return std::erase_if(few_, test);
    }

private:
    std::vector<One> few_;
};

struct Understanding {
    std::int64_t lines = 0;
    std::int64_t not_understood = 0;  // lines that no reader knows
    std::int64_t first_not_understood = 0;
    FirstFew<Gap> gaps;
    FirstFew<ToolError> errors;

    bool whole() const { return lines > 0 && gaps.empty() && errors.empty(); }
    void gap(std::int64_t line, std::string words) { gaps.push_back({line, std::move(words)}); }
    void unknown_line(std::int64_t number) {
        if (not_understood++ == 0) first_not_understood = number;
    }
};

using EventSink = std::function<void(Event&&)>;

struct Reading {
    std::string capture;  // the file's name, for places
    Inventory& found;
    EventSink event;
    Understanding how = {};

    Place at(std::int64_t line) const { return {capture, line}; }

    template <class Entity>
    Entity entity_at(std::int64_t line) const {
        Entity entity;
        entity.place = at(line);
        return entity;
    }
};

}  // namespace qvhost::inventory
