#pragma once

#include "vql/VQLExpression.h"
#include "vql/syntax/VQLNode.h"

namespace qve {

/// Builds expressions from statement nodes. Names and functions are looked up later, by the checker.
/// Errors are VQLParseException 49020 at the offending node.
class VQLExpressionParser {
public:
    /// `literalProperties` are given to every literal of the expression. Throws 49021 "expected single expression"
    /// unless the text holds one form.
    RefCntPtr<VQLExpression> operator()(const wchar_t* text, SymbolDictionary& dictionary,
                                        const usrprops& literalProperties) const;
    RefCntPtr<VQLExpression> operator()(const RefCntPtr<VQLNode>& node, SymbolDictionary& dictionary,
                                        const usrprops& literalProperties) const;
};

}  // namespace qve
