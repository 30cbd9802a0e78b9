#include "random.h"

#include <string_view>

namespace truth {

// Steele, Lea and Flood: "Fast splittable pseudorandom number generators" (2014).
std::uint64_t Random::next() {
    state_ += 0x9e3779b97f4a7c15;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
    return mixed ^ (mixed >> 31);
}

int Random::below(int limit) {
    return static_cast<int>(next() % static_cast<std::uint64_t>(limit));
}

int Random::between(int least, int most) { return least + below(most - least + 1); }

bool Random::chance(int percent) { return below(100) < percent; }

namespace {

std::string from(Random& random, std::string_view letters, int count) {
    std::string text;
    for (int made = 0; made < count; ++made) text += random.pick(letters);
    return text;
}

}  // namespace

// The order in which a sum draws its numbers would be the compiler's.
std::string Random::digits(int count) {
    const auto first = from(*this, "123456789", 1);
    return first + from(*this, "0123456789", count - 1);
}

std::string Random::hex(int count) { return from(*this, "0123456789abcdef", count); }

std::string Random::capitals(int count) {
    const auto first = from(*this, "ABCDEFGHJKLMNPQRSTUVWXYZ", 1);
    return first + from(*this, "0123456789ABCDEFGHJKLMNPQRSTUVWXYZ", count - 1);
}

}  // namespace truth
