#include "vql/syntax/VQLDataValue.h"

#include <gtest/gtest.h>

#include "tests/vql/raised_error.h"

namespace qve {
namespace {

using test::Raised;
using test::RaisedError;

TEST(VQLDataValue, GivesOnlyTheValueOfItsType) {
    VQLDataValue value(5);
    EXPECT_EQ(value.GetInteger(), 5);
    EXPECT_EQ(Raised([&] { value.GetDouble(); }), (RaisedError{48022, "datatype error"}));
    EXPECT_EQ(Raised([&] { VQLDataValue::Null(VQLDataType::integer).GetInteger(); }).code, 48022);
    value.SetString(L"x");
    EXPECT_EQ(value.GetType(), VQLDataType::string);
    value.MakeNull(VQLDataType::date);
    EXPECT_TRUE(value.IsNull());
    EXPECT_EQ(value.GetType(), VQLDataType::date);
    // A text constant must not end up as a boolean, nor an integer as a double.
    EXPECT_EQ(VQLDataValue(L"true").GetType(), VQLDataType::string);
    EXPECT_EQ(VQLDataValue(1LL).GetType(), VQLDataType::integer);
}

TEST(VQLDataValue, ComparesByTypeThenNullThenValue) {
    const VQLDataValue ordered[] = {VQLDataValue(),
                                    VQLDataValue::Null(VQLDataType::integer),
                                    VQLDataValue(-3),
                                    VQLDataValue(7),
                                    VQLDataValue(-1.0),
                                    VQLDataValue(false),
                                    VQLDataValue(true),
                                    VQLDataValue(L""),
                                    VQLDataValue(L"a"),
                                    VQLDataValue(VQLDate{-1, 12, 31}),
                                    VQLDataValue(VQLDate{1, 1, 1}),
                                    VQLDataValue(VQLDatetime{2000, 1, 1, 0, 0, 0, 1}),
                                    VQLDataValue(VQLDatetime{2000, 1, 1, 0, 0, 1, 0}),
                                    VQLDataValue(VQLDuration{0, -1, -59, 0, 0}),
                                    VQLDataValue(VQLDuration{0, 0, 0, 0, 0}),
                                    VQLDataValue(VQLDuration{1, 0, 0, 0, 0})};
    for (size_t i = 0; i < std::size(ordered); ++i)
        for (size_t j = 0; j < std::size(ordered); ++j)
            EXPECT_EQ(cmp(ordered[i], ordered[j]), (i > j) - (i < j)) << i << ", " << j;
}

}  // namespace
}  // namespace qve
