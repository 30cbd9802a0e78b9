// Random choices that are the same for a seed on every machine and with every standard library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace truth {

class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next();
    int below(int limit);              // 0 to limit - 1
    int between(int least, int most);  // both included
    bool chance(int percent);          // true that often
    std::string digits(int count);     // the first one is no zero
    std::string hex(int count);        // lower case
    std::string capitals(int count);   // letters and digits, as in serial numbers

    template <class List>
    const auto& pick(const List& list) {
        return list[static_cast<std::size_t>(below(static_cast<int>(std::size(list))))];
    }
    template <class One>
    void shuffle(std::vector<One>& list) {
        for (std::size_t left = list.size(); left > 1; --left)
            std::swap(list[left - 1],
                      list[static_cast<std::size_t>(below(static_cast<int>(left)))]);
    }

private:
    std::uint64_t state_;
};

}  // namespace truth
