#include "types/hashfunc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace qve {
namespace {

/// The hash as it was published, a byte at a time.
uint32_t Published(const std::string& text, uint32_t seed) {
    uint32_t a = 0x9E3779B9, b = a, c = seed;
    const auto mix = [&] {
        const unsigned shifts[] = {13, 8, 13, 12, 16, 5, 3, 10, 15};
        for (unsigned i = 0; i < 9; i += 3) {
            a = (a - b - c) ^ c >> shifts[i];
            b = (b - c - a) ^ a << shifts[i + 1];
            c = (c - a - b) ^ b >> shifts[i + 2];
        }
    };
    const auto byte = [&](size_t i) { return static_cast<uint32_t>(static_cast<unsigned char>(text[i])); };
    size_t at = 0;
    for (; text.size() - at >= 12; at += 12) {
        for (size_t i = 0; i < 4; ++i) {
            a += byte(at + i) << 8 * i;
            b += byte(at + 4 + i) << 8 * i;
            c += byte(at + 8 + i) << 8 * i;
        }
        mix();
    }
    c += static_cast<uint32_t>(text.size());
    for (size_t i = 0; at + i < text.size(); ++i) {
        if (i < 4) a += byte(at + i) << 8 * i;
        if (i >= 4 && i < 8) b += byte(at + i) << 8 * (i - 4);
        if (i >= 8) c += byte(at + i) << 8 * (i - 7);
    }
    mix();
    return c;
}

TEST(HashFunc, IsThePublishedOneOfOneTextAndOfMany) {
    std::mt19937 random(3);
    std::vector<std::string> texts;
    for (size_t length = 0; length < 70; ++length) {
        std::string& text = texts.emplace_back();
        for (size_t i = 0; i < length; ++i) text.push_back(static_cast<char>(random()));
    }
    std::shuffle(texts.begin(), texts.end(), random);
    const std::vector<std::string_view> views(texts.begin(), texts.end());
    for (const unsigned seed : {hash_seed, 0U, 12345U}) {
        std::vector<unsigned> hashes(texts.size());
        hashfunc(views.size(), views.data(), hashes.data(), seed);
        for (size_t i = 0; i < texts.size(); ++i) {
            EXPECT_EQ(hashfunc(texts[i].data(), texts[i].size(), seed), Published(texts[i], seed)) << texts[i].size();
            EXPECT_EQ(hashes[i], Published(texts[i], seed)) << texts[i].size();
        }
    }
}

}  // namespace
}  // namespace qve
