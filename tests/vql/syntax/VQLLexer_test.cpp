#include "vql/syntax/VQLLexer.h"

#include <gmock/gmock.h>

#include <limits>
#include <sstream>

#include "tests/vql/raised_error.h"
#include "vql/syntax/VQLEvaluatorSettings.h"

namespace qve {
namespace {

using test::Raised;
using test::RaisedError;

/// The tokens as "kind:text@line:column", kinds as one letter.
std::vector<std::string> Tokens(const std::wstring& text) {
    VQLLexer lexer;
    lexer(text.c_str());
    std::vector<std::string> tokens;
    for (const VQLToken& token : lexer.GetTokens()) {
        const VQLPosition& position = token.GetPosition();
        tokens.push_back(std::string(1, "()sli"[static_cast<int>(token.GetType())]) + ":" + narrow(*token.GetValue()) +
                         "@" + std::to_string(position.GetLineNo()) + ":" + std::to_string(position.GetColumnNo()));
    }
    return tokens;
}

RaisedError LexError(const std::wstring& text) {
    return Raised([&] { Tokens(text); });
}

VQLDataValue Literal(const std::wstring& text) {
    return VQLLexer::ParseLiteral(text.c_str(), VQLPosition(3, 7));
}

RaisedError LiteralError(const std::wstring& text) {
    return Raised([&] { Literal(text); });
}

TEST(VQLLexer, SplitsWordsAtDelimitersOnly) {
    EXPECT_THAT(Tokens(L""), testing::IsEmpty());
    EXPECT_THAT(Tokens(L" \t\v\f\r\n; only a comment"), testing::IsEmpty());
    EXPECT_THAT(Tokens(L"(>= a.b x-1)"),
                testing::ElementsAre("(:(@0:0", "s:>=@0:1", "s:a.b@0:4", "s:x-1@0:8", "):)@0:11"));
    EXPECT_THAT(Tokens(L"abc#2001-01-01#"), testing::ElementsAre("s:abc@0:0", "l:#2001-01-01#@0:3"));
    EXPECT_THAT(Tokens(L"a;c)\nb"), testing::ElementsAre("s:a@0:0", "s:b@1:0"));
    EXPECT_THAT(Tokens(L"[a]b"), testing::ElementsAre("i:[a]@0:0", "s:b@0:3"));
    // A no-break space and other letters of the world are no whitespace to the language.
    EXPECT_THAT(Tokens(L"a\u00a0b \U0001F600"), testing::ElementsAre("s:a\u00a0b@0:0", "s:\U0001F600@0:4"));
}

TEST(VQLLexer, TellsNumbersAndBooleansFromSymbols) {
    for (const wchar_t* literal : {L"1", L"+5", L"-.5", L".5", L"5.", L"1e5", L"1.e-3", L"0x10", L"0x1.8p3", L"true",
                                   L"TrUe", L"FALSE", L"1e999", L"9223372036854775808"})
        EXPECT_EQ(Tokens(literal)[0][0], 'l') << narrow(literal);
    for (const wchar_t* symbol : {L"2x", L"1e", L"-", L"+", L".", L"-.", L"+-5", L"truex", L"inf", L"nan", L"1,5",
                                  L"1e5x", L"0x", L"\u0663", L"1\u0663", L"--1", L"1_000"})
        EXPECT_EQ(Tokens(symbol)[0][0], 's') << narrow(symbol);
}

TEST(VQLLexer, CountsLinesInsideTokens) {
    EXPECT_THAT(Tokens(L"\"a\nb\" #1\n# [x\ny] z"),
                testing::ElementsAre("l:\"a\nb\"@0:0", "l:#1\n#@1:3", "i:[x\ny]@2:2", "s:z@3:3"));
    EXPECT_THAT(Tokens(L"\"\\\n\"z"), testing::ElementsAre("l:\"\\\n\"@0:0", "s:z@1:1"));
}

TEST(VQLLexer, ReadsIdentifiersOverEscapesAndStops) {
    EXPECT_THAT(Tokens(L"[a\\]b].[c].[]"), testing::ElementsAre("i:[a\\]b].[c].[]@0:0"));
    EXPECT_THAT(Tokens(L"[a[b]"), testing::ElementsAre("i:[a[b]@0:0"));
}

TEST(VQLLexer, RaisesAtTheStartOfTheBadToken) {
    EXPECT_EQ(LexError(L"(a\n ]"), (RaisedError{49032, "misplaced ']'", 1, 1}));
    for (const wchar_t* text : {L"x [a", L"x [a].b", L"x [a].", L"x [a\\", L"x [a]."})
        EXPECT_EQ(LexError(text), (RaisedError{49032, "unterminated identifier", 0, 2})) << narrow(text);
    for (const wchar_t* text : {L"x \"a", L"x \"a\\", L"x \"a\\\""})
        EXPECT_EQ(LexError(text), (RaisedError{49032, "unterminated string constant", 0, 2})) << narrow(text);
    EXPECT_EQ(LexError(L"x #1"), (RaisedError{49032, "unterminated date", 0, 2}));
}

TEST(VQLLexer, LimitsTheLengthOfTokens) {
    EXPECT_EQ(Tokens(std::wstring(65535, L'a')).size(), 1u);
    EXPECT_EQ(LexError(L" " + std::wstring(65536, L'a')), (RaisedError{49032, "bad token size", 0, 1}));
    EXPECT_EQ(LexError(std::wstring(100000, L'1')).text, "bad token size");
    EXPECT_EQ(LexError(L"\"" + std::wstring(65534, L'a') + L"\"").text, "bad token size");
}

TEST(VQLLexer, LimitsTheNumberOfTokens) {
    VQLEvaluatorSettings::SetMaxQueryTokenCount(3);
    EXPECT_EQ(LexError(L"(a b)"), (RaisedError{49032, "query too large", 0, 4}));
    EXPECT_EQ(Tokens(L"(a)").size(), 3u);
    VQLEvaluatorSettings::SetMaxQueryTokenCount(0);
    EXPECT_EQ(VQLEvaluatorSettings::GetMaxQueryTokenCount(), std::numeric_limits<unsigned>::max());
}

TEST(VQLLexer, ReadsIntegersAndDoubles) {
    EXPECT_EQ(Literal(L"9223372036854775807").GetInteger(), std::numeric_limits<long long>::max());
    EXPECT_EQ(Literal(L"-9223372036854775808").GetInteger(), std::numeric_limits<long long>::min());
    EXPECT_EQ(Literal(L"9223372036854775808").GetDouble(), 9223372036854775808.0);
    EXPECT_EQ(Literal(L"+5").GetInteger(), 5);
    EXPECT_EQ(Literal(L"010").GetInteger(), 10);
    EXPECT_EQ(Literal(L"-.5").GetDouble(), -0.5);
    EXPECT_EQ(Literal(L"5.").GetDouble(), 5.0);
    EXPECT_EQ(Literal(L"0x10").GetDouble(), 16.0);
    EXPECT_EQ(Literal(L"1e999").GetDouble(), std::numeric_limits<double>::infinity());
    EXPECT_EQ(Literal(L"1e-999").GetDouble(), 0.0);
    EXPECT_EQ(Literal(L"0.1").GetDouble(), 0.1);
    EXPECT_EQ(LiteralError(L"12x"), (RaisedError{49031, "malformed literal", 3, 7}));
    EXPECT_EQ(LiteralError(L""), (RaisedError{49031, "malformed literal", 3, 7}));
}

TEST(VQLLexer, NumbersDoNotDependOnTheLocale) {
    // A thread's locale is all that a library may set without asking; it must not reach the statement.
    const locale_t german = newlocale(LC_ALL_MASK, "de_DE.UTF-8", nullptr);
    if (!german) GTEST_SKIP() << "no German locale";
    const locale_t before = uselocale(german);
    const double value = Literal(L"1.5").GetDouble();
    uselocale(before);
    freelocale(german);
    EXPECT_EQ(value, 1.5);
}

TEST(VQLLexer, ReadsStrings) {
    EXPECT_EQ(Literal(L"\"a\\qb\"").GetString(), L"aqb");
    EXPECT_EQ(Literal(L"\"\\n\\r\\t\\\\\\\"\"").GetString(), L"\n\r\t\\\"");
    EXPECT_EQ(Literal(L"\"\"").GetString(), L"");
    EXPECT_EQ(Literal(L"\"\U0001F600\u00e9\"").GetString(), L"\U0001F600\u00e9");
    EXPECT_EQ(LiteralError(L"\"a\\"), (RaisedError{49027, "malformed string literal", 3, 7}));
    EXPECT_EQ(LiteralError(L"\"a\"b\""), (RaisedError{49028, "malformed string literal", 3, 7}));
    EXPECT_EQ(LiteralError(L"\"a"), (RaisedError{49028, "malformed string literal", 3, 7}));
}

TEST(VQLLexer, ReadsDatesDatetimesAndDurations) {
    EXPECT_EQ(Literal(L"#2001-02-03#").GetDate(), (VQLDate{2001, 2, 3}));
    EXPECT_EQ(Literal(L"#1582-10-15#").GetDate(), (VQLDate{1582, 10, 15}));
    EXPECT_EQ(Literal(L"#1582-10-04#").GetDate(), (VQLDate{1582, 10, 4}));
    EXPECT_EQ(Literal(L"#2001-02-03 04:05:06#").GetDatetime(), (VQLDatetime{2001, 2, 3, 4, 5, 6, 0}));
    EXPECT_EQ(Literal(L"#2001-02-03 23:59:59.1234#").GetDatetime(), (VQLDatetime{2001, 2, 3, 23, 59, 59, 1234}));
    // No date, as a date has no colons.
    EXPECT_EQ(Literal(L"#1:02:03#").GetDuration(), (VQLDuration{0, 1, 2, 3, 0}));
    EXPECT_EQ(Literal(L"#5:01:02:03.5#").GetDuration(), (VQLDuration{5, 1, 2, 3, 5000}));
    EXPECT_EQ(Literal(L"#-1:02:03#").GetDuration(), (VQLDuration{0, -1, -2, -3, 0}));
    EXPECT_EQ(Literal(L"#-5:01:02:03.5#").GetDuration(), (VQLDuration{-5, -1, -2, -3, -5000}));
    for (const wchar_t* text :
         {L"##", L"#x#", L"#2001-13-01#", L"#2001-02-30#", L"#2001-02-03 x#", L"#9999999999:00:00:00#", L"#\u0661#"})
        EXPECT_EQ(LiteralError(text), (RaisedError{49030, "malformed datetime constant", 3, 7})) << narrow(text);
    EXPECT_EQ(LiteralError(L"#1"), (RaisedError{49029, "malformed date constant", 3, 7}));
}

/// Reads one form and notes the depths at which the prompt was shown.
std::wstring ReadForm(std::wistringstream& input, std::vector<int>& prompts) {
    return VQLLexer::ReadWellFormed(
        input, &prompts, [](void* depths, int depth) { static_cast<std::vector<int>*>(depths)->push_back(depth); });
}

TEST(ReadWellFormed, EndsAFormWithItsLine) {
    std::wistringstream input(L"(a\n (b)\n)\n(c) (d)\nword  \n");
    std::vector<int> prompts;
    EXPECT_EQ(ReadForm(input, prompts), L"(a\n (b)\n)\n");
    EXPECT_THAT(prompts, testing::ElementsAre(0, 1, 1));
    EXPECT_EQ(ReadForm(input, prompts), L"(c) (d)\n");
    EXPECT_EQ(ReadForm(input, prompts), L"word");
    EXPECT_EQ(ReadForm(input, prompts), L"");
}

TEST(ReadWellFormed, CountsNoParenthesesInsideQuotesBracketsAndComments) {
    std::vector<int> prompts;
    for (const wchar_t* form :
         {L"(\")\"\n[)]\n#)#\n; )\n)\n", L"(\"\\\")\"\n)\n", L"(\\)\n)\n", L"(; comment \\\n)\n"}) {
        std::wistringstream input(std::wstring(form) + L"(next)\n");
        EXPECT_EQ(ReadForm(input, prompts), form);
    }
    std::wistringstream input(L"  \n\n (a");
    EXPECT_EQ(ReadForm(input, prompts), L" (a");
}

}  // namespace
}  // namespace qve
