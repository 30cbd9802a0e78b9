// Finds any of many texts in one pass, however many there are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qvhost::redact {

class Search {
public:
    // Texts that are shorter are not found.
    static constexpr std::size_t kShortest = 4;

    // `id` is handed back. Capital letters are none: both texts must be lower case.
    void add(std::string_view text, std::uint32_t id);
    bool empty() const { return by_text_.empty(); }

    // Calls take(at, size, id) for each text at each place, from left to right, at one place the longest first, until
    // it returns true, which means that this one is it: the search goes on behind it.
    using Take = std::function<bool(std::size_t at, std::size_t size, std::uint32_t id)>;
    void each(std::string_view text, const Take& take) const;

private:
    static constexpr unsigned kFilterBits = 18;
    static std::uint32_t beginning(const char* text);
    static std::uint32_t slot(std::uint32_t beginning);

    std::vector<std::uint64_t> filter_ = std::vector<std::uint64_t>((1U << kFilterBits) / 64);
    // The lengths of the texts that begin so, the longest first.
    std::unordered_map<std::uint32_t, std::vector<std::size_t>> lengths_;
    std::unordered_map<std::string_view, std::vector<std::uint32_t>> by_text_;
    std::vector<std::unique_ptr<const std::string>> texts_;
};

}  // namespace qvhost::redact
