#include "primitives/run_heads.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "primitives/vector_level.h"

namespace qve {
namespace {

template <class T>
void CheckRuns(double change, unsigned n, std::mt19937& random) {
    std::vector<T> cells(n);
    std::vector<unsigned> expected;
    for (unsigned i = 0; i < n; ++i) {
        const bool differs = i == 0 || std::uniform_real_distribution<>()(random) < change;
        // Only the highest byte tells the cells of two runs apart.
        cells[i] = i == 0 ? T{1} : static_cast<T>(cells[i - 1] ^ (T{differs} << (8 * sizeof(T) - 1)));
        if (differs) expected.push_back(i);
    }
    const auto runs = static_cast<unsigned>(expected.size());
    std::vector<unsigned> heads(n + 32);
    ASSERT_EQ(run_heads(n, cells.data(), sizeof(T), heads.data(), n), runs);
    heads.resize(runs);
    EXPECT_EQ(heads, expected);
    if (runs < 2) return;

    std::vector<unsigned> few(runs - 1 + 32);
    EXPECT_GT(run_heads(n, cells.data(), sizeof(T), few.data(), runs - 1), runs - 1);

    std::vector<T> spread(n, T{77});
    for (const unsigned head : expected) spread[head] = cells[head];
    spread_heads(n, spread.data(), sizeof(T), runs, expected.data());
    EXPECT_EQ(spread, cells);
}

TEST(RunHeads, FindsWhereRunsBeginAndGivesUpAboveTheLimit) {
    std::mt19937 random(3);
    for (const vector_level level : {vector_level::scalar, supported_vector_level()}) {
        set_vector_level(level);
        for (const unsigned n : {1u, 2u, 31u, 32u, 33u, 65u, 1000u}) {
            for (const double change : {0.0, 0.01, 0.3, 1.0}) {
                CheckRuns<unsigned char>(change, n, random);
                CheckRuns<unsigned short>(change, n, random);
                CheckRuns<unsigned>(change, n, random);
                CheckRuns<unsigned long long>(change, n, random);
            }
        }
    }
    set_vector_level(supported_vector_level());
    EXPECT_EQ(run_heads(0, nullptr, 4, nullptr, 0), 0u);
}

}  // namespace
}  // namespace qve
