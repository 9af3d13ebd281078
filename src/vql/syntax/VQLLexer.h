#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "vql/syntax/VQLDataValue.h"
#include "vql/syntax/VQLToken.h"

namespace qve {

/// Splits statement text into tokens. One lexer lexes one text; its tokens die with it.
class VQLLexer {
public:
    /// A place in the text, with its line and column, both counted from 0.
    class Iterator {
    public:
        explicit Iterator(const wchar_t* text, int line = 0, int column = 0)
            : m_text(text), m_line(line), m_column(column) {}
        wchar_t operator*() const { return *m_text; }
        Iterator& operator++();
        const wchar_t* GetText() const { return m_text; }
        VQLPosition GetPosition() const { return VQLPosition(m_line, m_column); }
        /// The number of characters between two places.
        friend long operator-(const Iterator& a, const Iterator& b) { return a.m_text - b.m_text; }

    private:
        const wchar_t* m_text;
        int m_line;
        int m_column;
    };

    /// A token of this many characters is refused.
    static constexpr long maxTokenLength = 65536;

    /// Appends the tokens of the zero-terminated text. Throws VQLParseException 49032 at the start of a bad token, and
    /// "query too large" at the first token over VQLEvaluatorSettings::GetMaxQueryTokenCount().
    void operator()(const wchar_t* text) { (*this)(Iterator(text)); }
    void operator()(const Iterator& start);

    const std::vector<VQLToken>& GetTokens() const { return m_tokens; }

    /// Tab, line feed, vertical tab, form feed, carriage return, blank.
    static bool IsWhitespace(wchar_t c);
    /// Whitespace and the characters that end a word: " # ( ) ; [ ]
    static bool IsDelimiter(wchar_t c);
    static bool IsNumber(const wchar_t* text);
    static bool IsNumber(const wchar_t* text, long length);
    static bool IsBoolean(const wchar_t* text, long length);

    /// The value of the text of a literal token. Throws VQLParseException 49027 to 49031 at `position`.
    static VQLDataValue ParseLiteral(const wchar_t* text, const VQLPosition& position);

    /// Reads one complete form, calling `prompt` with the depth of open parentheses before each line.
    /// At the end of the stream it gives what has come so far.
    static std::wstring ReadWellFormed(std::wistream& input, void* context, void (*prompt)(void* context, int depth));

private:
    Iterator ConsumeIdentifier(Iterator at) const;
    Iterator ConsumeString(Iterator at) const;
    Iterator ConsumeDate(Iterator at) const;
    void Emit(VQLTokenType type, const Iterator& start, long length);
    [[noreturn]] static void Raise(const wchar_t* message, const Iterator& at);

    std::vector<VQLToken> m_tokens;
    VQLTokenSymbols m_symbols;
};

}  // namespace qve
