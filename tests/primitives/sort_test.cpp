#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <random>

#include "tests/primitives/find_kernel.h"
#include "types/datatraits.h"

namespace qve::test {
namespace {

constexpr unsigned seed = 4711;

template <class T>
bool ascending(T a, T b) {
    if (is_null(a) || is_null(b)) return is_null(a) && !is_null(b);
    if constexpr (std::is_floating_point_v<T>) {
        if (std::isnan(a) || std::isnan(b)) return !std::isnan(a) && std::isnan(b);
    }
    return raw(a) < raw(b);
}

// What a data set is like: few or many values, sorted already, made to hurt the median of three.
enum class shape { random, few, sorted, reversed, organ_pipe, equal };

template <class T>
std::vector<T> keys_of(shape kind, unsigned n, std::mt19937_64& random) {
    std::vector<T> keys(n);
    for (unsigned i = 0; i < n; ++i) {
        uint64_t x = random();
        if (kind == shape::few) x %= 5;
        if (kind == shape::sorted) x = i;
        if (kind == shape::reversed) x = n - i;
        if (kind == shape::organ_pipe) x = i < n / 2 ? i : n - i;
        if (kind == shape::equal) x = 3;
        if constexpr (std::is_floating_point_v<T>) {
            keys[i] = static_cast<T>(static_cast<int64_t>(x) % 100000) / 8;
            if (kind == shape::random && x % 50 == 1) keys[i] = INFINITY;
        } else {
            keys[i] = from_raw<T>(static_cast<typename datatraits<T>::raw>(x));
        }
        if (kind == shape::random && x % 20 == 0) keys[i] = datatraits<T>::null;
    }
    return keys;
}

template <class T>
class Sort : public testing::Test {};
using key_types = testing::Types<char, short, int, long long, unsigned char, unsigned short, unsigned,
                                 unsigned long long, float, double, date, datetime, duration, usr1, usr2, usr4, usr8>;
TYPED_TEST_SUITE(Sort, key_types);

TYPED_TEST(Sort, OrdersKeysAndMovesTheIndexInStep) {
    using T = TypeParam;
    std::mt19937_64 random(seed);
    const std::wstring type(datatraits<T>::name);
    const auto up = find_kernel<sort_func>(primitive::klassSort, L"asc", {{L"ulng", L"col"}, {type, L"col"}});
    const auto down = find_kernel<sort_func>(primitive::klassSort, L"desc", {{L"ulng", L"col"}, {type, L"col"}});
    for (const shape kind :
         {shape::random, shape::few, shape::sorted, shape::reversed, shape::organ_pipe, shape::equal}) {
        for (const unsigned n : {0U, 1U, 2U, 16U, 17U, 18U, 500U, 30000U}) {
            for (const bool parallel : {false, true}) {
                if (parallel && n < 500) continue;
                const std::vector<T> keys = keys_of<T>(kind, n, random);
                std::vector<T> expected = keys;
                std::stable_sort(expected.begin(), expected.end(), ascending<T>);
                for (const bool descending : {false, true}) {
                    if (descending) std::reverse(expected.begin(), expected.end());
                    std::vector<T> sorted = keys;
                    std::vector<unsigned> index(n);
                    std::iota(index.begin(), index.end(), 0U);
                    unsigned char flags = parallel ? column_flags::parallel_sort : 0;
                    (descending ? down : up)(n, output_of(index), output_of(sorted, &flags));
                    std::vector<bool> seen(n);
                    for (unsigned i = 0; i < n; ++i) {
                        // Equal in order, and the index still tells where the key came from.
                        ASSERT_FALSE(ascending(sorted[i], expected[i]) || ascending(expected[i], sorted[i]))
                            << n << " keys of shape " << static_cast<int>(kind) << " at " << i;
                        ASSERT_EQ(std::memcmp(&sorted[i], &keys[index[i]], sizeof(T)), 0);
                        ASSERT_FALSE(seen[index[i]]);
                        seen[index[i]] = true;
                    }
                }
            }
        }
    }
}

TEST(SortKeys, NaNHaveAPlaceOfTheirOwn) {
    const auto sort = find_kernel<sort_func>(primitive::klassSort, L"asc", {{L"uchr", L"val"}, {L"double", L"col"}});
    std::mt19937 random(seed);
    std::vector<double> keys(1000);
    for (double& key : keys) {
        const unsigned kind = random() % 4;
        key = kind == 0 ? std::nan("") : kind == 1 ? datatraits<double>::null : static_cast<int>(random()) / 3.0;
    }
    sort(1000, output_column{nullptr, nullptr, 1, 0, nullptr}, output_of(keys));
    EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end(), ascending<double>));
}

