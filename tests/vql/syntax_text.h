#pragma once

#include "vql/VQLExpressionFormatter.h"
#include "vql/VQLExpressionParser.h"
#include "vql/VQLQueryFormatter.h"
#include "vql/VQLQueryParser.h"

namespace qve::test {

/// Statement text to trees and back, in one dictionary.
class SyntaxText {
public:
    SymbolDictionary dictionary;

    RefCntPtr<VQLQuery> Query(const std::wstring& text) { return VQLQueryParser(dictionary)(text.c_str()); }
    RefCntPtr<VQLExpression> Expression(const std::wstring& text) {
        return VQLExpressionParser()(text.c_str(), dictionary, {});
    }
    VQLIdentifier Name(const std::wstring& text) { return VQLIdentifier::Quoted(text, dictionary); }

    /// A query's text with every run of whitespace as one blank, and none before a parenthesis.
    static std::wstring OneLine(const std::wstring& text) {
        std::wstring line;
        for (const wchar_t c : text) {
            const wchar_t plain = c == L'\n' ? L' ' : c;
            if (plain == L' ' && (line.empty() || line.back() == L' ' || line.back() == L'(')) continue;
            line += plain;
        }
        return line;
    }
    static std::wstring Text(const RefCntPtr<VQLQuery>& query) { return OneLine(FormatQuery(query)); }
};

}  // namespace qve::test
