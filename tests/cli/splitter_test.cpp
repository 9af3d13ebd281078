#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/StatementSplitter.h"

namespace qve::cli {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The statements of a text that comes in pieces of `size` bytes.
std::vector<std::string> Split(const std::string& text, std::size_t size) {
    StatementSplitter splitter;
    std::vector<std::string> statements;
    for (std::size_t at = 0; at < text.size(); at += size) {
        splitter.Feed(text.substr(at, size));
        while (const auto statement = splitter.Next()) statements.push_back(statement->text);
    }
    while (const auto rest = splitter.TakeRest()) statements.push_back(rest->text);
    return statements;
}

std::vector<std::string> Split(const std::string& text) {
    const std::vector<std::string> whole = Split(text, text.size() + 1);
    EXPECT_EQ(Split(text, 1), whole) << text;
    EXPECT_EQ(Split(text, 3), whole) << text;
    return whole;
}

TEST(StatementSplitter, CutsAtBalancedParentheses) {
    EXPECT_THAT(Split("(a (b))(c)\n (d)"), ElementsAre("(a (b))", "(c)", "(d)"));
    EXPECT_THAT(Split(""), IsEmpty());
    EXPECT_THAT(Split(" \n ; only a comment (\n"), IsEmpty());
}

TEST(StatementSplitter, KnowsLiteralsIdentifiersAndComments) {
    EXPECT_THAT(Split("(a \")\\\")\")(b [x)\\])] #)#) (c ; )\n)"),
                ElementsAre("(a \")\\\")\")", "(b [x)\\])] #)#)", "(c ; )\n)"));
    EXPECT_THAT(Split("; (no)\n(yes) ; \"(\n(too)"), ElementsAre("(yes)", "(too)"));
}

TEST(StatementSplitter, GivesWhatIsNoListToTheServer) {
    EXPECT_THAT(Split("word (a) ) (b"), ElementsAre("word", "(a)", ")", "(b"));
    EXPECT_THAT(Split("(a \"open"), ElementsAre("(a \"open"));
    EXPECT_THAT(Split("(a \"open\\"), ElementsAre("(a \"open\\"));
}

TEST(StatementSplitter, TellsWhereAStatementBegan) {
    StatementSplitter splitter;
    splitter.Feed("(a)\n; \xC3\xA4\n  [\xC3\xA4] (b\n)");
    splitter.Next();
    const auto name = splitter.Next();
    ASSERT_TRUE(name);
    EXPECT_EQ(name->text, "[\xC3\xA4]");
    EXPECT_EQ(name->line, 2);
    EXPECT_EQ(name->column, 2);
    EXPECT_FALSE(splitter.IsInside());
    const auto list = splitter.Next();
    ASSERT_TRUE(list);
    EXPECT_EQ(list->line, 2);
    EXPECT_EQ(list->column, 6);
}

TEST(StatementSplitter, KnowsWhetherAStatementIsOpen) {
    StatementSplitter splitter;
    splitter.Feed("(a\n");
    EXPECT_FALSE(splitter.Next());
    EXPECT_TRUE(splitter.IsInside());
    splitter.Clear();
    EXPECT_FALSE(splitter.IsInside());
    EXPECT_FALSE(splitter.TakeRest());
}

}  // namespace
}  // namespace qve::cli
