// A small store as a collection leaves it, of the version that the program writes now.
#pragma once

#include <fstream>
#include <iterator>
#include <string>

#include "store/store.h"

namespace fuzz {

inline std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Makes it and returns its bytes.
inline std::string sound_store(const std::string& path) {
    using namespace qvhost;
    {
        Store store(path, Store::Mode::create);
        store.add_module("M", "Module");
        for (const char* table : {"T", "U", "EMPTY"}) store.add_table("M", table);
        store.set_layout("T", ColumnLayout{
                                  {"a", "b"},
                                  30, 2
        });
        store.set_layout("U", RowLayout{
                                  {"a", "b"},
                                  {30,  70 },
                                  false
        });
        store.set_meta("status", "complete");
        for (const char* value : {"text", "\x1b[31m\xff\n", ""}) {
            for (const char* table : {"T", "U"})
                store.add({
                    table, "name", -1, {{"a", "A", value}, {"b", "B", 7}}
                });
        }
        store.commit();
    }
    return content(path);
}

}  // namespace fuzz
