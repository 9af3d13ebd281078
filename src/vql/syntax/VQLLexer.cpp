#include "vql/syntax/VQLLexer.h"

#include <istream>

#include "vql/syntax/VQLEvaluatorSettings.h"
#include "vql/syntax/number_text.h"
#include "vql/syntax/status.h"

namespace qve {

VQLLexer::Iterator& VQLLexer::Iterator::operator++() {
    if (*m_text++ == L'\n') {
        ++m_line;
        m_column = 0;
    } else {
        ++m_column;
    }
    return *this;
}

bool VQLLexer::IsWhitespace(wchar_t c) {
    return c == L' ' || (c >= L'\t' && c <= L'\r');
}

bool VQLLexer::IsDelimiter(wchar_t c) {
    switch (c) {
        case L'"':
        case L'#':
        case L'(':
        case L')':
        case L';':
        case L'[':
        case L']':
            return true;
        default:
            return IsWhitespace(c);
    }
}

bool VQLLexer::IsNumber(const wchar_t* text) {
    return IsNumber(text, static_cast<long>(std::wcslen(text)));
}

bool VQLLexer::IsNumber(const wchar_t* text, long length) {
    long digit = 0;
    if (digit < length && (text[digit] == L'+' || text[digit] == L'-')) ++digit;
    if (digit < length && text[digit] == L'.') ++digit;
    if (digit >= length || text[digit] < L'0' || text[digit] > L'9') return false;
    return ParseDouble({text, static_cast<size_t>(length)}).has_value();
}

bool VQLLexer::IsBoolean(const wchar_t* text, long length) {
    const auto is = [=](std::wstring_view word) {
        for (size_t i = 0; i < word.size(); ++i) {
            const wchar_t c = text[i];
            if ((c >= L'A' && c <= L'Z' ? c - L'A' + L'a' : c) != word[i]) return false;
        }
        return true;
    };
    return (length == 4 && is(L"true")) || (length == 5 && is(L"false"));
}

void VQLLexer::operator()(const Iterator& start) {
    Iterator at = start;
    while (*at) {
        const Iterator first = at;
        switch (*at) {
            case L';':
                while (*at && *at != L'\n') ++at;
                continue;
            case L']':
                Raise(L"misplaced ']'", first);
            case L'[':
                at = ConsumeIdentifier(at);
                Emit(VQLTokenType::identifier, first, at - first);
                continue;
            case L'"':
                at = ConsumeString(at);
                Emit(VQLTokenType::literal, first, at - first);
                continue;
            case L'#':
                at = ConsumeDate(at);
                Emit(VQLTokenType::literal, first, at - first);
                continue;
            case L'(':
                Emit(VQLTokenType::leftParenthesis, first, 1);
                ++at;
                continue;
            case L')':
                Emit(VQLTokenType::rightParenthesis, first, 1);
                ++at;
                continue;
            default:
                break;
        }
        if (IsWhitespace(*at)) {
            ++at;
            continue;
        }
        while (*at && !IsDelimiter(*at)) ++at;
        const long length = at - first;
        const bool isLiteral =
            length < maxTokenLength && (IsNumber(first.GetText(), length) || IsBoolean(first.GetText(), length));
        Emit(isLiteral ? VQLTokenType::literal : VQLTokenType::symbol, first, length);
    }
}

VQLLexer::Iterator VQLLexer::ConsumeIdentifier(Iterator at) const {
    const Iterator first = at;
    for (++at; *at; ++at) {
        if (*at == L'\\') {
            if (!*++at) break;
        } else if (*at == L']') {
            if (*++at != L'.') return at;
            if (*++at != L'[') break;
        }
    }
    Raise(L"unterminated identifier", first);
}

VQLLexer::Iterator VQLLexer::ConsumeString(Iterator at) const {
    const Iterator first = at;
    for (++at; *at; ++at) {
        if (*at == L'\\') {
            if (!*++at) break;
        } else if (*at == L'"') {
            return ++at;
        }
    }
    Raise(L"unterminated string constant", first);
}

VQLLexer::Iterator VQLLexer::ConsumeDate(Iterator at) const {
    const Iterator first = at;
    for (++at; *at; ++at)
        if (*at == L'#') return ++at;
    Raise(L"unterminated date", first);
}

void VQLLexer::Emit(VQLTokenType type, const Iterator& start, long length) {
    if (length >= maxTokenLength) Raise(L"bad token size", start);
    if (m_tokens.size() >= VQLEvaluatorSettings::GetMaxQueryTokenCount()) Raise(L"query too large", start);
    const VQLTokenSymbols::token text = m_symbols.Intern({start.GetText(), static_cast<size_t>(length)});
    m_tokens.emplace_back(type, start.GetPosition(), text);
}

void VQLLexer::Raise(const wchar_t* message, const Iterator& at) {
    throw VQLParseException(status::VQLLexer_Raise, message, at.GetPosition());
}

}  // namespace qve
