#pragma once

#include "vql/syntax/VQLIdentifier.h"

namespace qve {

/// Makes names that its dictionary has not seen before.
class VQLIdentifierFactory {
public:
    explicit VQLIdentifierFactory(SymbolDictionary& dictionary) : m_dictionary(dictionary) {}

    /// A fresh one-component name: "$temp", a number and, with a hint, "_" and the hint.
    VQLIdentifier operator()(const wchar_t* hint = nullptr);
    /// `name` with "#" and a number added to its last component.
    VQLIdentifier Uniquify(const VQLIdentifier& name);

    SymbolDictionary& GetDictionary() const { return m_dictionary; }

private:
    SymbolDictionary& m_dictionary;
    unsigned long long m_counter = 0;
};

}  // namespace qve
