#include <gtest/gtest.h>

#include <bit>
#include <cmath>

#include "tests/primitives/find_kernel.h"
#include "types/atom_hash.h"
#include "types/datatraits.h"

namespace qve::test {
namespace {

unsigned mixed32(unsigned x) {
    unsigned h = (x << 15) + ~x;
    h = (h ^ (h >> 12)) * 5;
    h = (h ^ (h >> 4)) * 2057;
    return h ^ (h >> 16);
}
unsigned mixed64(unsigned long long k) {
    k = (k << 18) + ~k;
    k = (k ^ (k >> 31)) * 21;
    k = (k ^ (k >> 11)) * 65;
    return static_cast<unsigned>(k ^ (k >> 22));
}

TEST(Hash, MixesTheExtendedValueAndFoldsFurtherColumns) {
    const auto of_short = find_kernel<unary_func>(primitive::klassMap, L"hash", {{L"short", L"col"}});
    const auto fold_double = find_kernel<unary_func>(primitive::klassMap, L"rehash", {{L"double", L"col"}});
    const auto fold_token = find_kernel<unary_func>(primitive::klassMap, L"rehash", {{L"usr2", L"col"}});
    const std::vector<short> first{0, 1, -1, -32768, 1234};
    const std::vector<double> second{0.0, -0.0, datatraits<double>::null, 1.5, INFINITY};
    const std::vector<unsigned short> third{1, 2, 3, 0xFFFF, 5};
    std::vector<unsigned> hashes(5);
    of_short(5, output_of(hashes), input_of(first), nullptr);
    std::vector<unsigned> expected(5);
    for (unsigned i = 0; i < 5; ++i) {
        expected[i] = mixed32(static_cast<unsigned>(static_cast<int>(first[i])));
        EXPECT_EQ(hashes[i], expected[i]) << i;
    }
    const std::vector<unsigned> selected{1, 2, 3};
    fold_double(3, output_of(hashes), input_of(second), selected.data());
    for (const unsigned i : selected) {
        const unsigned next = mixed64(std::bit_cast<unsigned long long>(second[i]));
        expected[i] = mixed64(next | static_cast<unsigned long long>(expected[i]) << 32);
    }
    EXPECT_EQ(hashes, expected);
    fold_token(5, output_of(hashes), input_of(third), nullptr);
    for (unsigned i = 0; i < 5; ++i) {
        const unsigned number = third[i] == 0xFFFF ? ~0U : third[i];
        expected[i] = mixed64(mixed32(number) | static_cast<unsigned long long>(expected[i]) << 32);
    }
    EXPECT_EQ(hashes, expected);
}

TEST(Radix, PacksKeysBesideEachOther) {
    const auto radixhash = find_kernel<unary_func>(primitive::klassMap, L"radixhash", {{L"short", L"col"}});
    const auto radixgrp = find_kernel<unary_func>(primitive::klassMap, L"radixgrp", {{L"tiny", L"col"}});
    const std::vector<short> a{-1, 2, datatraits<short>::null};
    const std::vector<char> b{-1, 5, datatraits<char>::null};
    std::vector<unsigned> out(3);
    radixhash(3, output_of(out), input_of(a), nullptr);
    EXPECT_EQ(out, (std::vector<unsigned>{0xFFFF, 2, 0x8000}));
    radixgrp(3, output_of(out), input_of(b), nullptr);
    EXPECT_EQ(out, (std::vector<unsigned>{0xFFFFFF, 0x205, 0x800080}));
}

TEST(Check, ComparesKeysBitForBit) {
    const primitive::argument_list arguments{{L"double", L"col"}, {L"double", L"col"}, {L"ulng", L"col"}};
    const auto check = find_kernel<ternary_func>(primitive::klassAggregate, L"check", arguments);
    const auto recheck = find_kernel<ternary_func>(primitive::klassAggregate, L"recheck", arguments);
    const double null = datatraits<double>::null;
    const std::vector<double> keys{1.0, null, std::nan(""), 2.0, 3.0};
    const std::vector<double> table{1.0, null, std::nan(""), 2.5};
    const std::vector<unsigned> groups{0, 1, 2, 3, 0};
    std::vector<bit> out(5, bit{7});
    check(5, output_of(out), input_of(keys), input_of(table), input_of(groups), nullptr);
    const auto values = [&] {
        std::vector<int> result;
        for (const bit b : out) result.push_back(b.value);
        return result;
    };
    EXPECT_EQ(values(), (std::vector<int>{0, 0, 0, 1, 1}));
    // A second key column only adds differences; rows outside the selection stay.
    const std::vector<double> more{9.0, null, 1.0, 2.5, 1.0};
    const std::vector<unsigned> selected{0, 1, 3, 4};
    recheck(4, output_of(out), input_of(more), input_of(table), input_of(groups), selected.data());
    EXPECT_EQ(values(), (std::vector<int>{1, 0, 0, 1, 1}));
}

TEST(Run, MarksWhereAKeyChangesInSelectionOrder) {
    const auto run = find_kernel<unary_func>(primitive::klassMap, L"run", {{L"usht", L"col"}});
    const auto rerun = find_kernel<unary_func>(primitive::klassMap, L"rerun", {{L"uchr", L"col"}});
    const std::vector<unsigned short> first{5, 5, 6, 6, 6, 5};
    const std::vector<unsigned char> second{1, 2, 2, 2, 3, 3};
    std::vector<unsigned char> heads(6, 42);
    run(6, output_of(heads), input_of(first), nullptr);
    EXPECT_EQ(heads, (std::vector<unsigned char>{42, 0, 1, 0, 0, 1}));
    rerun(6, output_of(heads), input_of(second), nullptr);
    EXPECT_EQ(heads, (std::vector<unsigned char>{42, 1, 1, 0, 1, 1}));
    const std::vector<unsigned> selected{0, 2, 4, 5};
    std::fill(heads.begin(), heads.end(), 42);
    run(4, output_of(heads), input_of(first), selected.data());
    EXPECT_EQ(heads, (std::vector<unsigned char>{42, 42, 1, 42, 0, 1}));
    EXPECT_EQ(run(0, output_of(heads), input_of(first), nullptr), 0U);
}

TEST(Count, StarCountsRowsAndAddsToTheAccumulator) {
    const auto countstar = find_kernel<unary_func>(primitive::klassAggregate, L"countstar", {{L"ulng", L"col"}});
    const std::vector<unsigned> groups{1, 1, 0, 1};
    std::vector<bigint> counts{10, 20};
    unsigned char flags = 0;
    countstar(4, output_of(counts, &flags), input_of(groups), nullptr);
    EXPECT_EQ(counts, (std::vector<bigint>{11, 23}));
    countstar(4, output_of(counts, &flags), input_of(groups, column_flags::constant), nullptr);
    EXPECT_EQ(counts, (std::vector<bigint>{11, 27}));
    EXPECT_TRUE(flags & column_flags::not_null);
}

TEST(Anyif, TakesAValueOnlyWhereTheConditionIsTrue) {
    const auto anyif = find_kernel<ternary_func>(primitive::klassAggregate, L"anyif",
                                                 {{L"long", L"col"}, {L"bit", L"col"}, {L"ulng", L"col"}});
    const std::vector<int> values{1, 2, 3, 4};
    const std::vector<bit> conditions{{0}, {128}, {1}, {1}};
    const std::vector<unsigned> groups{0, 1, 0, 0};
    std::vector<int> out(2, datatraits<int>::null);
    anyif(4, output_of(out), input_of(values), input_of(conditions), input_of(groups), nullptr);
    EXPECT_EQ(out, (std::vector<int>{3, datatraits<int>::null}));
}

TEST(Sum, ManyGroupsAndLongVectorsAddUpExactly) {
    const auto sum =
        find_kernel<binary_func>(primitive::klassAggregate, L"sum", {{L"long", L"col"}, {L"ulng", L"col"}});
    for (const unsigned group_count : {1U, 63U, 64U, 65U, 1000U}) {
        std::vector<int> values(3000);
        std::vector<unsigned> groups(values.size());
        std::vector<bigint> expected(group_count, datatraits<bigint>::null);
        for (unsigned i = 0; i < values.size(); ++i) {
            values[i] = i % 11 == 0 ? datatraits<int>::null : static_cast<int>(i * 2654435761u >> 1);
            groups[i] = i * 7919 % group_count;
            bigint& sum_of = expected[groups[i]];
            if (!is_null(values[i])) sum_of = (is_null(sum_of) ? 0 : sum_of) + values[i];
        }
        std::vector<bigint> out(group_count, datatraits<bigint>::null);
        sum(3000, output_of(out), input_of(values), input_of(groups), nullptr);
        EXPECT_EQ(out, expected) << group_count;
    }
}

}  // namespace
}  // namespace qve::test
