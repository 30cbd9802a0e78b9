#include "text/keyed_hash.h"

#include <string>

#include <gtest/gtest.h>

namespace qvhost::compare {

namespace {

// The test vectors of the paper that describes SipHash: the key 00 01 ... 0f, the texts "", 00, 00 01, ...
TEST(KeyedHash, GivesWhatItsInventorsPublished) {
    const KeyedHash hash({0x0706050403020100, 0x0f0e0d0c0b0a0908});
    std::string text;
    const auto of_length = [&](std::size_t length) {
        text.clear();
        for (std::size_t i = 0; i < length; ++i) text += static_cast<char>(i);
        return hash(text);
    };
    EXPECT_EQ(of_length(0), 0x726fdb47dd0e0e31);
    EXPECT_EQ(of_length(1), 0x74f839c593dc67fd);
    EXPECT_EQ(of_length(8), 0x93f5f5799a932462);
    EXPECT_EQ(of_length(15), 0xa129ca6149be45e5);
}

TEST(KeyedHash, HasAKeyOfItsOwn) {
    const KeyedHash one, other;
    EXPECT_EQ(one("text"), one("text"));
    EXPECT_NE(one("text"), other("text"));
}

}  // namespace

}  // namespace qvhost::compare
