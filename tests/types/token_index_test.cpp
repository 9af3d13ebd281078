#include "types/token_index.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

namespace qve {
namespace {

std::set<unsigned long long> tokens_of(const token_index& index, uint32_t hash) {
    std::set<unsigned long long> tokens;
    index.find_if(hash, [&](unsigned long long token) {
        tokens.insert(token);
        return false;
    });
    return tokens;
}

// Few hashes with many entries, the ends of the range, and tokens that outgrow the narrow slots half-way.
TEST(TokenIndex, HoldsWhatAMapHolds) {
    std::mt19937_64 random(7);
    for (const unsigned long long first : {0ULL, 0xFFFFFFF0ULL, 1ULL << 40}) {
        token_index index;
        std::map<uint32_t, std::set<unsigned long long>> expected;
        for (unsigned i = 0; i < 20000; ++i) {
            const auto hash = static_cast<uint32_t>(i % 7 == 0   ? random() % 50
                                                    : i % 7 == 1 ? ~(random() % 3)
                                                                 : random());
            index.insert(hash, first + i);
            expected[hash].insert(first + i);
        }
        EXPECT_EQ(index.size(), 20000u);
        for (const auto& [hash, tokens] : expected) ASSERT_EQ(tokens_of(index, hash), tokens) << hash;
        for (unsigned i = 0; i < 1000; ++i) {
            const auto hash = static_cast<uint32_t>(random());
            ASSERT_EQ(index.first(hash) != token_index::absent, expected.count(hash) > 0) << hash;
        }
    }
}

TEST(TokenIndex, NeverHoldsTheAbsentToken) {
    token_index index;
    index.insert(1, token_index::absent);
    EXPECT_EQ(index.size(), 0u);
    EXPECT_EQ(index.first(1), token_index::absent);
}

}  // namespace
}  // namespace qve
