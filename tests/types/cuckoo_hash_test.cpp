#include "types/cuckoo_hash.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

namespace qve {
namespace {

using small_hash = cuckoo_hash<unsigned, unsigned>;
using wide_hash = cuckoo_hash<unsigned, unsigned long long>;

TEST(CuckooHash, StartsAsLargeAsAsked) {
    EXPECT_EQ(small_hash().nbits(), 1U);
    for (const size_t expected : {1, 5, 6, 1000, 100000}) {
        const small_hash table(expected);
        EXPECT_GE(table.capacity() * 9, expected * 10);
        EXPECT_EQ(table.capacity(), size_t{3} << table.nbits());
    }
}

TEST(CuckooHash, KeyZeroAndAbsentValues) {
    small_hash table;
    EXPECT_EQ(table.lookup1(0), small_hash::absent);
    table.insert(0, small_hash::absent);
    EXPECT_EQ(table.size(), 0U);
    table.insert(0, 0);
    EXPECT_EQ(table.lookup1(0), 0U);
    EXPECT_EQ(table.size(), 1U);
}

// Against std::map, over growth, with keys that lie close together and keys that do not.
TEST(CuckooHash, AgreesWithAMap) {
    constexpr unsigned seed = 4711;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::map<unsigned, unsigned long long> expected;
    wide_hash table;
    for (unsigned i = 0; i < 150000; ++i) {
        const unsigned key = i % 3 ? random() : i;
        const unsigned long long value = random();
        if (expected.emplace(key, value).second) table.insert(key, value);
    }
    ASSERT_EQ(table.size(), expected.size());
    EXPECT_FALSE(table.HasCollisions());
    std::vector<unsigned> keys;
    for (const auto& [key, value] : expected) {
        ASSERT_EQ(table.lookup1(key), value);
        keys.push_back(key);
        keys.push_back(key + 1);
    }
    // The vector form, dense and selected.
    const auto n = static_cast<unsigned>(keys.size());
    std::vector<unsigned long long> values(n);
    std::vector<unsigned> misses(n + 1);
    const unsigned missed = table.lookup(n, misses.data(), values.data(), keys.data());
    unsigned expected_misses = 0;
    for (unsigned i = 0; i < n; ++i) {
        const auto found = expected.find(keys[i]);
        ASSERT_EQ(values[i], found == expected.end() ? wide_hash::absent : found->second);
        if (found == expected.end()) {
            ASSERT_EQ(misses[expected_misses++], i);
        }
    }
    EXPECT_EQ(missed, expected_misses);
    const unsigned selection[] = {0, 5, 9};
    std::vector<unsigned long long> some(10, 1);
    EXPECT_LE(table.lookup(3, misses.data(), some.data(), keys.data(), selection), 3U);
    EXPECT_EQ(some[5], values[5]);
    EXPECT_EQ(some[1], 1U);
}

// Keys that share all three places beyond what the places hold: they end in the stash, and are found there.
// A table beyond the caches is searched place by place; the values tell which keys are there.
TEST(CuckooHash, LargeTablesAreSearchedInTurn) {
    constexpr unsigned count = 6'000'000;
    constexpr unsigned present = 4'000'003;  // so many that some are pushed out of their place
    constexpr unsigned odd = 2654435761U;    // a product with it is another number for each number
    small_hash table(present);
    const size_t bytes = table.capacity() * sizeof(small_hash::slot);
    ASSERT_GT(bytes, size_t{1} << 25) << "the size from which on this is so";
    std::vector<unsigned> keys(count);
    for (unsigned i = 0; i < count; ++i) keys[i] = i * odd;
    for (unsigned i = 0; i < present; ++i) table.insert(keys[i], i);
    for (unsigned i = 0; i < present; i += 1000) table.insert(keys[i], i);  // again, which changes nothing
    EXPECT_EQ(table.size(), present);
    EXPECT_FALSE(table.HasCollisions());

    std::vector<unsigned> values(count, 7);
    std::vector<unsigned> misses(count + 1);
    ASSERT_EQ(table.lookup(count, misses.data(), values.data(), keys.data()), count - present);
    for (unsigned i = 0; i < count; ++i) {
        ASSERT_EQ(values[i], i < present ? i : small_hash::absent);
        if (i >= present) {
            ASSERT_EQ(misses[i - present], i);
        }
    }
    // The selection may be the list that receives the misses.
    unsigned selected = 0;
    for (unsigned i = 0; i < count; i += 3) misses[selected++] = i;
    const unsigned missed = table.lookup(selected, misses.data(), values.data(), keys.data(), misses.data());
    for (unsigned k = 0; k < missed; ++k) {
        ASSERT_GE(misses[k], present);
        ASSERT_EQ(misses[k], (present + 2) / 3 * 3 + 3 * k);
    }
    EXPECT_EQ(missed, (count - 1) / 3 + 1 - (present + 2) / 3);
}

TEST(CuckooHash, StashIsSearched) {
    small_hash table(3);  // six places
    ASSERT_EQ(table.nbits(), 1U);
    const auto places = [](unsigned key) {
        return std::tuple(key & 1, static_cast<unsigned>((key * 0xd1521cb7ULL) >> 16 & 1),
                          static_cast<unsigned>((key * 0x87a2e4d5ULL) >> 16 & 1));
    };
    std::vector<unsigned> keys;
    for (unsigned key = 1; keys.size() < 5; ++key) {
        if (places(key) == places(1)) keys.push_back(key);
    }
    for (unsigned i = 0; i < keys.size(); ++i) table.insert(keys[i], i);
    EXPECT_GT(table.stashed(), 0U);
    for (unsigned i = 0; i < keys.size(); ++i) EXPECT_EQ(table.lookup1(keys[i]), i);
    std::vector<unsigned> values(5);
    std::vector<unsigned> misses(6);
    EXPECT_EQ(table.lookup(5, misses.data(), values.data(), keys.data()), 0U);
    EXPECT_EQ(values, (std::vector<unsigned>{0, 1, 2, 3, 4}));
}

TEST(CuckooHash, CollisionsAreWalkedOnce) {
    small_hash table;
    for (const unsigned value : {10U, 20U, 20U, 30U, 10U}) table.insert(7, value);
    table.insert(8, 5);
    EXPECT_EQ(table.size(), 2U);
    EXPECT_EQ(table.collisions(), 2U);
    const unsigned keys[] = {8, 7};
    unsigned values[2];
    unsigned misses[3];
    EXPECT_EQ(table.lookup(2, misses, values, keys), 0U);
    std::set<unsigned> seen{values[1]};
    unsigned rows[] = {0, 1};
    unsigned found[2];
    unsigned count = 2;
    unsigned rounds = 0;
    for (unsigned hits = 0; (hits = table.collision_lookup(count, found, misses, values, keys, rows)) > 0; ++rounds) {
        ASSERT_EQ(hits, 1U);
        ASSERT_EQ(found[0], 1U);
        seen.insert(values[1]);
        std::copy(found, found + hits, rows);
        count = hits;
    }
    EXPECT_EQ(rounds, 2U);
    EXPECT_EQ(seen, (std::set<unsigned>{10, 20, 30}));
    EXPECT_EQ(misses[0], 1U);
    unsigned visited = 0;
    EXPECT_FALSE(table.find_if(7, [&](unsigned) { return ++visited > 3; }));
    EXPECT_EQ(visited, 3U);
}

// Keys without low bits share their first place; the other two must take them all, without growing out of bounds.
TEST(CuckooHash, KeysThatShareTheirLowBits) {
    small_hash table;
    constexpr unsigned count = 1 << 15;
    for (unsigned i = 0; i < count; ++i) table.insert(i << 17, i);
    EXPECT_EQ(table.size(), count);
    for (unsigned i = 0; i < count; ++i) ASSERT_EQ(table.lookup1(i << 17), i);
    EXPECT_LE(table.capacity(), size_t{count} * 16);
}

}  // namespace
}  // namespace qve
