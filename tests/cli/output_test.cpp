#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/ErrorLocator.h"
#include "cli/ProgressBar.h"
#include "cli/ResultWriter.h"
#include "cli/display_width.h"
#include "cli/value_text.h"
#include "cli/vql_text.h"

namespace qve::cli {
namespace {

QVE_Value Text(const char* text) {
    return {QVE_TEXT8, static_cast<uint32_t>(std::strlen(text)), text};
}

template <class T>
QVE_Value Raw(uint32_t type, const T& payload) {
    return {type, sizeof(T), &payload};
}

std::string Print(Format format) {
    std::ostringstream output;
    const auto writer = ResultWriter::Make(format, output);
    writer->Begin({{"name", QVE_TEXT8}, {"n", QVE_INT64}});
    const int64_t numbers[] = {7, -1234};
    const QVE_Value rows[][2] = {{Text("a,\"b\"\tc\n"), Raw(QVE_INT64, numbers[0])},
                                 {Text("\xE6\x97\xA5\xE6\x9C\xAC"), Raw(QVE_INT64, numbers[1])},
                                 {Text(""), {QVE_INT64 | QVE_NULL, 0, nullptr}}};
    for (const auto& row : rows) writer->Row(row);
    writer->End();
    return output.str();
}

TEST(ResultWriter, AlignsTablesByDisplayWidth) {
    EXPECT_EQ(Print(Format::table),
              " name       | n\n"
              "------------+-------\n"
              " a,\"b\"\\tc\\n |     7\n"
              " \xE6\x97\xA5\xE6\x9C\xAC       | -1234\n"
              "            |  NULL\n"
              "(3 rows)\n");
}

TEST(ResultWriter, QuotesWhatASeparatorNeeds) {
    EXPECT_EQ(Print(Format::csv), "name,n\n\"a,\"\"b\"\"\tc\n\",7\n\xE6\x97\xA5\xE6\x9C\xAC,-1234\n\"\",\n");
    EXPECT_EQ(Print(Format::tsv), "name\tn\na,\"b\"\\tc\\n\t7\n\xE6\x97\xA5\xE6\x9C\xAC\t-1234\n\t\\N\n");
}

TEST(ResultWriter, WritesJson) {
    EXPECT_EQ(Print(Format::json),
              "[\n"
              "  {\"name\": \"a,\\\"b\\\"\\tc\\n\", \"n\": 7},\n"
              "  {\"name\": \"\xE6\x97\xA5\xE6\x9C\xAC\", \"n\": -1234},\n"
              "  {\"name\": \"\", \"n\": null}\n"
              "]\n");
}

TEST(ResultWriter, WritesJsonLines) {
    EXPECT_EQ(Print(Format::jsonl),
              "{\"name\": \"a,\\\"b\\\"\\tc\\n\", \"n\": 7}\n"
              "{\"name\": \"\xE6\x97\xA5\xE6\x9C\xAC\", \"n\": -1234}\n"
              "{\"name\": \"\", \"n\": null}\n");
}

TEST(ResultWriter, WritesOneLineForEachValue) {
    EXPECT_EQ(Print(Format::vertical),
              "-[ row 1 ]-\nname | a,\"b\"\\tc\\n\nn    | 7\n"
              "-[ row 2 ]-\nname | \xE6\x97\xA5\xE6\x9C\xAC\nn    | -1234\n"
              "-[ row 3 ]-\nname | \nn    | NULL\n");
}

TEST(ValueText, PrintsValuesInFull) {
    EXPECT_EQ(ValueText(Raw(QVE_DOUBLE, 0.1)), "0.1");
    EXPECT_EQ(ValueText(Raw(QVE_DOUBLE, 1e300)), "1e+300");
    EXPECT_EQ(ValueText(Raw(QVE_INT64, std::numeric_limits<int64_t>::min())), "-9223372036854775808");
    EXPECT_EQ(ValueText(Raw(QVE_BOOL, uint8_t{1})), "true");
    EXPECT_EQ(ValueText(Raw(QVE_DATE, QVE_Date{-44, 3, 15, {}})), "-0044-03-15");
    EXPECT_EQ(ValueText(Raw(QVE_DATETIME, QVE_Datetime{2020, 2, 29, 1, 2, 3, 0, 0})), "2020-02-29 01:02:03");
    EXPECT_EQ(ValueText(Raw(QVE_DATETIME, QVE_Datetime{2020, 2, 29, 1, 2, 3, 0, 40})), "2020-02-29 01:02:03.0040");
    EXPECT_EQ(ValueText(Raw(QVE_DURATION, QVE_Duration{0, -1, 0, -5, 0, 0, {}})), "-01:00:05");
    EXPECT_EQ(ValueText(Raw(QVE_DURATION, QVE_Duration{3, 0, 0, 0, 0, 0, {}})), "3:00:00:00");
}

TEST(DisplayWidth, CountsColumnsOfTheTerminal) {
    EXPECT_EQ(DisplayWidth("abc"), 3U);
    EXPECT_EQ(DisplayWidth("e\xCC\x81"), 1U);
    EXPECT_EQ(DisplayWidth("\xE6\x97\xA5"), 2U);
    EXPECT_EQ(DisplayWidth("\xFF"), 1U);
    EXPECT_EQ(Printable("a\x1B[31m\xFF"), "a\\x1b[31m\xEF\xBF\xBD");
}

TEST(TableName, HasASchemaOfItsOwnOrTheDefault) {
    EXPECT_EQ(TableName::Parse("sale").Quote(), "[main].[sale]");
    EXPECT_EQ(TableName::Parse("shop.sale").Quote(), "[shop].[sale]");
    EXPECT_EQ(TableName::Parse("a\\.b.x]y\\\\z").Quote(), "[a.b].[x\\]y\\\\z]");
    for (const char* bad : {"", ".", "a.", ".b", "a.b.c"}) EXPECT_THROW(TableName::Parse(bad), std::invalid_argument);
    EXPECT_EQ(QuoteText("a\"b\\c\n\t"), "\"a\\\"b\\\\c\\n\\t\"");
}

TEST(ProgressBar, ShowsTheShareWhereItIsKnown) {
    constexpr uint64_t unknown = ~uint64_t{0};
    EXPECT_EQ(ProgressLine({1234567, unknown, 50, 100}, 2.04, 60),
              "[###############...............]  50%  1,234,567 rows  2.0 s");
    EXPECT_EQ(ProgressLine({unknown, unknown, 3, 2}, 0, 20), "[######] 100%  0.0 s");
    EXPECT_EQ(ProgressLine({12, unknown, 7, unknown}, 61, 60), "12 rows  61.0 s");
    EXPECT_EQ(ProgressLine({12, unknown, 7, unknown}, 61, 4), "12 r");
}

TEST(ErrorLocator, FindsWhatTheParserRefuses) {
    const auto place = LocateError("(table [s].[t]\n  (x)", 49034, "list not closed");
    ASSERT_TRUE(place);
    EXPECT_EQ(place->line, 0);
    EXPECT_EQ(place->column, 0);
    const auto open = LocateError("(table\n  \"x", 49032, "unterminated string constant");
    ASSERT_TRUE(open);
    EXPECT_EQ(open->line, 1);
    EXPECT_EQ(open->column, 2);
}

TEST(ErrorLocator, FindsTheNameThatTheServerSpeaksOf) {
    const auto place = LocateError("(select (table [s].[t])\n (> [price] 1))", 49012, "no such column [price]");
    ASSERT_TRUE(place);
    EXPECT_EQ(place->line, 1);
    EXPECT_EQ(place->column, 4);
    EXPECT_FALSE(LocateError("(table [s].[t])", 49012, "something else"));
    EXPECT_FALSE(LocateError("(table [s].[t])", 40102, "[s].[t]"));
}

TEST(ErrorLocator, PutsTheCaretUnderThePlace) {
    EXPECT_EQ(ShowPlace("(a\n\t(\xE6\x97\xA5 x)\n)", {1, 4}), "\\t(\xE6\x97\xA5 x)\n      ^");
    EXPECT_EQ(ShowPlace("(a", {0, 99}), "(a\n  ^");
}

}  // namespace
}  // namespace qve::cli
