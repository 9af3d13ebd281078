#pragma once

#include <vector>

#include "vql/syntax/VQLNode.h"
#include "vql/syntax/VQLToken.h"

namespace qve {

/// Builds the tree of nodes from the tokens of a lexer.
class VQLParser {
public:
    /// Lists nested deeper than this are refused with "query too large". Everything that walks a statement recurses
    /// once or a few times for each level, on the stack of a worker thread.
    static constexpr unsigned maxDepth = 2000;

    explicit VQLParser(SymbolDictionary& dictionary) : m_dictionary(dictionary) {}

    /// The root, a list of all top-level nodes. Throws VQLParseException 49034 for unbalanced parentheses, 49032 for
    /// too deep a nesting, and what literals and identifiers raise.
    RefCntPtr<VQLListNode> operator()(const std::vector<VQLToken>& tokens);

    /// Lexes and parses text that should hold exactly one form, and returns that form. Null when `allowEmpty` and there
    /// is no token; otherwise, unless there is just one form, calls `notSingle` with the root, which must throw.
    static RefCntPtr<VQLNode> ParseAndReturnFirstNode(SymbolDictionary& dictionary, const wchar_t* text,
                                                      bool allowEmpty, void (*notSingle)(RefCntPtr<VQLNode> root));

private:
    SymbolDictionary& m_dictionary;
    std::vector<RefCntPtr<VQLListNode>> m_stack;
};

}  // namespace qve
