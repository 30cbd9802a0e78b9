// A hash of texts. Under a key that changes from run to run nobody can make two texts that have the same one.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <random>
#include <string_view>

namespace qvhost {

// SipHash-2-4 (Aumasson and Bernstein).
class KeyedHash {
public:
    using Key = std::array<std::uint64_t, 2>;

    // A random key.
    KeyedHash() {
        std::random_device random;
        for (auto& half : key_) half = (std::uint64_t{random()} << 32) | random();
    }
    explicit constexpr KeyedHash(const Key& key) : key_(key) {}

    std::uint64_t operator()(std::string_view text) const {
        State state{key_[0] ^ 0x736f6d6570736575, key_[1] ^ 0x646f72616e646f6d,
                    key_[0] ^ 0x6c7967656e657261, key_[1] ^ 0x7465646279746573};
        const auto size = std::uint64_t{text.size()};
        for (; text.size() >= 8; text.remove_prefix(8)) state.mix(word_at(text.data()));
        char rest[8] = {};
        text.copy(rest, text.size());
        state.mix(word_at(rest) | (size << 56));
        state.c ^= 0xff;
        for (int i = 0; i < 4; ++i) state.round();
        return state.a ^ state.b ^ state.c ^ state.d;
    }

private:
    struct State {
        std::uint64_t a, b, c, d;

        void round() {
            a += b;
            b = std::rotl(b, 13) ^ a;
            a = std::rotl(a, 32);
            c += d;
            d = std::rotl(d, 16) ^ c;
            a += d;
            d = std::rotl(d, 21) ^ a;
            c += b;
            b = std::rotl(b, 17) ^ c;
            c = std::rotl(c, 32);
        }

        void mix(std::uint64_t word) {
            d ^= word;
            round();
            round();
            a ^= word;
        }
    };

    // Eight bytes, the first one the lowest.
    static std::uint64_t word_at(const char* bytes) {
        std::uint64_t word = 0;
        if constexpr (std::endian::native == std::endian::little) {
            std::memcpy(&word, bytes, sizeof word);
        } else {
            for (int i = 7; i >= 0; --i) word = (word << 8) | static_cast<unsigned char>(bytes[i]);
        }
        return word;
    }

    Key key_{};
};

}  // namespace qvhost
