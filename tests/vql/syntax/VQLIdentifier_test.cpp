#include "vql/syntax/VQLIdentifier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/vql/raised_error.h"
#include "vql/syntax/VQLIdentifierFactory.h"

namespace qve {
namespace {

using test::Raised;
using test::RaisedError;

TEST(SymbolDictionary, OrdersItsTextsWhateverTheSequenceOfTheirAdding) {
    SymbolDictionary dictionary;
    std::vector<std::wstring> texts;
    for (int i = 0; i < 500; ++i) texts.push_back(L"t" + std::to_wstring(i));
    std::vector<std::wstring> shuffled = texts;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(1));
    std::vector<SymbolDictionary::OrderedValuePtr> tokens;
    for (const std::wstring& text : shuffled) {
        tokens.push_back(dictionary.GetToken(text));
        // Comparing while texts still come in must not leave stale numbers behind.
        EXPECT_FALSE(tokens.back() < tokens.back());
        EXPECT_EQ(tokens.back() < tokens.front(), text < shuffled.front());
    }
    std::sort(texts.begin(), texts.end());
    for (size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(dictionary.GetToken(texts[i])->GetOrder(), i);
        EXPECT_EQ(dictionary.GetToken(texts[i]).AsString(), texts[i]);
    }
    EXPECT_FALSE(dictionary.count(L"unknown"));
    EXPECT_TRUE(dictionary.count(L"t7"));
}

TEST(SymbolDictionary, ComparesAcrossDictionariesByText) {
    SymbolDictionary a, b;
    b.GetToken(L"0");
    EXPECT_EQ(a.GetToken(L"x"), b.GetToken(L"x"));
    EXPECT_LT(a.GetToken(L"x"), b.GetToken(L"xa"));
    EXPECT_FALSE(b.GetToken(L"xa") < a.GetToken(L"x"));
    const SymbolDictionary::OrderedValuePtr none;
    EXPECT_EQ(none, none);
    EXPECT_LT(none, a.GetToken(L""));
    EXPECT_FALSE(none == a.GetToken(L""));
    EXPECT_EQ(none.AsString(), L"");
}

TEST(VQLIdentifier, ReadsQuotedText) {
    SymbolDictionary dictionary;
    const VQLIdentifier name = VQLIdentifier::Quoted(L"[s].[a\\]b\\\\[\\c].[]", dictionary);
    ASSERT_EQ(name.GetComponents().size(), 3u);
    EXPECT_EQ(name.GetComponents()[1].AsString(), L"a]b\\[c");
    EXPECT_EQ(name.GetComponents()[2].AsString(), L"");
    EXPECT_EQ(name.AsString(), L"[s].[a\\]b\\\\[c].[]");
    EXPECT_EQ(VQLIdentifier::Quoted(name.AsString(), dictionary), name);
    EXPECT_TRUE(VQLIdentifier::Quoted(L"", dictionary).empty());
    EXPECT_FALSE(VQLIdentifier::Quoted(L"[]", dictionary).empty());
}

TEST(VQLIdentifier, RaisesACodeForEachFault) {
    SymbolDictionary dictionary;
    const auto code = [&](const wchar_t* text) { return Raised([&] { VQLIdentifier::Quoted(text, dictionary); }); };
    EXPECT_EQ(code(L"a"), (RaisedError{49022, "", 0, 0}));
    EXPECT_EQ(code(L"[a"), (RaisedError{49023, "", 0, 0}));
    EXPECT_EQ(code(L"[a].["), (RaisedError{49023, "", 0, 0}));
    EXPECT_EQ(code(L"[a\\"), (RaisedError{49024, "", 0, 0}));
    EXPECT_EQ(code(L"[a]b"), (RaisedError{49025, "", 0, 0}));
    EXPECT_EQ(code(L"[a]."), (RaisedError{49026, "", 0, 0}));
    EXPECT_EQ(code(L"[a].b"), (RaisedError{49026, "", 0, 0}));
}

TEST(VQLIdentifier, TakesNamesApartAndPutsThemTogether) {
    SymbolDictionary dictionary;
    const VQLIdentifier name = VQLIdentifier::Quoted(L"[s].[t].[c]", dictionary);
    EXPECT_EQ(name.Head().AsString(), L"[s].[t]");
    EXPECT_EQ(name.Tail().AsString(), L"[c]");
    EXPECT_EQ(VQLIdentifier::Join(name.Head(), name.Tail(), dictionary), name);
    EXPECT_TRUE(name.Head().Head().Head().empty());
    EXPECT_TRUE(VQLIdentifier().Head().empty());
    EXPECT_TRUE(VQLIdentifier().Tail().empty());
    EXPECT_EQ(VQLIdentifier::Unquoted(L"a]b", dictionary).AsString(), L"[a\\]b]");
    EXPECT_EQ(VQLIdentifier::UnquotedName(L"a]b"), L"[a\\]b]");
    EXPECT_EQ(VQLIdentifier::FormatName({L"a", L"b\\"}), L"[a].[b\\\\]");
    EXPECT_TRUE(VQLIdentifier::Unquoted(L"", dictionary).empty());
    SymbolDictionary other;
    EXPECT_EQ(VQLIdentifier::Quoted(L"[s].[t].[c]", other), name);
    EXPECT_EQ(std::hash<VQLIdentifier>()(VQLIdentifier::Quoted(L"[s].[t].[c]", other)),
              std::hash<VQLIdentifier>()(name));
}

TEST(VQLIdentifierFactory, GivesNamesThatWereNotThere) {
    SymbolDictionary dictionary;
    dictionary.GetToken(L"$temp0");
    dictionary.GetToken(L"$temp2_x");
    VQLIdentifierFactory factory(dictionary);
    EXPECT_EQ(factory().AsString(), L"[$temp1]");
    EXPECT_EQ(factory(L"x").AsString(), L"[$temp3_x]");

    SymbolDictionary fresh;
    const VQLIdentifier name = VQLIdentifier::Quoted(L"[s].[t]", fresh);
    VQLIdentifierFactory uniquifier(fresh);
    EXPECT_EQ(uniquifier.Uniquify(name).AsString(), L"[s].[t#0]");
    EXPECT_EQ(uniquifier.Uniquify(name).AsString(), L"[s].[t#1]");
}

}  // namespace
}  // namespace qve
