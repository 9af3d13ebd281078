#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "primitives/vector_level.h"
#include "tests/primitives/find_kernel.h"
#include "types/datatraits.h"

namespace qve::test {
namespace {

struct Rows {
    std::vector<double> values;
    std::vector<unsigned> groups;
    std::vector<unsigned> selected;
};

Rows RandomRows(unsigned n, unsigned groups, bool nulls, std::mt19937& random) {
    Rows rows;
    for (unsigned i = 0; i < n; ++i) {
        const bool null = nulls && random() % 3 == 0;
        rows.values.push_back(null ? datatraits<double>::null : std::uniform_real_distribution<>(-1, 1)(random));
        rows.groups.push_back(random() % groups);
        if (random() % 2) rows.selected.push_back(i);
    }
    return rows;
}

// However many groups there are, which decides how rows are walked: the sums are right, and the same bit for bit with
// and without vector instructions; a group without values stays null.
TEST(GroupSums, AreRightForAnyNumberOfGroups) {
    const auto sum =
        find_kernel<binary_func>(primitive::klassAggregate, L"sum", {{L"double", L"col"}, {L"ulng", L"col"}});
    const auto count = find_kernel<unary_func>(primitive::klassAggregate, L"countstar", {{L"ulng", L"col"}});
    std::mt19937 random(11);
    for (const unsigned groups : {1u, 2u, 4u, 5u, 8u, 9u, 63u, 64u, 65u, 300u}) {
        for (const unsigned n : {1u, 7u, 64u, 71u, 1000u}) {
            for (const bool nulls : {false, true}) {
                for (const bool selects : {false, true}) {
                    const Rows rows = RandomRows(n, groups, nulls, random);
                    const unsigned* sel = selects ? rows.selected.data() : nullptr;
                    const auto taken = selects ? static_cast<unsigned>(rows.selected.size()) : n;
                    std::vector<double> expected(groups);
                    std::vector<long long> seen(groups), present(groups);
                    for (unsigned k = 0; k < taken; ++k) {
                        const unsigned i = selects ? rows.selected[k] : k;
                        ++seen[rows.groups[i]];
                        if (is_null(rows.values[i])) continue;
                        ++present[rows.groups[i]];
                        expected[rows.groups[i]] += rows.values[i];
                    }
                    input_column values = input_of(rows.values);
                    if (!nulls) values.flags |= column_flags::not_null;
                    std::vector<double> scalar;
                    for (const vector_level level : {vector_level::scalar, supported_vector_level()}) {
                        set_vector_level(level);
                        std::vector<double> sums(groups, datatraits<double>::null);
                        std::vector<long long> counts(groups);
                        sum(taken, output_of(sums), values, input_of(rows.groups), sel);
                        count(taken, output_of(counts), input_of(rows.groups), sel);
                        EXPECT_EQ(counts, seen);
                        for (unsigned g = 0; g < groups; ++g) {
                            ASSERT_EQ(is_null(sums[g]), present[g] == 0) << g << " of " << groups;
                            if (present[g] == 0) continue;
                            ASSERT_NEAR(sums[g], expected[g], 1e-12) << g << " of " << groups;
                        }
                        // A further page, on totals of which some are null, or none.
                        const std::vector<double> once = sums;
                        sum(taken, output_of(sums), values, input_of(rows.groups), sel);
                        for (unsigned g = 0; g < groups; ++g) {
                            ASSERT_EQ(is_null(sums[g]), present[g] == 0) << g << " of " << groups;
                            if (present[g] > 0) {
                                ASSERT_NEAR(sums[g], 2 * once[g], 1e-12);
                            }
                        }
                        if (scalar.empty()) scalar = sums;
                        ASSERT_EQ(std::memcmp(scalar.data(), sums.data(), groups * sizeof(double)), 0);
                    }
                }
            }
        }
    }
    set_vector_level(supported_vector_level());
}

}  // namespace
}  // namespace qve::test
