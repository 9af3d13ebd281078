#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

#include "types/parse_value.h"

namespace qve {
namespace {

// What a parser makes of a text; the null of the type, checked, when it refuses.
template <class T>
T parsed(parse_function<T> parse, std::string_view text, const parse_config& config = parse_config::standard()) {
    // Surrounded, so that a parser that reads beyond its bounds shows.
    const std::string surrounded = "7" + std::string(text) + "7";
    T value{};
    const bool failed = parse(value, 1, static_cast<unsigned>(1 + text.size()), surrounded.data(), config);
    EXPECT_EQ(failed, is_null(value)) << text;
    return value;
}
template <class T>
bool refuses(parse_function<T> parse, std::string_view text, const parse_config& config = parse_config::standard()) {
    return is_null(parsed(parse, text, config));
}

template <class T>
void check_extremes(parse_function<T> parse) {
    using limits = std::numeric_limits<T>;
    constexpr bool is_signed = std::is_signed_v<T>;
    const auto greatest = static_cast<long double>(limits::max()) - (is_signed ? 0 : 1);
    char text[32];
    std::snprintf(text, sizeof text, "%.0Lf", greatest);
    EXPECT_EQ(parsed(parse, text), static_cast<T>(greatest));
    std::snprintf(text, sizeof text, "%.0Lf", greatest + 1);
    EXPECT_TRUE(refuses(parse, text)) << text;
    if (is_signed) {
        std::snprintf(text, sizeof text, "-%.0Lf", greatest);
        EXPECT_EQ(parsed(parse, text), static_cast<T>(-limits::max()));
        std::snprintf(text, sizeof text, "-%.0Lf", greatest + 1);
        EXPECT_TRUE(refuses(parse, text)) << text;
    } else {
        EXPECT_TRUE(refuses(parse, "-1"));
        EXPECT_EQ(parsed(parse, "-0"), 0U);
    }
}

TEST(ParseInteger, Extremes) {
    check_extremes(parse_tiny_char);
    check_extremes(parse_short_char);
    check_extremes(parse_long_char);
    check_extremes(parse_bigint_char);
    check_extremes(parse_uchr_char);
    check_extremes(parse_usht_char);
    check_extremes(parse_ulng_char);
    check_extremes(parse_oid_char);
    EXPECT_TRUE(refuses(parse_oid_char, "99999999999999999999"));
}

TEST(ParseInteger, SignsGroupsAndJunk) {
    EXPECT_EQ(parsed(parse_bigint_char, "+12"), 12);
    EXPECT_EQ(parsed(parse_bigint_char, "1,234,567"), 1234567);
    EXPECT_EQ(parsed(parse_bigint_char, "-123,456"), -123456);
    EXPECT_EQ(parsed(parse_bigint_char, "000000000000000000000012"), 12);
    for (const char* junk : {"", "+", "-", "1 2", "1,23", ",123", "1234,567", "1,2345", "123,", "12a", "a12", "1.0",
                             "--1", "12345678a", "1234567890123456:", "\xC3\xA4"}) {
        EXPECT_TRUE(refuses(parse_bigint_char, junk)) << junk;
    }
    parse_config german;
    german.thousands = '.';
    EXPECT_EQ(parsed(parse_bigint_char, "1.234", german), 1234);
    german.thousands = 0;
    EXPECT_TRUE(refuses(parse_bigint_char, "1.234", german));
}

TEST(ParseBit, Forms) {
    EXPECT_EQ(parsed(parse_bit_char, "1"), bit{1});
    EXPECT_TRUE(refuses(parse_bit_char, "true"));
    EXPECT_TRUE(refuses(parse_bit_char, "2"));
    EXPECT_TRUE(refuses(parse_bit_char, ""));
    EXPECT_EQ(parsed(parse_boolean_char, "TRUE"), bit{1});
    EXPECT_EQ(parsed(parse_boolean_char, "f"), bit{0});
    EXPECT_TRUE(refuses(parse_boolean_char, "1"));
    parse_config german;
    german.true_text = "ja";
    german.false_text = "nein";
    EXPECT_EQ(parsed(parse_boolean_char, "Ja", german), bit{1});
    EXPECT_TRUE(refuses(parse_boolean_char, "j", german));
}

TEST(ParseReal, Forms) {
    EXPECT_EQ(parsed(parse_double_char, "12.5"), 12.5);
    EXPECT_EQ(parsed(parse_double_char, "-.5"), -0.5);
    EXPECT_EQ(parsed(parse_double_char, "5."), 5.0);
    EXPECT_EQ(parsed(parse_double_char, "1,234.5"), 1234.5);
    EXPECT_EQ(parsed(parse_double_char, "12%"), 0.12);
    EXPECT_EQ(parsed(parse_double_char, "1.5E3"), 1500.0);
    EXPECT_EQ(parsed(parse_double_char, "1e+3"), 1000.0);
    EXPECT_EQ(parsed(parse_double_char, "-Inf"), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(parsed(parse_double_char, "nan")));
    EXPECT_TRUE(std::signbit(parsed(parse_double_char, "-0")));
    EXPECT_EQ(parsed(parse_double_char, "1.7976931348623157e308"), std::numeric_limits<double>::max());
    EXPECT_EQ(parsed(parse_double_char, "4.9406564584124654e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(parsed(parse_double_char, "9007199254740993"), 9007199254740992.0);  // a tie, to even
    EXPECT_EQ(parsed(parse_double_char, "123456789012345678901234567890"), 123456789012345678901234567890.0);
    EXPECT_EQ(parsed(parse_float_char, "16777217"), 16777216.0F);
    EXPECT_EQ(parsed(parse_float_char, "0.1"), 0.1F);
    for (const char* junk : {"", ".", "-", "e5", "1e", "1e+", "1.2.3", "1,23.5", "0x10", "1 ", "infinit", "nano",
                             "1e400", "%", "1%%", "--1", "1e5x", "1,234,56"}) {
        EXPECT_TRUE(refuses(parse_double_char, junk)) << junk;
    }
    parse_config german;
    german.decimal = ',';
    german.thousands = '.';
    EXPECT_EQ(parsed(parse_double_char, "1.234,5", german), 1234.5);
    EXPECT_EQ(parsed(parse_double_char, "2,5", german), 2.5);
}

TEST(ParseReal, Currency) {
    parse_config dollars;
    dollars.currency = "$";
    EXPECT_EQ(parsed(parse_currency_char, "$1,234.50", dollars), 1234.5);
    EXPECT_EQ(parsed(parse_currency_char, "($5)", dollars), -5.0);
    EXPECT_EQ(parsed(parse_currency_char, "-$5", dollars), -5.0);
    EXPECT_EQ(parsed(parse_currency_char, "$-5", dollars), -5.0);
    EXPECT_EQ(parsed(parse_currency_char, "5 $", dollars), 5.0);
    for (const char* junk : {"", "$", "()", "(5", "5)", "-$-5", "$$5", "(", "-"}) {
        EXPECT_TRUE(refuses(parse_currency_char, junk, dollars)) << junk;
    }
}

TEST(ParseDate, Forms) {
    const date day = date::gregoriandate(1999, 12, 31);
    EXPECT_EQ(parsed(parse_iso_date_char, "1999-12-31"), day);
    EXPECT_TRUE(refuses(parse_iso_date_char, "1999/12/31"));
    EXPECT_EQ(parsed(parse_date_char, "1999/12/31"), day);
    EXPECT_EQ(parsed(parse_integer_date_char, "19991231"), day);
    EXPECT_TRUE(refuses(parse_integer_date_char, "1999123"));
    EXPECT_TRUE(refuses(parse_integer_date_char, "19991301"));
    for (const char* junk : {"", "1999-12-3x", "1999-12-", "1999-13-01", "1999-02-29", "0000-01-01", "12-31-1999",
                             "1999-12-31 ", "1999-12-311", "19991-1-1", "1582-10-09"}) {
        EXPECT_TRUE(refuses(parse_iso_date_char, junk)) << junk;
    }
}

TEST(ParseDate, Orders) {
    parse_config dmy;
    dmy.date_order = {parse_config::day, parse_config::month, parse_config::year};
    EXPECT_EQ(parsed(parse_ymd_date_char, "31/12/99", dmy), date::gregoriandate(1999, 12, 31));
    EXPECT_EQ(parsed(parse_ymd_date_char, "29/12/30", dmy), date::gregoriandate(2030, 12, 29));
    EXPECT_EQ(parsed(parse_ymd_date_char, "1.2.2003", dmy), date::gregoriandate(2003, 2, 1));
    EXPECT_EQ(parsed(parse_ymd_date_char, "04-Jul-1976", dmy), date::gregoriandate(1976, 7, 4));
    EXPECT_EQ(parsed(parse_ymd_date_char, "04-september-1976", dmy), date::gregoriandate(1976, 9, 4));
    for (const char* junk : {"31/12-99", "32/1/99", "1/2/345", "1/Foo/99", "1/2", "1_2_2003"}) {
        EXPECT_TRUE(refuses(parse_ymd_date_char, junk, dmy)) << junk;
    }
    dmy.date_alternates = "_";
    EXPECT_EQ(parsed(parse_ymd_date_char, "1_2_2003", dmy), date::gregoriandate(2003, 2, 1));
}

TEST(ParseDatetime, Forms) {
    const date day = date::gregoriandate(2001, 2, 3);
    EXPECT_EQ(parsed(parse_iso_datetime_char, "2001-02-03T04:05:06.7"),
              datetime::at(day, 4 * ticks_per_hour + 5 * ticks_per_minute + 6 * ticks_per_second + 7000));
    EXPECT_EQ(parsed(parse_iso_datetime_char, "2001-02-03 23:59Z"),
              datetime::at(day, 23 * ticks_per_hour + 59 * ticks_per_minute));
    EXPECT_EQ(parsed(parse_iso_datetime_char, "2001-02-03  01:00"), datetime::at(day, ticks_per_hour));
    EXPECT_EQ(parsed(parse_datetime_char, "2001/02/03"), datetime::at(day));
    for (const char* junk : {"2001-02-03", "2001-02-03 ", "2001-02-03 24:00", "2001-02-03 1:60", "2001-02-03 1:2:60",
                             "2001-02-03 1:2:3.", "2001-02-03 1:2:3.4x", "2001-02-0304:05"}) {
        EXPECT_TRUE(refuses(parse_iso_datetime_char, junk)) << junk;
    }
    parse_config mdy;
    mdy.date_order = {parse_config::month, parse_config::day, parse_config::year};
    EXPECT_EQ(parsed(parse_ymd_datetime_char, "2/3/2001 12:00 AM", mdy), datetime::at(day));
    EXPECT_EQ(parsed(parse_ymd_datetime_char, "2/3/01 1:30:00 pm", mdy),
              datetime::at(day, 13 * ticks_per_hour + 30 * ticks_per_minute));
    EXPECT_TRUE(refuses(parse_ymd_datetime_char, "2/3/01 13:30 pm", mdy));
}

TEST(ParseDuration, Forms) {
    EXPECT_EQ(parsed(parse_iso_duration_char, "1:02:03").value,
              ticks_per_hour + 2 * ticks_per_minute + 3 * ticks_per_second);
    EXPECT_TRUE(refuses(parse_iso_duration_char, "12"));
    EXPECT_TRUE(refuses(parse_iso_duration_char, "12:"));
    EXPECT_TRUE(refuses(parse_iso_duration_char, "1:2:3:4:5"));
    EXPECT_EQ(parsed(parse_duration_char, "-999999999:0:0:0").value, -999999999 * ticks_per_day);
}

TEST(ParseText, Quotes) {
    const auto unquoted = [](std::string_view text) {
        std::string value;
        const bool failed =
            parse_varchar_char(value, 0, static_cast<unsigned>(text.size()), text.data(), parse_config::standard());
        return failed ? "failed" : value;
    };
    EXPECT_EQ(unquoted("plain"), "plain");
    EXPECT_EQ(unquoted(""), "");
    EXPECT_EQ(unquoted("\"\""), "");
    EXPECT_EQ(unquoted("\"a \"\"b\"\" c\""), "a \"b\" c");
    EXPECT_EQ(unquoted("'a, b'"), "a, b");
    EXPECT_EQ(unquoted("C:\\new"), "C:\\new");
    EXPECT_EQ(unquoted("\"say \\\"hi\\\", C:\\temp\""), "say \"hi\", C:\\temp");
    EXPECT_EQ(unquoted("\"open"), "failed");
    EXPECT_EQ(unquoted("'"), "failed");
    EXPECT_EQ(unquoted("5\" disk"), "5\" disk");
}

TEST(ParseWide, UnitsOfAnyWidth) {
    double value = 0;
    EXPECT_FALSE(parse_value(value, 1, 5, u"x12.5y", parse_config::standard()));
    EXPECT_EQ(value, 12.5);
    EXPECT_TRUE(parse_value(value, 0, 2, U"1\u0660", parse_config::standard()));
    EXPECT_TRUE(is_null(value));
    const std::u32string zeros(500, U'0');
    EXPECT_FALSE(parse_value(value, 0, 500, zeros.data(), parse_config::standard()));
    EXPECT_EQ(value, 0.0);
}

// Random numbers in several spellings against the standard library.
TEST(ParseFuzz, NumbersAgreeWithTheLibrary) {
    constexpr unsigned seed = 20250611;
    RecordProperty("seed", static_cast<int>(seed));
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    char text[64];
    for (int i = 0; i < 50000; ++i) {
        const auto bits = random();
        const long long integer = static_cast<long long>(bits) >> (random() % 64);
        if (is_null(integer)) continue;
        *std::to_chars(text, text + sizeof text, integer).ptr = 0;
        ASSERT_EQ(parsed(parse_bigint_char, text), integer);
        std::snprintf(text, sizeof text, "%lld.%02llu", integer, static_cast<unsigned long long>(random() % 100));
        double expected = 0;
        std::from_chars(text, text + std::char_traits<char>::length(text), expected);
        ASSERT_EQ(parsed(parse_double_char, text), expected) << text;
        float narrow = 0;
        std::from_chars(text, text + std::char_traits<char>::length(text), narrow);
        ASSERT_EQ(parsed(parse_float_char, text), narrow) << text;
        const double real = std::bit_cast<double>(bits);
        if (!std::isfinite(real)) continue;
        *std::to_chars(text, text + sizeof text, real).ptr = 0;
        ASSERT_EQ(parsed(parse_double_char, text), real) << text;
    }
}

// Junk of the characters that matter: no parser may read beyond its bounds, crash, or call a null a success.
TEST(ParseFuzz, JunkNeverBreaksAnything) {
    constexpr unsigned seed = 77551;
    RecordProperty("seed", static_cast<int>(seed));
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    constexpr std::string_view alphabet = "0123456789012345678901234567890123456789+-.,eE%:/ TZamPM$()\"'\\\xC3";
    parse_config config;
    config.currency = "$";
    for (int i = 0; i < 50000; ++i) {
        std::string text;
        for (auto n = random() % 28; n > 0; --n) text.push_back(alphabet[random() % alphabet.size()]);
        config.date_order = i % 2 ? std::array{parse_config::day, parse_config::month, parse_config::year}
                                  : std::array{parse_config::year, parse_config::month, parse_config::day};
        // An exact allocation, for the address sanitizer.
        const std::vector<char> exact(text.begin(), text.end());
        const auto n = static_cast<unsigned>(exact.size());
        const auto check = [&](auto parse, auto value) {
            const bool failed = parse(value, 0, n, exact.data(), config);
            ASSERT_EQ(failed, is_null(value)) << text;
        };
        check(parse_bit_char, bit{});
        check(parse_boolean_char, bit{});
        check(parse_tiny_char, char{});
        check(parse_bigint_char, 0LL);
        check(parse_oid_char, 0ULL);
        check(parse_float_char, 0.0F);
        check(parse_double_char, 0.0);
        check(parse_currency_char, 0.0);
        check(parse_iso_date_char, date{});
        check(parse_integer_date_char, date{});
        check(parse_ymd_date_char, date{});
        check(parse_iso_datetime_char, datetime{});
        check(parse_ymd_datetime_char, datetime{});
        check(parse_datetime_char, datetime{});
        check(parse_iso_duration_char, duration{});
        check(parse_duration_char, duration{});
        std::string unquoted;
        parse_varchar_char(unquoted, 0, n, exact.data(), config);
        ASSERT_LE(unquoted.size(), text.size());
    }
}

}  // namespace
}  // namespace qve
