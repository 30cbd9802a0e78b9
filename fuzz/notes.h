// Records as the fake host notes them, for naive readers to compare with.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "fakehost.h"

namespace fuzz {

// A row that is refilled and added again, as a module's record is.
class Row {
public:
    explicit Row(std::string head) : head_(std::move(head)) {}

    void set(const std::string& id, const std::string& value) {
        for (auto& [known, old] : properties_) {
            if (known == id) {
                old = value;
                return;
            }
        }
        properties_.emplace_back(id, value);
    }

    void add(std::string& notes) const {
        notes += "add " + head_ + " -1:";
        const char* separator = " ";
        for (const auto& [id, value] : properties_) {
            notes += separator + id + " \"" + id + "\"=\"" + fakehost::escaped(value) + "\"";
            separator = ", ";
        }
        notes += "\n";
    }

private:
    std::string head_;
    std::vector<std::pair<std::string, std::string>> properties_;
};

// The records noted since the last call, one a line.
inline std::string noted_records() {
    std::string records;
    for (const auto& note : fakehost::notes) {
        if (note.starts_with("add ")) records += note + "\n";
    }
    fakehost::notes.clear();
    return records;
}

}  // namespace fuzz
