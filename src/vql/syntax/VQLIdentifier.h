#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "vql/syntax/SymbolDictionary.h"

namespace qve {

/// A dotted name, as in [schema].[table]. Interned: names of one dictionary compare by one integer.
///
/// The canonical text is each component in square brackets, joined by full stops, with a backslash before every
/// backslash and closing bracket inside a component.
class VQLIdentifier {
public:
    using Token = SymbolDictionary::OrderedValuePtr;

    /// The empty name.
    VQLIdentifier() = default;

    /// Reads bracketed text; an empty text gives the empty name. Throws VQLParseException 49022 to 49026, code only.
    static VQLIdentifier Quoted(std::wstring_view text, SymbolDictionary& dictionary);
    /// A name of the one component `text`; an empty text gives the empty name.
    static VQLIdentifier Unquoted(std::wstring_view text, SymbolDictionary& dictionary);
    /// The canonical text of a name of the one component `text`.
    static std::wstring UnquotedName(std::wstring_view text);
    /// The canonical text of a name of these components.
    static std::wstring FormatName(const std::vector<std::wstring>& components);
    static std::wstring Format(const std::vector<Token>& components);
    /// The components of `a` followed by those of `b`.
    static VQLIdentifier Join(const VQLIdentifier& a, const VQLIdentifier& b, SymbolDictionary& dictionary);

    /// All components but the last, interned in the dictionary of this name.
    VQLIdentifier Head() const;
    /// The last component alone.
    VQLIdentifier Tail() const;

    /// The canonical text; empty for the empty name.
    const std::wstring& AsString() const { return m_name.AsString(); }
    Token AsToken() const { return m_name; }
    const std::vector<Token>& GetComponents() const { return m_components; }
    bool empty() const { return !m_name; }

    friend bool operator==(const VQLIdentifier& a, const VQLIdentifier& b) { return a.m_name == b.m_name; }
    friend bool operator<(const VQLIdentifier& a, const VQLIdentifier& b) { return a.m_name < b.m_name; }

private:
    VQLIdentifier(std::vector<Token> components, SymbolDictionary& dictionary);

    Token m_name;
    std::vector<Token> m_components;
};

}  // namespace qve

template <>
struct std::hash<qve::VQLIdentifier> {
    std::size_t operator()(const qve::VQLIdentifier& name) const noexcept {
        return std::hash<std::wstring>()(name.AsString());
    }
};
