#include "vql/VQLExpandMacros.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/vql/raised_error.h"
#include "tests/vql/syntax_text.h"

namespace qve {
namespace {

std::wstring Expand(const std::wstring& text) {
    test::SyntaxText syntax;
    return FormatExpression(VQLExpandMacros(syntax.dictionary, GetVQLMacros(), syntax.Expression(text)));
}

TEST(VQLExpandMacros, RefusesAShortTextThatStandsForTooMuch) {
    std::wstring text = L"x";
    for (int i = 0; i < 10; ++i) text = L"(square " + text + L")";
    const std::wstring expanded = Expand(text);
    EXPECT_EQ(std::count(expanded.begin(), expanded.end(), L'x'), 1024);
    for (int i = 0; i < 50; ++i) text = L"(square " + text + L")";
    EXPECT_EQ(test::Raised([&] { Expand(text); }).text, "query too large");
}

}  // namespace
}  // namespace qve
