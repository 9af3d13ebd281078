#include "system/unicode.h"

#include <gtest/gtest.h>

#include <random>

#include "system/UnicodeUnits.h"

namespace qve {
namespace {

using Unicode::Units;

// One, two, three and four bytes, with a pair of surrogates.
const std::string mixed = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z";
constexpr std::wstring_view mixed_wide = L"a\u00E4\u20AC\U0001F600z";

std::string in_units(std::string_view utf8, unsigned width) {
    std::string bytes;
    Unicode::AppendUnits(bytes, utf8, width);
    return bytes;
}

TEST(Unicode, RoundTrips) {
    EXPECT_EQ(widen(mixed), mixed_wide);
    EXPECT_EQ(narrow(mixed_wide), mixed);
    EXPECT_EQ(narrow(to_utf16(mixed_wide)), mixed);
    EXPECT_EQ(widen(to_utf16(mixed)), mixed_wide);
    EXPECT_EQ(widen(std::string_view("\0x", 2)), std::wstring(L"\0x", 2));
}

TEST(Unicode, BrokenTextIsReplaced) {
    EXPECT_EQ(widen("a\xFFz"), L"a\uFFFDz");
    EXPECT_EQ(widen("\xE2\x82"), L"\uFFFD");        // cut off
    EXPECT_EQ(widen("\xC0\x80"), L"\uFFFD\uFFFD");  // overlong
    EXPECT_EQ(widen("\xED\xA0\x80").find(L'\xD800'), std::wstring::npos);
    EXPECT_EQ(widen(std::u16string_view(u"\xD800"
                                        u"x")),
              L"\uFFFDx");
    EXPECT_EQ(narrow(std::u16string_view(u"\xDC00")), "\xEF\xBF\xBD");
    const wchar_t beyond[] = {static_cast<wchar_t>(0x110000), static_cast<wchar_t>(0xD800)};
    EXPECT_EQ(narrow(std::wstring_view(beyond, 2)), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(UnicodeUnits, ConvertBetweenWidthsAtAnyAddress) {
    std::string utf8;
    std::u16string utf16;
    std::u32string utf32;
    for (const unsigned width : {1U, 2U, 4U}) {
        const std::string shifted = "!" + in_units(mixed, width);
        const std::string_view text = std::string_view(shifted).substr(1);
        EXPECT_EQ(Unicode::ToUTF8(text, width, utf8), mixed);
        EXPECT_EQ(Unicode::ToUTF16(text, width, utf16), to_utf16(mixed));
        EXPECT_EQ(Unicode::ToUTF32(text, width, utf32), U"a\u00E4\u20AC\U0001F600z");
        EXPECT_EQ(Unicode::ToWideChar(text, width), mixed_wide);
        std::string back;
        Unicode::AppendUnits(back, std::u16string_view(to_utf16(mixed)), width);
        EXPECT_EQ(back, text);
    }
    // A part of a unit at the end is left out.
    EXPECT_EQ(Unicode::ToWideChar(std::string_view("a\0b", 3), 2), L"a");
    EXPECT_EQ(Unicode::ToUTF16(std::string_view("a\0b", 3), 2, utf16), u"a");
}

TEST(UnicodeUnits, MeasureCharacters) {
    for (const unsigned width : {1U, 2U, 4U}) {
        const std::string text = in_units(mixed, width);
        EXPECT_EQ(Units::CharLength(text, width), 5U);
        for (unsigned n = 0; n <= 6; ++n) {
            const uint64_t front = Units::Offset(text, width, n);
            EXPECT_EQ(Units::CharLength(text.substr(0, front), width), std::min(n, 5U));
            const uint64_t back = Units::OffsetFromEnd(text, width, n);
            EXPECT_EQ(Units::CharLength(text.substr(back), width), std::min(n, 5U));
        }
        // Cutting at every byte keeps whole characters only.
        for (uint64_t bytes = 0; bytes <= text.size(); ++bytes) {
            const uint64_t fit = Units::Fit(text, width, bytes);
            ASSERT_LE(fit, bytes);
            bool boundary = false;
            for (unsigned n = 0; n <= 5; ++n) {
                const uint64_t offset = Units::Offset(text, width, n);
                boundary |= offset == fit;
                ASSERT_TRUE(offset > bytes || fit >= offset);
            }
            ASSERT_TRUE(boundary) << width << " " << bytes;
        }
        const std::string long_text = in_units(std::string(50, 'x') + mixed + mixed, width);
        for (uint64_t bytes = 40 * width; bytes < long_text.size(); ++bytes) {
            const uint64_t fit = Units::Fit(long_text, width, bytes);
            EXPECT_EQ(Units::Offset(long_text, width, Units::CharLength(long_text.substr(0, fit), width)), fit);
            EXPECT_GT(fit + 4, bytes);
        }
        EXPECT_EQ(Units::First(text, width), U'a');
        EXPECT_EQ(Units::First("", width), U'\0');
    }
    EXPECT_EQ(Units::CharLength("ascii \xFF\xFF", 1), 8U);
}

TEST(UnicodeUnits, SkipSpace) {
    for (const unsigned width : {1U, 2U, 4U}) {
        const std::string text = in_units("\xE2\x80\x83 x \t", width);
        const std::string_view view = text;
        EXPECT_EQ(view.substr(Units::SkipSpace(text, width)), in_units("x \t", width));
        EXPECT_EQ(view.substr(0, Units::SkipSpaceFromEnd(text, width)), in_units("\xE2\x80\x83 x", width));
        const std::string blanks = in_units("   ", width);
        EXPECT_EQ(Units::SkipSpace(blanks, width), blanks.size());
        EXPECT_EQ(Units::SkipSpaceFromEnd(blanks, width), 0U);
    }
}

// Any bytes at all: walking forwards and backwards agrees on the ends, and nothing reads outside.
TEST(UnicodeUnits, JunkIsSafe) {
    constexpr unsigned seed = 31337;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int i = 0; i < 20000; ++i) {
        std::vector<char> bytes(random() % 12);
        for (char& byte : bytes) byte = static_cast<char>(random() % 3 ? random() : 0x80 | random());
        const std::string_view text(bytes.data(), bytes.size());
        for (const unsigned width : {1U, 2U, 4U}) {
            const uint64_t whole = text.size() / width * width;
            ASSERT_EQ(Units::Offset(text, width, 100), whole);
            ASSERT_EQ(Units::OffsetFromEnd(text, width, 100), 0U);
            ASSERT_LE(Units::Fit(text, width, 3), 3U);
            ASSERT_EQ(Unicode::ToWideChar(text, width).size(), Units::CharLength(text, width));
        }
    }
}

TEST(UnicodeUnits, LowerIsUnitForUnit) {
    std::u16string text = u"ABC\u00C4\u0130\xD83D\xDE00";
    Unicode::lower_en_us(text);
    EXPECT_EQ(text, u"abc\u00E4i\xD83D\xDE00");
}

}  // namespace
}  // namespace qve
