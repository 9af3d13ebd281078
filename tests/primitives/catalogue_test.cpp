// What is registered, beside the table of families: how many kernels each operation has, and which result they give.

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "primitives/define_primitives.h"
#include "primitives/primitive_directory.h"
#include "system/unicode.h"

namespace qve::test {
namespace {

// Types of each kind.
constexpr unsigned integers = 4;  // signed
constexpr unsigned numbers = 6;   // and real
constexpr unsigned indexes = 4;   // unsigned
constexpr unsigned times = 3;
constexpr unsigned texts = 4;
constexpr unsigned plain = 1 + numbers + indexes + times;
constexpr unsigned all = plain + texts;
// Storage modes of one, two and three arguments.
constexpr unsigned one = 2;
constexpr unsigned two = 4;
constexpr unsigned three = 8;

// Comparable pairs: numbers, unsigned numbers, bits, moments (all but a date with a duration), texts of any widths.
constexpr unsigned compared = numbers * numbers + indexes * indexes + 1 + (times * times - 2) + texts * texts;

struct family {
    const wchar_t* klass;
    size_t arguments;
    std::vector<const wchar_t*> operations;
    unsigned count;
};

const std::vector<family>& families() {
    static const std::vector<family> table = {
        {L"map", 0, {L"random"}, 1},
        {L"map",
         1,
         {L"abs_", L"acos", L"asin", L"atan", L"ceil", L"cos", L"cot", L"exp", L"floor", L"ln", L"log", L"round",
          L"sign", L"sin", L"sqrt", L"tan", L"chr", L"space"},
         numbers * one},
        {L"map", 1, {L"negate"}, (numbers + 1) * one},
        {L"map", 1, {L"hash", L"rehash", L"isnull", L"isnotnull"}, all * one},
        {L"map", 1, {L"radixhash"}, (1 + 3 + 3 + 1) * one},
        {L"map", 1, {L"radixgrp"}, (1 + 2 + 2) * one},
        {L"map", 1, {L"not_"}, one},
        {L"map", 1, {L"tiny", L"short", L"long", L"float", L"double", L"to_int", L"to_real", L"to_str"}, all * one},
        // Row numbers too.
        {L"map", 1, {L"bigint", L"uchr", L"usht", L"ulng", L"oid"}, all * one + indexes},
        {L"map", 1, {L"bit"}, (1 + numbers + indexes + texts) * one},
        {L"map", 1, {L"date", L"to_date"}, (1 + numbers + 2 + texts) * one},
        {L"map", 1, {L"datetime", L"duration", L"to_datetime", L"to_duration"}, (1 + numbers + times + texts) * one},
        {L"map", 1, {L"usr1", L"usr2", L"usr4", L"usr8"}, texts * one},
        {L"map",
         1,
         {L"year", L"quarter", L"month", L"weekday", L"yearday", L"dayname", L"monthname", L"truncyear",
          L"truncquarter", L"truncmonth"},
         2 * one},
        {L"map",
         1,
         {L"day", L"hour", L"minute", L"second", L"millisecond", L"week", L"truncweek", L"truncday"},
         times * one},
        {L"map",
         1,
         {L"ascii", L"char_length", L"lower", L"upper", L"ltrim", L"rtrim", L"trim", L"sortkey"},
         texts * one},
        {L"map", 1, {L"run", L"rerun"}, all},
        {L"map", 2, {L"plus"}, (numbers * numbers + indexes + integers + 2 + numbers + 2) * two},
        {L"map", 2, {L"minus"}, (numbers * numbers + integers + 2 + numbers + 4) * two},
        {L"map", 2, {L"times"}, (numbers * numbers + 2 * numbers) * two},
        {L"map", 2, {L"divide"}, (numbers * numbers + numbers) * two},
        {L"map", 2, {L"div_", L"mod"}, (integers * integers + 1) * two},
        {L"map", 2, {L"power", L"atan2", L"round2", L"log"}, numbers * numbers * two},
        {L"map", 2, {L"and_", L"or_"}, two},
        {L"map", 2, {L"eq", L"ne", L"lt", L"le", L"gt", L"ge", L"isdistinct", L"isnotdistinct"}, compared * two},
        {L"map",
         2,
         {L"concat", L"contains", L"rcontains", L"startswith", L"endswith", L"find2", L"parsedate"},
         texts * texts * two},
        {L"map", 2, {L"left", L"right", L"mid"}, texts * numbers * two},
        {L"map", 2, {L"trunctime", L"addweek", L"addday"}, times * integers * two},
        {L"map",
         2,
         {L"addyear", L"addquarter", L"addmonth", L"addhour", L"addminute", L"addsecond", L"addmillisecond"},
         2 * integers * two},
        {L"map", 2, {L"diffyear", L"diffquarter", L"diffmonth"}, 2 * 2 * two},
        {L"map",
         2,
         {L"diffweek", L"diffday", L"diffhour", L"diffminute", L"diffsecond", L"diffmillisecond"},
         (2 * 2 + 1) * two},
        {L"map", 2, {L"fetch"}, all * 2 * 2},
        // Numbers widen, moments too; of unsigned numbers only those of one width have a greater one.
        {L"map", 2, {L"greatest", L"least"}, (numbers * numbers + indexes + 1 + 5 + texts * texts) * two},
        {L"map", 2, {L"pageoffset"}, indexes * 2},
        {L"map", 3, {L"cluster"}, indexes * 2},
        {L"map", 3, {L"iif"}, three},
        {L"map", 3, {L"find3", L"findnth", L"split", L"rextract"}, texts * texts * numbers * three},
        {L"map", 3, {L"replace", L"rreplace"}, texts * texts * texts * three},
        {L"sel", 1, {L"isnull", L"isnotnull"}, all * one},
        {L"sel", 1, {L"not_", L"copy"}, one},
        {L"sel", 2, {L"and_", L"or_"}, two},
        {L"sel", 2, {L"eq", L"ne", L"lt", L"le", L"gt", L"ge", L"isdistinct", L"isnotdistinct"}, compared * two},
        {L"sel", 2, {L"contains", L"rcontains", L"startswith", L"endswith"}, texts * texts * two},
        {L"sel", 3, {L"iif"}, three},
        {L"agg", 1, {L"countstar"}, one},
        {L"agg", 2, {L"any", L"max", L"min", L"count"}, all * two},
        {L"agg", 2, {L"sum", L"total"}, (integers + indexes + 2 + 1) * two},
        {L"agg", 2, {L"collect"}, texts * two},
        {L"agg", 3, {L"anyif"}, all * three},
        {L"agg", 3, {L"check", L"recheck"}, (plain + texts * texts) * 4},
        {L"merge", 1, {L"asc", L"desc"}, all},
        {L"sort", 2, {L"asc", L"desc"}, all * (indexes + 1)},
        {L"multimerge", 2, {L"asc", L"desc"}, all * (indexes + 1)},
    };
    return table;
}

class Catalogue : public testing::Test {
protected:
    static void SetUpTestSuite() { define_primitives(); }
};

TEST_F(Catalogue, HasAllFormsOfEachFamily) {
    std::map<std::tuple<std::wstring, size_t, std::wstring>, unsigned> counts;
    for (const primitive* p : primitive::directory().all()) {
        ++counts[{p->klass(), p->arguments().size(), p->operation()}];
    }
    for (const family& expected : families()) {
        for (const wchar_t* operation : expected.operations) {
            const auto found = counts.find({expected.klass, expected.arguments, operation});
            EXPECT_EQ(found == counts.end() ? 0 : found->second, expected.count)
                << narrow(expected.klass) << " " << narrow(operation);
            if (found != counts.end()) counts.erase(found);
        }
    }
    for (const auto& [key, count] : counts) {
        ADD_FAILURE() << narrow(std::get<0>(key)) << " " << narrow(std::get<2>(key)) << " is in no family: " << count;
    }
}

TEST_F(Catalogue, NoKernelIsThereTwice) {
    std::set<std::wstring> names;
    for (const primitive* p : primitive::directory().all()) {
        EXPECT_TRUE(names.insert(p->name()).second) << narrow(p->name());
    }
}

TEST_F(Catalogue, ArithmeticWidensAsItsTablesSay) {
    const wchar_t* const types[] = {L"tiny", L"short", L"long", L"bigint", L"float", L"double"};
    const wchar_t* const sums[numbers][numbers] = {
        {L"short", L"short", L"long", L"bigint", L"float", L"double"},
        {L"short", L"long", L"long", L"bigint", L"float", L"double"},
        {L"long", L"long", L"bigint", L"bigint", L"float", L"double"},
        {L"bigint", L"bigint", L"bigint", L"bigint", L"float", L"double"},
        {L"float", L"float", L"float", L"float", L"float", L"double"},
        {L"double", L"double", L"double", L"double", L"double", L"double"},
    };
    const wchar_t* const products[numbers][numbers] = {
        {L"long", L"long", L"bigint", L"bigint", L"float", L"double"},
        {L"long", L"bigint", L"bigint", L"bigint", L"float", L"double"},
        {L"bigint", L"bigint", L"bigint", L"bigint", L"float", L"double"},
        {L"bigint", L"bigint", L"bigint", L"bigint", L"float", L"double"},
        {L"float", L"float", L"float", L"float", L"float", L"double"},
        {L"double", L"double", L"double", L"double", L"double", L"double"},
    };
    const auto result = [](const wchar_t* operation, const std::wstring& a, const std::wstring& b) -> std::wstring {
        for (const primitive* p : primitive::resolve(operation, {{a, L"col"}, {b, L"val"}})) {
            if (p->klass() == primitive::klassMap) return p->result();
        }
        return L"none";
    };
    for (unsigned a = 0; a < numbers; ++a) {
        for (unsigned b = 0; b < numbers; ++b) {
            EXPECT_EQ(result(L"plus", types[a], types[b]), sums[a][b]);
            EXPECT_EQ(result(L"minus", types[a], types[b]), sums[a][b]);
            EXPECT_EQ(result(L"times", types[a], types[b]), products[a][b]);
            const bool single = sums[a][b] == std::wstring_view(L"float");
            EXPECT_EQ(result(L"divide", types[a], types[b]), single ? L"float" : L"double");
            EXPECT_EQ(result(L"power", types[a], types[b]), L"double");
            // The remainder is no wider than the divisor.
            if (a < integers && b < integers) {
                EXPECT_EQ(result(L"mod", types[a], types[b]), types[b]);
            }
        }
    }
    for (const wchar_t* const type : {L"uchr", L"usht", L"ulng", L"oid"}) {
        EXPECT_EQ(result(L"plus", type, type), type);
        EXPECT_EQ(result(L"minus", type, type), L"none");
    }
    const wchar_t* const moments[][4] = {
        {L"plus", L"date", L"long", L"date"},           {L"plus", L"date", L"double", L"datetime"},
        {L"plus", L"datetime", L"tiny", L"datetime"},   {L"plus", L"datetime", L"duration", L"datetime"},
        {L"minus", L"date", L"date", L"long"},          {L"minus", L"datetime", L"datetime", L"double"},
        {L"plus", L"date", L"date", L"none"},           {L"times", L"bigint", L"duration", L"duration"},
        {L"times", L"duration", L"float", L"duration"}, {L"divide", L"duration", L"short", L"duration"},
        {L"greatest", L"usr1", L"usr1", L"usr1"},       {L"least", L"usr2", L"usr1", L"usr4"},
        {L"greatest", L"usr2", L"usr8", L"usr8"},       {L"div_", L"ulng", L"ulng", L"ulng"},
    };
    for (const auto& [operation, a, b, expected] : moments) {
        EXPECT_EQ(narrow(result(operation, a, b)), narrow(expected))
            << narrow(operation) << " " << narrow(a) << " " << narrow(b);
    }
}

TEST_F(Catalogue, NamesKernelsByTheirGrammar) {
    std::set<std::wstring> names;
    for (const primitive* p : primitive::directory().all()) names.insert(p->name());
    for (const wchar_t* const name :
         {L"map_plus_double_bigint_col_double_col", L"map_double_tiny_col", L"sel_lt_ulng_usr8_col_usr8_val",
          L"sel_lt_ulng_usr1_col_usr4_col", L"agg_total_bigint_long_col_uidx_col", L"sort_asc_bit_ulng_col_usr8_col",
          L"sort_desc_bit_uchr_val_double_col", L"multimerge_asc_bit_oid_col_usht_col",
          L"map_fetch_usr1_oid_col_usr1_col", L"map_pageoffset_oid_usht_col_uchr_val",
          L"map_cluster_usht_ulng_col_uchr_val_uchr_val", L"map_uchr_uchr_vir", L"map_random_double"}) {
        EXPECT_TRUE(names.contains(name)) << narrow(name);
    }
}

}  // namespace
}  // namespace qve::test