TEST(SortKeys, EveryWidthOfIndexMoves) {
    const std::vector<short> keys{30, 10, 20};
    const auto check = [&]<class I>(const wchar_t* type, I) {
        const auto sort = find_kernel<sort_func>(primitive::klassSort, L"desc", {{type, L"col"}, {L"short", L"col"}});
        std::vector<short> sorted = keys;
        std::vector<I> index{0, 1, 2};
        sort(3, output_of(index), output_of(sorted));
        EXPECT_EQ(sorted, (std::vector<short>{30, 20, 10}));
        EXPECT_EQ(index, (std::vector<I>{0, 2, 1}));
    };
    check(L"uchr", uchr());
    check(L"usht", usht());
    check(L"ulng", ulng());
    check(L"oid", oid());
}

TEST(Merge, WritesOneBitAStepAndStopsWhereASideEnds) {
    const auto up = find_kernel<merge_func>(primitive::klassMerge, L"asc", {{L"long", L"col"}});
    const int null = datatraits<int>::null;
    const std::vector<int> a{null, 1, 5, 5, 9};
    const std::vector<int> b{0, 5, 6, 7, 8};
    std::vector<unsigned char> bits(2, 0xEE);
    const auto taken = up(16, output_of(bits), input_of(a), input_of(b));
    // null 0 1 5a 5a 5b 6 7 8, then `b` is exhausted.
    EXPECT_EQ(taken, (std::pair<unsigned, unsigned>{4, 5}));
    EXPECT_EQ(bits[0], 0b00011101);
    EXPECT_EQ(bits[1] & 1, 0);
    EXPECT_EQ(up(3, output_of(bits), input_of(a), input_of(b)), (std::pair<unsigned, unsigned>{2, 1}));
    const std::vector<int> none;
    EXPECT_EQ(up(3, output_of(bits), input_of(none), input_of(b)), (std::pair<unsigned, unsigned>{0, 0}));
}

TEST(Multimerge, MergesRunsPieceByPiece) {
    std::mt19937 random(seed);
    const auto up =
        find_kernel<multimerge_func>(primitive::klassMultimerge, L"asc", {{L"ulng", L"col"}, {L"date", L"col"}});
    for (const unsigned run_count : {1U, 2U, 3U, 15U, 16U}) {
        std::vector<std::vector<date>> keys(run_count);
        std::vector<std::vector<unsigned>> indexes(run_count);
        std::vector<date> expected;
        for (unsigned r = 0; r < run_count; ++r) {
            const unsigned size = r == 1 ? 0 : random() % 100;
            for (unsigned i = 0; i < size; ++i) {
                keys[r].push_back(random() % 9 ? date{static_cast<unsigned>(random() % 50)} : datatraits<date>::null);
            }
            std::sort(keys[r].begin(), keys[r].end(), ascending<date>);
            for (unsigned i = 0; i < size; ++i) indexes[r].push_back(r * 1000 + i);
            expected.insert(expected.end(), keys[r].begin(), keys[r].end());
        }
        std::sort(expected.begin(), expected.end(), ascending<date>);
        std::vector<unsigned> positions(run_count), ends;
        std::vector<const void*> key_data, index_data;
        for (unsigned r = 0; r < run_count; ++r) {
            static const date none{};  // a run without keys still is one
            key_data.push_back(keys[r].empty() ? &none : keys[r].data());
            index_data.push_back(indexes[r].data());
            ends.push_back(static_cast<unsigned>(keys[r].size()));
        }
        key_data.push_back(nullptr);
        std::vector<date> merged;
        std::vector<unsigned> origin;
        while (true) {
            std::vector<date> key_out(7);
            std::vector<unsigned> index_out(7);
            const unsigned count = up(7, output_of(index_out), output_of(key_out), positions.data(), ends.data(),
                                      nullptr, key_data.data(), index_data.data());
            if (count == 0) break;
            merged.insert(merged.end(), key_out.begin(), key_out.begin() + count);
            origin.insert(origin.end(), index_out.begin(), index_out.begin() + count);
        }
        EXPECT_EQ(merged, expected) << run_count;
        for (unsigned i = 0; i < merged.size(); ++i) EXPECT_EQ(merged[i], keys[origin[i] / 1000][origin[i] % 1000]);
    }
}

}  // namespace
}  // namespace qve::test
