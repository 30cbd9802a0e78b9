// A hash of texts under a key that changes from run to run: nobody can make two texts that have the same one.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace qvhost::compare {

// SipHash-2-4 (Aumasson and Bernstein).
class KeyedHash {
public:
    using Key = std::array<std::uint64_t, 2>;
    KeyedHash();  // a random key
    explicit KeyedHash(const Key& key) : key_(key) {}

    std::uint64_t operator()(std::string_view text) const;

private:
    Key key_{};
};

}  // namespace qvhost::compare
