#include <gtest/gtest.h>

#include "system/QuilICUCharsetDetector.h"
#include "system/QuilICUConverter.h"
#include "system/QuilICUDateFormat.h"
#include "system/QuilICURegularExpression.h"
#include "system/unicode.h"

namespace qve::QuilICU {
namespace {

TEST(Converter, AnyBlockSizeGivesTheSameText) {
    const std::string utf8 = "price: 5 \xE2\x82\xAC, \xF0\x9F\x98\x80 " + std::string(5000, 'x') + "\xC3\xA4";
    std::u16string units = to_utf16(utf8);
    const std::string source(reinterpret_cast<const char*>(units.data()), units.size() * 2);
    const auto converter = Converter::Open("UTF-16LE");
    ASSERT_TRUE(converter);
    for (const size_t block : {1UL, 3UL, 1000UL, source.size()}) {
        converter->Reset();
        std::string converted;
        for (size_t at = 0; at < source.size(); at += block) {
            const bool last = at + block >= source.size();
            ASSERT_TRUE(converter->Append(converted, std::string_view(source).substr(at, block), last));
        }
        EXPECT_EQ(converted, utf8) << block;
    }
    // Half a character at the end is broken, and is not lost silently.
    converter->Reset();
    std::string converted;
    ASSERT_TRUE(converter->Append(converted, std::string_view("a\0\x3D", 3), true));
    EXPECT_EQ(converted, "a\xEF\xBF\xBD");
    EXPECT_FALSE(Converter::Open("no such charset"));
}

TEST(CharsetDetector, TellsSingleByteText) {
    std::string text;
    for (int i = 0; i < 30; ++i)
        text +=
            "Caf\xE9 cr\xE8me, na\xEFve fa\xE7"
            "ade, No\xEBl \xE0 la fran\xE7"
            "aise. ";
    const auto detector = CharsetDetector::Open();
    ASSERT_TRUE(detector && detector->SetText(text) && detector->Detect());
    EXPECT_EQ(detector->GetName(), "ISO-8859-1");
    EXPECT_GT(detector->GetConfidence().value(), 10);
}

TEST(DateFormat, ParsesWholeTextsInUTC) {
    const auto format = DateFormat::Open("de", u"d. MMMM yyyy");
    ASSERT_TRUE(format);
    EXPECT_EQ(format->Parse(u"1. M\u00E4rz 1970"), 59 * 86400000.0);
    EXPECT_FALSE(format->Parse(u"1. M\u00E4rz 1970 "));
    EXPECT_FALSE(format->Parse(u"31. Februar 1970"));
    EXPECT_FALSE(format->Parse(u""));
    EXPECT_EQ(format->Format(0), u"1. Januar 1970");

    auto short_years = DateFormat::Open("en_US", u"MM/dd/yy");
    ASSERT_TRUE(short_years->SetTwoDigitYearStart(DateFormat::StartOfYear(1931).value()));
    const auto copy = short_years->Clone();
    EXPECT_LT(copy->Parse(u"01/01/31").value(), 0);
    EXPECT_GT(copy->Parse(u"01/01/30").value(), 0);
    // A name that is none stands for no locale in particular.
    EXPECT_FALSE(DateFormat::DateTimePatterns("no such place@calendar=gregorian").empty());
}

TEST(DateFormat, KnowsTheNamesOfALocale) {
    EXPECT_EQ(DateFormat::WeekdayNames("en_US").at(6), u"Saturday");
    EXPECT_EQ(DateFormat::WeekdayNames("de").size(), 7U);
    EXPECT_EQ(DateFormat::MonthNames("de").at(2), u"M\u00E4rz");
    const auto patterns = DateFormat::DatePatterns("en_US");
    ASSERT_FALSE(patterns.empty());
    EXPECT_EQ(patterns.front(), u"M/d/yy");
    EXPECT_GT(DateFormat::DateTimePatterns("fr_FR").size(), 1U);
}

TEST(RegularExpression, FindsGroups) {
    const auto expression = RegularExpression::Open(u"(\\d+)-(x)?");
    ASSERT_TRUE(expression);
    const std::u16string text = u"a 12- 3-x";
    ASSERT_TRUE(expression->SetText(text));
    EXPECT_EQ(expression->GroupCount(), 2);
    ASSERT_TRUE(expression->Find());
    EXPECT_EQ(expression->Group(1)->begin, 2U);
    EXPECT_FALSE(expression->Group(2));
    ASSERT_TRUE(expression->Find());
    EXPECT_EQ(expression->Group(2)->end, 9U);
    EXPECT_FALSE(expression->Find());
    ASSERT_TRUE(expression->SetText({}));
    EXPECT_FALSE(expression->Find());
    EXPECT_FALSE(RegularExpression::Open(u"(open"));
}

// Without its bounds this pattern runs for years.
TEST(RegularExpression, HostilePatternsEnd) {
    const auto expression = RegularExpression::Open(u"(a+)+$");
    const std::u16string text = std::u16string(60, u'a') + u"!";
    ASSERT_TRUE(expression->SetText(text));
    EXPECT_FALSE(expression->Find());
    EXPECT_TRUE(expression->GaveUp());
    // And the next text starts anew.
    ASSERT_TRUE(expression->SetText(u"aaa"));
    EXPECT_TRUE(expression->Find());
    EXPECT_FALSE(expression->GaveUp());
}

}  // namespace
}  // namespace qve::QuilICU
