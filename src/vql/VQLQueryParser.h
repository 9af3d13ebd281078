#pragma once

#include "vql/VQLExpression.h"
#include "vql/VQLQuery.h"
#include "vql/syntax/VQLNode.h"

namespace qve {

/// Builds queries from statement nodes. Nothing here looks at the catalog; names and types are checked later.
/// Errors are VQLParseException 49039 at the offending node.
class VQLQueryParser {
public:
    explicit VQLQueryParser(SymbolDictionary& dictionary) : m_dictionary(dictionary) {}

    /// Throws 49040 "expected single query" unless the text holds one form.
    RefCntPtr<VQLQuery> operator()(const wchar_t* text) const;
    RefCntPtr<VQLQuery> operator()(const RefCntPtr<VQLNode>& node) const;
    /// Builds a bindings list alone: names, (name expression), (name expression properties).
    VQLBindings ParseBindings(const RefCntPtr<VQLNode>& node) const;

private:
    SymbolDictionary& m_dictionary;
};

}  // namespace qve
