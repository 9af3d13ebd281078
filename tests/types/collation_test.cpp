#include "types/collation.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>

#include "system/QuillonException.h"
#include "system/unicode.h"
#include "tests/types/text_atoms.h"
#include "types/ICUCollation.h"

namespace qve {
namespace {

using test::text;
using test::utf8;

const collation& get(const wchar_t* name) {
    return *collation::resolve(name);
}

template <class Call>
int status_of(Call call) {
    try {
        call();
    } catch (const QuillonException& fault) {
        return fault.GetStatus();
    }
    return 0;
}

std::vector<unsigned char> key_of(const collation& rules, const usratom& atom) {
    std::vector<unsigned char> key;
    rules.sortkey(key, atom);
    return key;
}

TEST(Collations, AreAllDefined) {
    EXPECT_EQ(ICUCollation::GetBuiltins().size(), 42U);
    for (const auto& row : ICUCollation::GetBuiltins()) {
        EXPECT_EQ(get(row.name).compare(text("a"), text("b")), -1) << row.locale;
    }
    EXPECT_EQ(status_of([] { collation::resolve(L"xx"); }), 40662);
    EXPECT_EQ(status_of([] { ICUCollation::Builtin(L"xx"); }), 40191);
    EXPECT_EQ(status_of([] { ICUCollation(L"x", "en", 2); }), 40194);
    EXPECT_EQ(status_of([] { ICUCollation(L"x", "en", 5); }), 40194);
    EXPECT_EQ(dynamic_cast<const ICUCollation&>(get(L"fr_CA")).GetLocale(), "fr");
}

// Texts of printable ASCII are searched by their bytes where the collation allows; a part in another width of units
// goes the long way, by ICU, and must find the same.
TEST(Collations, SearchAsciiByBytesAsByWeights) {
    std::mt19937 random(3);
    const auto random_text = [&random](unsigned longest) {
        std::string result;
        for (unsigned left = random() % (longest + 1); left > 0; --left) result += "aAbchs -.'0"[random() % 11];
        return result;
    };
    unsigned by_byte = 0;
    for (const auto& row : ICUCollation::GetBuiltins()) {
        const collation& rules = get(row.name);
        if (rules.compares_ascii_by_byte()) {
            ++by_byte;
            for (char x = ' '; x <= '~'; ++x) {
                for (char y = ' '; y <= '~'; ++y) {
                    EXPECT_EQ(rules.compare(text({&x, 1}), text({&y, 1})) == 0, x == y) << row.locale << x << y;
                }
            }
        }
        for (int i = 0; i < 150; ++i) {
            const std::string whole = random_text(10);
            const std::string part = random_text(3);
            const std::string shown = narrow(row.name) + ": '" + part + "' in '" + whole + "'";
            const size_t scale = i % 2 ? 2 : 1;
            const usratom in = text(whole, scale), same = text(part, scale), other = text(part, 3 - scale);
            EXPECT_EQ(rules.contains(in, same), rules.contains(in, other)) << shown;
            EXPECT_EQ(rules.startswith(in, same), rules.startswith(in, other)) << shown;
            EXPECT_EQ(rules.endswith(in, same), rules.endswith(in, other)) << shown;
            const int start = static_cast<int>(random() % 12);
            EXPECT_EQ(rules.find(in, same, start), rules.find(in, other, start)) << shown << " from " << start;
            if (rules.compares_ascii_by_byte()) {
                EXPECT_EQ(rules.compare(in, text(part, scale)) == 0, whole == part) << shown;
            }
        }
    }
    EXPECT_GT(by_byte, 10U);
    EXPECT_TRUE(get(L"en_US").compares_ascii_by_byte());
    EXPECT_FALSE(get(L"en_US_CI").compares_ascii_by_byte());
    // Control characters and what stands beyond ASCII are for ICU: the one has no weight, the other may be written
    // twice.
    EXPECT_TRUE(get(L"en_US").contains(text("a\x01"
                                            "b"),
                                       text("ab")));
    EXPECT_TRUE(get(L"en_US").contains(text("caf\xC3\xA9"), text("cafe\xCC\x81")));
}

TEST(Collations, Strengths) {
    const usratom a = text("resume");
    const usratom upper = text("RESUME");
    const usratom accented = text("r\xC3\xA9sum\xC3\xA9");
    EXPECT_NE(get(L"en_US").compare(a, upper), 0);
    EXPECT_EQ(get(L"en_US_CI").compare(a, upper), 0);
    EXPECT_EQ(get(L"en_US_CI").hash(a), get(L"en_US_CI").hash(upper));
    EXPECT_NE(get(L"en_US").hash(a), get(L"en_US").hash(upper));
    EXPECT_NE(get(L"cs_CI").compare(a, accented), 0);
    EXPECT_EQ(get(L"cs_CI_AI").compare(a, accented), 0);
    EXPECT_EQ(get(L"cs_CI_AI").hash(a), get(L"cs_CI_AI").hash(accented));
    EXPECT_EQ(get(L"cs_CI_AI").hash(a), get(L"cs_CI_AI").hash(text("R\xC3\x89SUM\xC3\x89", 2)));
    // Spanish sorts ny behind n, Swedish a with a ring behind z.
    EXPECT_EQ(get(L"es").compare(text("\xC3\xB1"), text("nz")), 1);
    EXPECT_EQ(get(L"sv_SE").compare(text("\xC3\xA5"), text("z")), 1);
    EXPECT_EQ(get(L"de").compare(text("\xC3\xA5"), text("z")), -1);
    // Small kana are told apart before the script.
    EXPECT_EQ(get(L"ja_JIS").compare(text("\xE3\x81\x83"), text("\xE3\x81\x84")), -1);
}

TEST(Collations, SortKeysOrderAsCompareDoes) {
    const char* const words[] = {"", "a", "A", "\xC3\xA4", "ab", "b", "\xEF\xBF\xBD", "\xF0\x9F\x98\x80", "Z"};
    for (const wchar_t* name : {L"binary", L"root", L"en_US_CI", L"de"}) {
        for (const size_t scale : {1, 2, 4}) {
            for (const char* x : words) {
                for (const char* y : words) {
                    const usratom a = text(x, scale);
                    const usratom b = text(y, scale);
                    const auto ka = key_of(get(name), a);
                    const auto kb = key_of(get(name), b);
                    const int by_key = (ka > kb) - (ka < kb);
                    EXPECT_EQ(get(name).compare(a, b), by_key) << x << " " << y << " " << scale;
                    EXPECT_EQ(get(name).compare(b, a), -by_key);
                }
            }
        }
    }
}

TEST(Collations, HashWithoutSortKeys) {
    const collation& rules = get(L"en_US_CI");
    const unsigned slow = rules.hash(text("Hello"));
    ICUCollation::s_OptimizeICU = true;
    EXPECT_EQ(rules.hash(text("Hello")), rules.hash(text("hELLO", 2)));
    EXPECT_NE(get(L"en_US").hash(text("Hello")), get(L"en_US").hash(text("hello")));
    ICUCollation::s_OptimizeICU = false;
    EXPECT_EQ(rules.hash(text("Hello")), slow);
}

TEST(BinaryCollation, OrdersByUnits) {
    const collation& binary = get(L"binary");
    EXPECT_EQ(binary.compare(text("B"), text("a")), -1);
    EXPECT_EQ(binary.compare(text("ab"), text("a")), 1);
    EXPECT_EQ(binary.compare(text("\xC4\x80", 2), text("a", 2)), 1);  // not by the first byte in memory
    EXPECT_EQ(binary.compare(text("same", 1), text("same", 4)), 0);
    EXPECT_EQ(binary.compare(text("\xC3\xA4", 1), text("b", 2)), 1);
}

// What holds for every collation, in every mix of scales.
class Searching : public testing::TestWithParam<std::tuple<const wchar_t*, size_t, size_t>> {
protected:
    const collation& rules = get(std::get<0>(GetParam()));
    usratom whole(const char* value) { return text(value, std::get<1>(GetParam())); }
    usratom part(const char* value) { return text(value, std::get<2>(GetParam())); }
    std::string split(const char* value, const char* delimiter, int n) {
        usratom result;
        rules.split(result, whole(value), part(delimiter), n);
        return utf8(result);
    }
    std::string replace(const char* value, const char* from, const char* to) {
        usratom result;
        rules.replace(result, whole(value), part(from), part(to));
        return utf8(result);
    }
};

TEST_P(Searching, PartsAreFound) {
    const usratom euros = whole("\xE2\x82\xAC one \xE2\x82\xAC two");
    EXPECT_TRUE(rules.startswith(euros, part("\xE2\x82\xAC on")));
    EXPECT_FALSE(rules.startswith(euros, part("one")));
    EXPECT_TRUE(rules.endswith(euros, part("two")));
    EXPECT_FALSE(rules.endswith(euros, part("one")));
    EXPECT_TRUE(rules.contains(euros, part("one \xE2\x82\xAC")));
    EXPECT_FALSE(rules.contains(euros, part("three")));
    for (const char* empty : {"", "x"}) {
        EXPECT_TRUE(rules.contains(whole(empty), part("")));
        EXPECT_TRUE(rules.startswith(whole(empty), part("")));
        EXPECT_TRUE(rules.endswith(whole(empty), part("")));
        EXPECT_EQ(rules.find(whole(empty), part(""), 1), 1);
    }
    EXPECT_FALSE(rules.contains(whole(""), part("x")));
    EXPECT_EQ(rules.find(euros, part("one"), 1), 3);
    EXPECT_EQ(rules.find(euros, part("\xE2\x82\xAC"), 1), 1);
    EXPECT_EQ(rules.find(euros, part("\xE2\x82\xAC"), 2), 7);
    EXPECT_EQ(rules.find(euros, part("two"), 9), 9);
    EXPECT_EQ(rules.find(euros, part("two"), 10), 0);
    EXPECT_EQ(rules.find(euros, part("two"), 100), 0);
    EXPECT_EQ(rules.find(whole(""), part("x"), 1), 0);
    EXPECT_EQ(rules.findNth(whole("a-b-c-"), part("-"), 2), 4);
    EXPECT_EQ(rules.findNth(whole("a-b-c-"), part("-"), -1), 6);
    EXPECT_EQ(rules.findNth(whole("a-b-c-"), part("-"), -3), 2);
    EXPECT_EQ(rules.findNth(whole("a-b-c-"), part("-"), 4), 0);
    EXPECT_EQ(rules.findNth(whole("a-b-c-"), part("-"), -4), 0);
    EXPECT_EQ(rules.findNth(whole("a-b-c-"), part("-"), 0), 0);
}

TEST_P(Searching, SplitsAndReplaces) {
    EXPECT_EQ(split("a, b, \xC3\xA4", ", ", 1), "a");
    EXPECT_EQ(split("a, b, \xC3\xA4", ", ", 3), "\xC3\xA4");
    EXPECT_EQ(split("a, b, \xC3\xA4", ", ", 4), "");
    EXPECT_EQ(split("a, b, \xC3\xA4", ", ", -1), "\xC3\xA4");
    EXPECT_EQ(split("a, b, \xC3\xA4", ", ", -3), "a");
    EXPECT_EQ(split("a, b, \xC3\xA4", ", ", -4), "");
    EXPECT_EQ(split("none", ", ", 1), "none");
    EXPECT_EQ(split("none", ", ", -1), "none");
    EXPECT_EQ(split("none", "", 1), "none");
    EXPECT_EQ(split("", ",", 1), "");
    EXPECT_EQ(split("x,,y,", ",", 2), "");
    EXPECT_EQ(split("x,,y,", ",", -1), "");
    EXPECT_EQ(replace("one two one", "one", "\xE2\x82\xAC"), "\xE2\x82\xAC two \xE2\x82\xAC");
    EXPECT_EQ(replace("aaa", "aa", "b"), "ba");
    EXPECT_EQ(replace("same", "", "x"), "same");
    EXPECT_EQ(replace("", "x", "y"), "");
    EXPECT_EQ(replace("gone", "gone", ""), "");
}

TEST_P(Searching, CasesAndTrims) {
    usratom result;
    rules.upper(whole("stra\xC3\x9F"
                      "e"),
                result);
    EXPECT_EQ(utf8(result), "STRASSE");
    usratom lowered;
    rules.lower(whole("\xC3\x84Z 1"), lowered);
    EXPECT_EQ(utf8(lowered), "\xC3\xA4z 1");
    EXPECT_EQ(lowered.type(), whole("").type());
    usratom ascii;
    rules.lower(whole("PLAIN"), ascii);
    EXPECT_EQ(utf8(ascii), "plain");
    usratom trimmed;
    const usratom spaced = whole("\t \xE2\x80\x83x y\xC2\xA0\n");
    rules.ltrim(spaced, trimmed);
    EXPECT_EQ(utf8(trimmed), "x y\xC2\xA0\n");
    rules.rtrim(spaced, trimmed);
    EXPECT_EQ(utf8(trimmed), "\t \xE2\x80\x83x y");
    rules.trim(spaced, trimmed);
    EXPECT_EQ(utf8(trimmed), "x y");
    usratom blanks = whole("  ");
    rules.trim(blanks, blanks);
    EXPECT_EQ(utf8(blanks), "");
    EXPECT_FALSE(blanks.isnull());
}

TEST_P(Searching, NullArgumentsAreRefused) {
    const usratom null(whole("").type());
    const usratom x = whole("x");
    usratom result;
    const auto message = [](auto call) -> std::string {
        try {
            call();
        } catch (const QVE_InvalidArgument& fault) {
            return fault.GetText();
        }
        return "nothing";
    };
    EXPECT_EQ(message([&] { rules.compare(null, x); }), "collation::compare: Null argument");
    EXPECT_EQ(message([&] { rules.find(x, null, 1); }), "collation::find: Null argument");
    EXPECT_EQ(message([&] { rules.contains(null, x); }), "collation::contains: Null argument");
    EXPECT_EQ(message([&] { rules.replace(result, x, x, null); }), "ICUCollation::replace: Null argument");
    EXPECT_EQ(message([&] { rules.trim(null, result); }), "collation::upper: Null argument");
    std::vector<unsigned char> key;
    EXPECT_EQ(message([&] { rules.sortkey(key, null); }), "ICUCollation::Collator::sortkey: Null argument");
    if (rules.name() == collation::collationBinary) {
        EXPECT_EQ(status_of([&] { rules.split(result, null, x, 1); }), 40028);
    } else {
        EXPECT_EQ(message([&] { rules.split(result, null, x, 1); }), "ICUCollation::split: Null argument");
    }
}

INSTANTIATE_TEST_SUITE_P(All, Searching,
                         testing::Combine(testing::Values(L"binary", L"en_US", L"de"), testing::Values(1, 2, 4),
                                          testing::Values(1, 2)));

TEST(Collations, SearchByTheRules) {
    EXPECT_TRUE(get(L"en_US_CI").contains(text("Hello World"), text("WORLD")));
    EXPECT_FALSE(get(L"en_US").contains(text("Hello World"), text("WORLD")));
    usratom upper;
    get(L"tr").upper(text("i"), upper);
    EXPECT_EQ(utf8(upper), "\xC4\xB0");
    usratom binary_upper;
    get(L"binary").upper(text("i"), binary_upper);
    EXPECT_EQ(utf8(binary_upper), "I");
}

TEST(Collations, EachThreadHasItsCollator) {
    std::vector<std::jthread> threads;
    std::vector<int> wrong(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &wrong] {
            const collation* mine = get(L"en_US_CI").allocate();
            for (int i = 0; i < 300; ++i) {
                const usratom a = text("Text " + std::to_string(i));
                const usratom b = text("tEXT " + std::to_string(i), 2);
                wrong[t] += mine->compare(a, b) != 0 || mine->hash(a) != mine->hash(b);
            }
            get(L"en_US_CI").release(mine);
            collation::releaseAllLocal();
            wrong[t] += get(L"en_US_CI").compare(text("a"), text("A")) != 0;
        });
    }
    threads.clear();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

}  // namespace
}  // namespace qve
