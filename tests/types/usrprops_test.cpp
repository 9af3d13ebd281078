#include "types/usrprops.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <thread>

#include "system/QuillonException.h"
#include "types/status.h"

namespace qve {
namespace {

TEST(PropertyKeys, NumbersAndTexts) {
    EXPECT_EQ(static_cast<unsigned>(usrpropkey::acceleration), 1U);
    EXPECT_EQ(static_cast<unsigned>(usrpropkey::LogicalParallelizer), 73U);
    EXPECT_EQ(static_cast<unsigned>(usrpropkey::yy), 177U);
    EXPECT_EQ(UsrPropKey_ToString(usrpropkey::sort_position), L"sort-position");
    EXPECT_EQ(UsrPropKey_ToString(usrpropkey::resource_manager_port), L"resource_manager.port");
    EXPECT_EQ(UsrPropKey_ToString(usrpropkey::true_), L"true");
    EXPECT_EQ(UsrPropKey_ToString(usrpropkey::empty), L"");
    for (unsigned i = 0; i <= static_cast<unsigned>(usrpropkey::yy); ++i) {
        const auto key = static_cast<usrpropkey>(i);
        EXPECT_EQ(UsrPropKey_FromString(UsrPropKey_ToString(key)), key);
    }
}

TEST(PropertyKeys, UnknownTextsGetNewKeys) {
    const usrpropkey added = UsrPropKey_FromString(L"something nobody knows");
    EXPECT_GT(added, usrpropkey::yy);
    EXPECT_EQ(UsrPropKey_FromString(L"something nobody knows"), added);
    EXPECT_EQ(UsrPropKey_ToString(added), L"something nobody knows");
    try {
        UsrPropKey_ToString(static_cast<usrpropkey>(999999));
        FAIL();
    } catch (const QVE_LogicError& fault) {
        EXPECT_EQ(fault.GetText(), "Error: map of usrpropkey enum to string did not contain key: 999999");
        EXPECT_EQ(fault.GetStatus(), status::UsrPropKey_ToString);
    }
}

TEST(PropertyKeys, ThreadsAgreeOnNewKeys) {
    std::vector<std::vector<usrpropkey>> keys(4);
    {
        std::vector<std::jthread> threads;
        for (auto& mine : keys) {
            threads.emplace_back([&mine] {
                for (int i = 0; i < 200; ++i) mine.push_back(UsrPropKey_FromString(L"race " + std::to_wstring(i)));
            });
        }
    }
    for (const auto& mine : keys) EXPECT_EQ(mine, keys[0]);
    EXPECT_EQ(std::set(keys[0].begin(), keys[0].end()).size(), 200U);
}

TEST(Properties, PrintSortedByText) {
    usrprops properties{{usrpropkey::type, L"long"}, {usrpropkey::ordinal, L"3"}, {usrpropkey::ordered, L"asc"}};
    properties.set(usrpropkey::MaxQueryTokenCount, 5U);
    std::wostringstream stream;
    stream << properties;
    EXPECT_EQ(stream.str(), L"MaxQueryTokenCount:5\nordered:asc\nordinal:3\ntype:long\n");
}

TEST(Properties, MergeOverwrites) {
    usrprops left{{usrpropkey::type, L"long"}, {usrpropkey::size, L"4"}};
    left += usrprops{{usrpropkey::type, L"short"}, {usrpropkey::fixed, L"true"}};
    EXPECT_EQ(left.size(), 3U);
    EXPECT_EQ(left.text(usrpropkey::type), L"short");
    EXPECT_TRUE(left.is_true(usrpropkey::fixed));
    EXPECT_EQ(left.get(usrpropkey::name), nullptr);
}

TEST(Properties, NumbersAreReadLeniently) {
    const auto number = [](const wchar_t* text) {
        return usrprops{{usrpropkey::size, text}}.number(usrpropkey::size, 7);
    };
    EXPECT_EQ(number(L"42"), 42U);
    EXPECT_EQ(number(L" \t42 rows"), 42U);
    EXPECT_EQ(number(L"none"), 0U);
    EXPECT_EQ(number(L"99999999999999999999999"), ~0ULL);
    EXPECT_EQ(usrprops().number(usrpropkey::size, 7), 7U);
}

}  // namespace
}  // namespace qve
