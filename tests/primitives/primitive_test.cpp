#include <gtest/gtest.h>

#include <set>

#include "primitives/column_kernels.h"
#include "primitives/pack.h"
#include "primitives/primitive_result.h"
#include "primitives/status.h"
#include "tests/primitives/find_kernel.h"
#include "types/datatraits.h"
#include "types/varchar.h"

namespace qve::test {
namespace {

std::set<std::wstring> all_names() {
    std::set<std::wstring> names;
    for (const primitive* p : primitive::directory().all()) names.insert(p->name());
    return names;
}

TEST(Primitive, FullNamesFollowTheGrammar) {
    const std::set<std::wstring> names = all_names();
    for (const wchar_t* name :
         {L"map_plus_double_bigint_col_double_col", L"map_double_tiny_col", L"sel_lt_ulng_usr8_col_usr8_val",
          L"agg_total_bigint_long_col_uidx_col", L"sort_asc_bit_ulng_col_usr8_col",
          L"multimerge_asc_bit_oid_col_usht_col", L"map_fetch_usr1_oid_col_usr1_col",
          L"map_pageoffset_oid_usht_col_uchr_val", L"map_cluster_usht_ulng_col_uchr_val_uchr_val", L"map_uchr_uchr_vir",
          L"agg_countstar_bigint_uidx_col", L"agg_check_bit_double_col_double_col_uidx_val",
          L"map_mod_tiny_bigint_col_tiny_col"}) {
        EXPECT_TRUE(names.count(name)) << std::string(name, name + std::wcslen(name));
    }
}

TEST(Primitive, EachNameIsRegisteredOnce) {
    EXPECT_EQ(all_names().size(), primitive::directory().size());
}

TEST(Primitive, TheFirstOfAFamilyDecidesTheResult) {
    EXPECT_EQ(find_primitive(primitive::klassMap, L"plus", {{L"tiny", L"col"}, {L"short", L"col"}})->result(),
              L"short");
    EXPECT_EQ(find_primitive(primitive::klassMap, L"plus", {{L"date", L"col"}, {L"double", L"val"}})->result(),
              L"datetime");
    EXPECT_EQ(find_primitive(primitive::klassMap, L"times", {{L"short", L"col"}, {L"short", L"col"}})->result(),
              L"bigint");
    EXPECT_EQ(find_primitive(primitive::klassMap, L"divide", {{L"duration", L"col"}, {L"long", L"col"}})->result(),
              L"duration");
    EXPECT_EQ(find_primitive(primitive::klassMap, L"power", {{L"tiny", L"col"}, {L"float", L"col"}})->result(),
              L"double");
    EXPECT_TRUE(primitive::resolve(L"plus", {{L"bit", L"col"}, {L"bit", L"col"}}).empty());
}

TEST(Primitive, ResolvingAsAnotherFunctionTypeFails) {
    primitive* plus = find_primitive(primitive::klassMap, L"plus", {{L"long", L"col"}, {L"long", L"col"}});
    EXPECT_NE(ResolvePrimitive<binary_func>(plus), nullptr);
    for (primitive* p : {plus, static_cast<primitive*>(nullptr)}) {
        try {
            ResolvePrimitive<unary_func>(p);
            FAIL();
        } catch (const QVE_LogicError& error) {
            EXPECT_EQ(error.GetStatus(), 40378);
            EXPECT_EQ(error.GetText(), "ResolvePrimitive");
        }
    }
}

// Both in release and in debug builds: an overrun must never be silent.
TEST(PrimitiveDeathTest, AskingForMoreRowsThanFitStopsTheProgram) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto plus = find_kernel<binary_func>(primitive::klassMap, L"plus", {{L"long", L"col"}, {L"long", L"col"}});
    const auto less = find_kernel<binary_func>(primitive::klassSelect, L"lt", {{L"long", L"col"}, {L"long", L"col"}});
    const auto sum =
        find_kernel<binary_func>(primitive::klassAggregate, L"sum", {{L"long", L"col"}, {L"ulng", L"col"}});
    const std::vector<int> a(8);
    std::vector<bigint> out(8);
    std::vector<unsigned> positions(8);
    const std::vector<unsigned> groups(8, 5);
    output_column small = output_of(out);
    small.limit = 7;
    output_column few = output_of(positions);
    few.limit = 7;
    EXPECT_DEATH(plus(8, small, input_of(a), input_of(a), nullptr), "");
    EXPECT_DEATH(less(8, few, input_of(a), input_of(a), nullptr), "");
    small.limit = 5;
    EXPECT_DEATH(sum(8, small, input_of(a), input_of(groups), nullptr), "");
    small.limit = 6;
    EXPECT_EQ(sum(8, small, input_of(a), input_of(groups), nullptr), 8U);
    // A column of another width is no smaller fault.
    EXPECT_DEATH(plus(4, output_of(positions), input_of(a), input_of(a), nullptr), "");
}

TEST(PrimitiveResult, TokensMayStandForValues) {
    EXPECT_EQ(primitive_result::resolve(L"any").tokenprop(), usrpropkey::compression);
    EXPECT_EQ(primitive_result::resolve(L"count").tokenprop(), usrpropkey::compression);
    EXPECT_EQ(primitive_result::resolve(L"oid").tokenprop(), usrpropkey::compression);
    EXPECT_EQ(primitive_result::resolve(L"max").tokenprop(), usrpropkey::comparable);
    EXPECT_EQ(primitive_result::resolve(L"ge").tokenprop(), usrpropkey::comparable);
    EXPECT_EQ(primitive_result::resolve(L"ne").tokenprop(), usrpropkey::distinct);
    EXPECT_EQ(primitive_result::resolve(L"radixgrp").tokenprop(), usrpropkey::distinct);
    EXPECT_EQ(primitive_result::resolve(L"plus").tokenprop(), usrpropkey::empty);
    EXPECT_EQ(primitive_result::resolve(L"no such").tokenprop(), usrpropkey::empty);
}

TEST(PrimitiveResult, ResultsDescribeTheirColumn) {
    const auto props = [](const wchar_t* operation, const wchar_t* klass, const primitive::argument_list& arguments,
                          const std::vector<usrprops>& inputs) {
        return primitive_result::resolve(operation).result_props(find_primitive(klass, operation, arguments), inputs);
    };
    EXPECT_EQ(props(L"plus", primitive::klassMap, {{L"long", L"col"}, {L"long", L"col"}}, {{}, {}}),
              primitive::primitive_props(L"bigint"));

    usrprops text = varchar::propsof(20, 2, L"en_US");
    text.set(usrpropkey::compression, L"heap");
    const usrprops any = props(L"any", primitive::klassAggregate, {{L"uchr", L"col"}, {L"ulng", L"col"}}, {text});
    EXPECT_EQ(usrtype::resolve(any), usrtype::resolve(text));
    EXPECT_TRUE(any.is_true(usrpropkey::result_share_dictionary));
    EXPECT_EQ(any.text(usrpropkey::compression), L"heap");

    const usrprops upper = props(L"upper", primitive::klassMap, {{L"usr1", L"col"}}, {text});
    EXPECT_EQ(upper.text(usrpropkey::collation), L"en_US");
    EXPECT_EQ(upper.number(usrpropkey::scale), 2U);
    EXPECT_EQ(usrtype::resolve(upper)->size(), 0xFFFFFFFCU);
    EXPECT_EQ(usrtype::resolve(props(L"to_str", primitive::klassMap, {{L"long", L"col"}}, {{}}))->scale(), 1);

    usrprops tokens = primitive::primitive_props(L"uchr");
    tokens.set(usrpropkey::compression, L"array");
    tokens.set(usrpropkey::default_value, L"7");
    const usrprops wider = props(L"usht", primitive::klassMap, {{L"uchr", L"col"}}, {tokens});
    EXPECT_EQ(wider.text(usrpropkey::builtin), L"usht");
    EXPECT_EQ(wider.text(usrpropkey::compression), L"array");
    EXPECT_EQ(wider.text(usrpropkey::default_value), L"7");
}

TEST(ColumnKernels, OtherWidthsAreRefused) {
    EXPECT_THROW(map_fetch_ulng_col_type_col(3), QVE_LogicError);
    EXPECT_THROW(map_type_type_val(16), QVE_LogicError);
    EXPECT_THROW(map_idx_col_idx_col(1, 5), QVE_LogicError);
    EXPECT_THROW(agg_any_usr_col_uidx_col(0), QVE_LogicError);
}

TEST(ColumnKernels, FetchAndScatterMoveValues) {
    const std::vector<unsigned short> source{10, 20, 30};
    const std::vector<unsigned> index{2, 0, ~0U, 3};
    std::vector<unsigned short> out(4, 99);
    map_fetch_ulng_col_type_col(2)(4, output_of(out), input_of(index), input_of(source), nullptr);
    EXPECT_EQ(out,
              (std::vector<unsigned short>{30, 10, 0xFFFF, 0xFFFF}));  // beyond the source there is nothing to read

    const std::vector<unsigned> places{2, 0, 1};
    std::vector<unsigned short> scattered(3);
    map_any_type_col_ulng_col(2)(3, output_of(scattered), input_of(source), input_of(places), nullptr);
    EXPECT_EQ(scattered, (std::vector<unsigned short>{20, 30, 10}));

    std::vector<unsigned char> narrow{0, 254, 255};
    std::vector<oid> wide(3);
    map_idx_col_idx_col(1, 8)(3, output_of(wide), input_of(narrow), nullptr);
    EXPECT_EQ(wide, (std::vector<oid>{0, 254, ~0ULL}));
}

TEST(Fetch, TakesTheNotNullFlagOfTheSource) {
    const auto fetch = find_kernel<binary_func>(primitive::klassMap, L"fetch", {{L"oid", L"col"}, {L"double", L"col"}});
    const std::vector<double> source{1.5, 2.5};
    std::vector<double> out(2);
    unsigned char flags = 0;
    const std::vector<oid> good{1, 0};
    fetch(2, output_of(out, &flags), input_of(good), input_of(source, column_flags::not_null), nullptr);
    EXPECT_EQ(out, (std::vector<double>{2.5, 1.5}));
    EXPECT_TRUE(flags & column_flags::not_null);
    flags = 0;
    const std::vector<oid> bad{1, datatraits<oid>::null};
    fetch(2, output_of(out, &flags), input_of(bad), input_of(source, column_flags::not_null), nullptr);
    EXPECT_TRUE(is_null(out[1]));
    EXPECT_FALSE(flags & column_flags::not_null);
}

TEST(Pack, PacksFromTheLeastSignificantBit) {
    for (unsigned bits = 1; bits <= 24; ++bits) {
        std::vector<unsigned> values(64);
        for (unsigned i = 0; i < values.size(); ++i) values[i] = (i * 2654435761u) >> (32 - bits);
        std::vector<unsigned> packed(2 * bits + 1, 0xABABABAB);
        pack_func_ulng_col_ulng_col(bits)(64, packed.data(), values.data());
        EXPECT_EQ(packed.back(), 0xABABABABu);
        for (unsigned i = 0; i < values.size(); ++i) {
            unsigned value = 0;
            for (unsigned b = 0; b < bits; ++b) {
                const unsigned at = i * bits + b;
                value |= (packed[at / 32] >> at % 32 & 1) << b;
            }
            ASSERT_EQ(value, values[i]) << bits << " bits, value " << i;
        }
    }
    EXPECT_THROW(pack_func_ulng_col_ulng_col(0), QVE_LogicError);
    try {
        pack_func_ulng_col_ulng_col(25);
        FAIL();
    } catch (const QVE_LogicError& error) {
        EXPECT_EQ(error.GetStatus(), 40676);
        EXPECT_EQ(error.GetText(), "pack_func_ulng_col_ulng_col");
    }
}

}  // namespace
}  // namespace qve::test
