#include "compare/multiset.h"

#include <map>
#include <random>

#include <gtest/gtest.h>

namespace qvhost::compare {

namespace {

using List = std::vector<std::uint64_t>;

Hashes of(const List& list) {
    return [&list](const auto& take) {
        for (const auto one : list) take(one);
    };
}

// What the difference tells of `list`.
List told(const List& list, const std::function<void(const MultisetDifference::Walk&)>& each) {
    List all;
    each([&](const MultisetDifference::Told& is_told) {
        for (const auto one : list) {
            if (is_told(one)) all.push_back(one);
        }
    });
    return all;
}

struct Case {
    List from, to, added, gone;
};

const std::vector<Case> kCases = {
    {{}, {}, {}, {}},
    {{1, 2, 3}, {3, 2, 1}, {}, {}},
    {{}, {5, 5, 5}, {5, 5, 5}, {}},
    {{5, 5}, {5, 5, 5}, {5}, {}},
    {{5, 5, 5}, {5, 5}, {}, {5}},
    {{1, 2, 2, 9}, {4, 2, 9, 1}, {4}, {2}},
    {{1, 2}, {3, 4}, {3, 4}, {1, 2}},
};

TEST(Multiset, CountsWhatOneListAloneHas) {
    for (const auto& one : kCases) {
        MultisetDifference difference(of(one.from), of(one.to));
        for (int times = 0; times < 2; ++times) {
            EXPECT_EQ(told(one.to, [&](const auto& walk) { difference.each_new(walk); }),
                      one.added);
            EXPECT_EQ(told(one.from, [&](const auto& walk) { difference.each_gone(walk); }),
                      one.gone);
        }
    }
}

TEST(Multiset, SaysWhenNothingMoreIsToBeTold) {
    const List from = {1, 2}, to = {3, 3, 1};
    MultisetDifference difference(of(from), of(to));
    difference.each_new([&](const MultisetDifference::Told& is_told) {
        EXPECT_FALSE(is_told.is_done());
        EXPECT_TRUE(is_told(3));
        EXPECT_FALSE(is_told.is_done());
        EXPECT_TRUE(is_told(3));
        EXPECT_TRUE(is_told.is_done());
    });
}

// However little may be held at a time, each item is told once.
TEST(Multiset, ComparesLongListsInParts) {
    std::mt19937_64 random(7);
    List from, to;
    for (int i = 0; i < 3000; ++i) {
        const auto one = random();
        if (i % 3 != 0) from.push_back(one);
        if (i % 5 != 0) to.push_back(one);
        if (i % 7 == 0) to.push_back(one);
    }
    std::map<std::uint64_t, int> balance;
    for (const auto one : to) ++balance[one];
    for (const auto one : from) --balance[one];
    for (const std::size_t most : {4000u, 900u, 100u, 1u}) {
        auto left = balance;
        MultisetDifference difference(of(from), of(to), most);
        for (const auto one : told(to, [&](const auto& walk) { difference.each_new(walk); }))
            --left[one];
        for (const auto one : told(from, [&](const auto& walk) { difference.each_gone(walk); }))
            ++left[one];
        for (const auto& [one, count] : left) ASSERT_EQ(count, 0) << most << " " << one;
    }
}

// More equal items than may be held do not keep it from ending.
TEST(Multiset, EndsWhereMostOfAListIsEqual) {
    const List from(1000, 77), to(1003, 77);
    MultisetDifference difference(of(from), of(to), 10);
    EXPECT_EQ(told(to, [&](const auto& walk) { difference.each_new(walk); }), List(3, 77));
    EXPECT_EQ(told(from, [&](const auto& walk) { difference.each_gone(walk); }), List());
}

}  // namespace

}  // namespace qvhost::compare
