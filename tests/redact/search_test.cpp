// Many texts are found in one pass, as if each were looked for at each place.
#include "redact/search.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "host/place.h"

namespace qvhost::redact {

namespace {

using Hits = std::vector<std::tuple<std::size_t, std::size_t, std::uint32_t>>;

// Every other text that is found is taken, so that the search goes on both behind it and within it.
bool is_taken(std::uint32_t id) { return id % 2 == 0; }

Hits found(const std::vector<std::string>& texts, std::size_t beginning, const std::string& in) {
    Search search(beginning);
    for (std::uint32_t i = 0; i < texts.size(); ++i) search.add(texts[i], i);
    Hits hits;
    search.each(in, [&](std::size_t at, std::size_t size, std::uint32_t id) {
        hits.emplace_back(at, size, id);
        return is_taken(id);
    });
    EXPECT_TRUE(hits.empty() || search.may_hold(in)) << in;
    return hits;
}

// The same, place by place.
Hits expected(const std::vector<std::string>& texts, std::size_t beginning, const std::string& in) {
    Hits hits;
    for (std::size_t at = 0; at < in.size();) {
        std::size_t taken = 0;
        for (auto size = in.size() - at; size >= beginning && taken == 0; --size) {
            for (std::uint32_t i = 0; i < texts.size() && taken == 0; ++i) {
                if (in.compare(at, size, texts[i]) != 0) continue;
                hits.emplace_back(at, size, i);
                if (is_taken(i)) taken = size;
            }
        }
        at += taken > 0 ? taken : 1;
    }
    return hits;
}

TEST(Search, FindsWhatIsThere) {
    std::mt19937 random(static_cast<unsigned>(test::first_random()));
    const auto any_text = [&](std::size_t most) {
        std::string text;
        for (auto size = random() % (most + 1); size > 0; --size)
            text += static_cast<char>('a' + random() % 2);
        return text;
    };
    std::size_t hits = 0;
    for (int round = 0; round < 1000; ++round) {
        std::vector<std::string> texts;
        for (int i = 0; i < 8; ++i) texts.push_back(any_text(12));
        const auto in = any_text(60);
        for (const std::size_t beginning : {4U, 5U, 8U}) {
            const auto all = expected(texts, beginning, in);
            ASSERT_EQ(found(texts, beginning, in), all) << in;
            hits += all.size();
        }
    }
    EXPECT_GT(hits, 1000U);
}

}  // namespace

}  // namespace qvhost::redact
