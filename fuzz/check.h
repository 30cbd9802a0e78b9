// What every fuzzer is made of. A promise that does not hold ends the process, which is how libFuzzer
// and the replay learn of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

inline std::string_view text_of(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

inline void expect(bool holds, const char* promise) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}

// Both as they are; the difference is for the reader's own tools.
inline void expect_same(std::string_view found, std::string_view wanted, const char* promise) {
    if (found == wanted) return;
    const auto print = [](const char* head, std::string_view text) {
        std::fprintf(stderr, "--- %s\n%.*s\n", head, static_cast<int>(text.size()), text.data());
    };
    print("found", found);
    print("wanted", wanted);
    expect(false, promise);
}

// Cuts an input into the numbers and texts that a fuzzer needs. An input that is at its end gives
// zeros and empty texts.
class Pieces {
public:
    explicit Pieces(std::string_view input) : rest_(input) {}

    bool at_end() const { return rest_.empty(); }

    unsigned byte() {
        if (rest_.empty()) return 0;
        const auto value = static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(1);
        return value;
    }

    std::uint32_t number() {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) value = value << 8 | byte();
        return value;
    }

    std::string_view take(std::size_t size) {
        const auto text = rest_.substr(0, size);
        rest_.remove_prefix(text.size());
        return text;
    }

    // A text that ends at the next `end`, or where the input does.
    std::string_view until(char end) {
        const auto text = rest_.substr(0, rest_.find(end));
        rest_.remove_prefix(text.size() < rest_.size() ? text.size() + 1 : text.size());
        return text;
    }

    std::string_view rest() const { return rest_; }

private:
    std::string_view rest_;
};

}  // namespace fuzz
