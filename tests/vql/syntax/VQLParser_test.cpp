#include "vql/syntax/VQLParser.h"

#include <gtest/gtest.h>

#include "tests/vql/raised_error.h"
#include "vql/syntax/VQLLexer.h"

namespace qve {
namespace {

using test::Raised;
using test::RaisedError;

/// Writes a tree back, each kind in its own brackets.
class Writer : public VQLNodeVisitor {
public:
    std::wstring text;

private:
    void VisitList(VQLListNode& node) override {
        text += L"(";
        for (const RefCntPtr<VQLNode>& member : node.GetNodes()) member->Accept(*this);
        text += L")";
    }
    void VisitSymbol(VQLSymbolNode& node) override { text += L"s" + node.GetSymbol() + L" "; }
    void VisitLiteral(VQLLiteralNode& node) override {
        text += L"l" + FormatDataType(node.GetLiteral().GetType()) + L" ";
    }
    void VisitIdentifier(VQLIdentifierNode& node) override { text += L"i" + node.GetIdentifier().AsString() + L" "; }
};

RefCntPtr<VQLListNode> Parse(SymbolDictionary& dictionary, const std::wstring& text) {
    VQLLexer lexer;
    lexer(text.c_str());
    return VQLParser(dictionary)(lexer.GetTokens());
}

RaisedError ParseError(const std::wstring& text) {
    SymbolDictionary dictionary;
    return Raised([&] { Parse(dictionary, text); });
}

TEST(VQLParser, BuildsTheTree) {
    SymbolDictionary dictionary;
    Writer writer;
    Parse(dictionary, L"(select (table [s].[t]) (> [x] 2.5)) y ()")->Accept(writer);
    EXPECT_EQ(writer.text, L"((sselect (stable i[s].[t] )(s> i[x] ldouble ))sy ())");
}

TEST(VQLParser, KeepsPositions) {
    SymbolDictionary dictionary;
    const auto root = Parse(dictionary, L"(a\n  (b 1))");
    EXPECT_EQ(root->GetPosition(), VQLPosition(0, 0));
    const auto outer = DynamicPtrCast<VQLListNode>(root->GetNodes()[0]);
    EXPECT_EQ(outer->GetNodes()[1]->GetPosition(), VQLPosition(1, 2));
    EXPECT_EQ(DynamicPtrCast<VQLListNode>(outer->GetNodes()[1])->GetNodes()[1]->GetPosition(), VQLPosition(1, 5));
}

TEST(VQLParser, RefusesUnbalancedParentheses) {
    EXPECT_EQ(ParseError(L"a\n )"), (RaisedError{49034, "unbalanced right parenthesis", 1, 1}));
    EXPECT_EQ(ParseError(L"(a))"), (RaisedError{49034, "unbalanced right parenthesis", 0, 3}));
    EXPECT_EQ(ParseError(L" (a"), (RaisedError{49034, "list not closed", 0, 1}));
    // At the first token of the text, not at the list.
    EXPECT_EQ(ParseError(L"x (a"), (RaisedError{49034, "list not closed", 0, 0}));
}

TEST(VQLParser, RaisesTheErrorsOfLiteralsAtTheirPlace) {
    EXPECT_EQ(ParseError(L"(a\n ##)"), (RaisedError{49030, "malformed datetime constant", 1, 1}));
}

TEST(VQLParser, RefusesNestingThatWouldExhaustTheStack) {
    const auto nested = [](size_t depth) { return std::wstring(depth, L'(') + std::wstring(depth, L')'); };
    EXPECT_EQ(ParseError(nested(VQLParser::maxDepth)), RaisedError());
    EXPECT_EQ(ParseError(nested(VQLParser::maxDepth + 1)),
              (RaisedError{49032, "query too large", 0, static_cast<int>(VQLParser::maxDepth)}));
    EXPECT_EQ(ParseError(std::wstring(1000000, L'(')).text, "query too large");
    // Long is not deep.
    std::wstring flat;
    for (int i = 0; i < 100000; ++i) flat += L"()";
    EXPECT_EQ(ParseError(flat), RaisedError());
}

TEST(VQLParser, UnwrapsTheOneForm) {
    SymbolDictionary dictionary;
    const auto first = [&](const wchar_t* text, bool allowEmpty) {
        return VQLParser::ParseAndReturnFirstNode(dictionary, text, allowEmpty, [](RefCntPtr<VQLNode> root) {
            throw VQLException(static_cast<int>(static_cast<VQLListNode&>(*root).GetNodes().size()), L"not single");
        });
    };
    EXPECT_EQ(first(L" ; nothing\n", true), nullptr);
    EXPECT_TRUE(DynamicPtrCast<VQLSymbolNode>(first(L" word ", false)));
    EXPECT_EQ(Raised([&] { first(L"", false); }), (RaisedError{0, "not single"}));
    EXPECT_EQ(Raised([&] { first(L"(a)(b)", true); }), (RaisedError{2, "not single"}));
}

}  // namespace
}  // namespace qve
