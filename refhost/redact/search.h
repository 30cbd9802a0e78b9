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
        std::size_t from = 0;  // what stands before it was looked at
        each_sample(text, [&](std::size_t at) {
            from = std::max(from, at - std::min(at, stride_ - 1));
            const auto last = std::min(at + 1, text.size() - std::min(text.size(), beginning_ - 1));
            while (from < last) {
                const auto word = word_at(text, from, beginning_);
                from += may_begin(word) ? std::max<std::size_t>(taken_at(text, from, word, take), 1)
                                        : 1;
            }
            return true;
        });
    }

    // False: none of the texts is in it.
    bool may_hold(std::string_view text) const {
        bool may = false;
        each_sample(text, [&](std::size_t) { return !(may = true); });
        return may;
    }

private:
    static constexpr unsigned kFilterBits = 18;
    using Word = std::uint64_t;
    using Filter = std::vector<std::uint64_t>;

    static Word mask_of(std::size_t bytes) {
        return bytes < sizeof(Word) ? (Word{1} << (8 * bytes)) - 1 : ~Word{0};
    }
    static Word word_at(std::string_view text, std::size_t at, std::size_t bytes) {
        Word word = 0;
        if (text.size() - at >= sizeof word) {
            std::memcpy(&word, text.data() + at, sizeof word);
            return word & mask_of(bytes);
        }
        std::memcpy(&word, text.data() + at, bytes);
        return word;
    }
    static std::size_t slot(Word word) {
        return static_cast<std::size_t>((word * 0x9e3779b97f4a7c15U) >> (64 - kFilterBits));
    }
    static bool has(const Filter& filter, Word word) {
        const auto bit = slot(word);
        return (filter[bit / 64] >> (bit % 64) & 1U) != 0;
    }
    static void note(Filter& filter, Word word) {
        filter[slot(word) / 64] |= std::uint64_t{1} << (slot(word) % 64);
    }
    bool may_begin(Word word) const { return has(beginnings_, word); }

    // Only every other place, or fourth, is looked at: each beginning has so many samples that one of them is there.
    // Calls take(at) for each that is of a beginning, until it returns false.
    template <class Take>
    void each_sample(std::string_view text, Take take) const {
        if (empty()) return;
        const auto mask = mask_of(sample_);
        std::size_t at = 0;
        for (; at + sizeof(Word) <= text.size(); at += stride_) {
            Word word = 0;
            std::memcpy(&word, text.data() + at, sizeof word);
            if (has(samples_, word & mask) && !take(at)) return;
        }
        for (; at + sample_ <= text.size(); at += stride_) {
            if (has(samples_, word_at(text, at, sample_)) && !take(at)) return;
        }
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

    std::size_t beginning_, stride_, sample_;
    Filter beginnings_ = Filter((1U << kFilterBits) / 64), samples_ = beginnings_;
    // The lengths of the texts that begin so, the longest first.
    std::unordered_map<Word, std::vector<std::size_t>> lengths_;
    std::unordered_map<std::string_view, std::vector<std::uint32_t>> by_text_;
    std::vector<std::unique_ptr<const std::string>> texts_;
};

}  // namespace qvhost::redact
