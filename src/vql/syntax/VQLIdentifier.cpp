#include "vql/syntax/VQLIdentifier.h"

#include "system/VQLException.h"
#include "vql/syntax/status.h"

namespace qve {

namespace {

void AppendQuoted(std::wstring& name, std::wstring_view component) {
    if (!name.empty()) name += L'.';
    name += L'[';
    for (const wchar_t c : component) {
        if (c == L'\\' || c == L']') name += L'\\';
        name += c;
    }
    name += L']';
}

}  // namespace

VQLIdentifier::VQLIdentifier(std::vector<Token> components, SymbolDictionary& dictionary)
    : m_components(std::move(components)) {
    if (!m_components.empty()) m_name = dictionary.GetToken(Format(m_components));
}

VQLIdentifier VQLIdentifier::Quoted(std::wstring_view text, SymbolDictionary& dictionary) {
    std::vector<Token> components;
    if (text.empty()) return {};
    if (text[0] != L'[') throw VQLParseException(status::VQLIdentifier_Quoted_NoBracket);
    std::wstring component;
    for (size_t i = 1;; ++i) {
        if (i == text.size()) throw VQLParseException(status::VQLIdentifier_Quoted_Unterminated);
        if (text[i] == L'\\') {
            if (++i == text.size()) throw VQLParseException(status::VQLIdentifier_Quoted_Backslash);
            component += text[i];
            continue;
        }
        if (text[i] != L']') {
            component += text[i];
            continue;
        }
        components.push_back(dictionary.GetToken(component));
        component.clear();
        if (++i == text.size()) break;
        if (text[i] != L'.') throw VQLParseException(status::VQLIdentifier_Quoted_AfterBracket);
        if (++i == text.size() || text[i] != L'[') throw VQLParseException(status::VQLIdentifier_Quoted_AfterStop);
    }
    return VQLIdentifier(std::move(components), dictionary);
}

VQLIdentifier VQLIdentifier::Unquoted(std::wstring_view text, SymbolDictionary& dictionary) {
    if (text.empty()) return {};
    return VQLIdentifier({dictionary.GetToken(text)}, dictionary);
}

std::wstring VQLIdentifier::UnquotedName(std::wstring_view text) {
    std::wstring name;
    AppendQuoted(name, text);
    return name;
}

std::wstring VQLIdentifier::FormatName(const std::vector<std::wstring>& components) {
    std::wstring name;
    for (const std::wstring& component : components) AppendQuoted(name, component);
    return name;
}

std::wstring VQLIdentifier::Format(const std::vector<Token>& components) {
    std::wstring name;
    for (const Token component : components) AppendQuoted(name, component.AsString());
    return name;
}

VQLIdentifier VQLIdentifier::Join(const VQLIdentifier& a, const VQLIdentifier& b, SymbolDictionary& dictionary) {
    std::vector<Token> components = a.m_components;
    components.insert(components.end(), b.m_components.begin(), b.m_components.end());
    return VQLIdentifier(std::move(components), dictionary);
}

VQLIdentifier VQLIdentifier::Head() const {
    if (m_components.size() < 2) return {};
    return VQLIdentifier({m_components.begin(), m_components.end() - 1}, m_name->GetDictionary());
}

VQLIdentifier VQLIdentifier::Tail() const {
    if (m_components.size() < 2) return *this;
    return VQLIdentifier({m_components.back()}, m_name->GetDictionary());
}

}  // namespace qve
