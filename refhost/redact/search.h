// Finds any of many texts in one pass, however many there are.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qvhost::redact {

class Search {
public:
    // So many characters, at most 8, are looked at first. Shorter texts are not found.
    explicit Search(std::size_t beginning);

    // `id` is handed back. Capital letters are none: both texts must be lower case.
    void add(std::string_view text, std::uint32_t id);
    bool empty() const { return by_text_.empty(); }

    // Calls take(at, size, id) for each text at each place, from left to right, at one place the longest first, until
    // it returns true, which means that this one is it: the search goes on behind it.
    template <class Take>
    void each(std::string_view text, Take take) const {
        if (empty()) return;
        for (std::size_t at = 0; at + beginning_ <= text.size();) {
            const auto word = beginning_of(text.substr(at));
            at += may_begin(word) ? std::max<std::size_t>(taken_at(text, at, word, take), 1) : 1;
        }
    }

private:
    static constexpr unsigned kFilterBits = 18;
    using Word = std::uint64_t;

    Word beginning_of(std::string_view text) const {
        Word word = 0;
        if (text.size() >= sizeof word) {
            std::memcpy(&word, text.data(), sizeof word);
            return word & mask_;
        }
        std::memcpy(&word, text.data(), beginning_);
        return word;
    }
    static std::size_t slot(Word word) {
        return static_cast<std::size_t>((word * 0x9e3779b97f4a7c15U) >> (64 - kFilterBits));
    }
    bool may_begin(Word word) const {
        const auto bit = slot(word);
        return (filter_[bit / 64] >> (bit % 64) & 1U) != 0;
    }
    // Returns the size of what was taken; 0: nothing.
    template <class Take>
    std::size_t taken_at(std::string_view text, std::size_t at, Word word, Take& take) const {
        const auto lengths = lengths_.find(word);
        if (lengths == lengths_.end()) return 0;
        for (const auto size : lengths->second) {
            if (size > text.size() - at) continue;
            const auto found = by_text_.find(text.substr(at, size));
            if (found == by_text_.end()) continue;
            for (const auto id : found->second) {
                if (take(at, size, id)) return size;
            }
        }
        return 0;
    }

    std::size_t beginning_;
    Word mask_ = 0;  // of the bytes of a beginning
    std::vector<std::uint64_t> filter_ = std::vector<std::uint64_t>((1U << kFilterBits) / 64);
    // The lengths of the texts that begin so, the longest first.
    std::unordered_map<Word, std::vector<std::size_t>> lengths_;
    std::unordered_map<std::string_view, std::vector<std::uint32_t>> by_text_;
    std::vector<std::unique_ptr<const std::string>> texts_;
};

}  // namespace qvhost::redact
