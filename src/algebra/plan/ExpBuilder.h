#pragma once

#include <string>

#include "algebra/Exp.h"
#include "algebra/plan/ParseNamespace.h"
#include "vql/syntax/VQLNode.h"
#include "vql/syntax/VQLNodeReader.h"

namespace qve {

class usratom;

/// Builds the expressions of the language of plans over the columns of one namespace.
///
///     [column]                      a column of the input
///     literal, (literal PROPERTIES) a constant, of the literal's type or of the one that the properties mean
///     (null PROPERTIES)             a null of that type
///     (values CONSTANT...)          a list of constants
///     (compress VALUE)  (expand TOKENS)  (partition KEY ...)
///     (hashes (hash tokens|values KEY) (rehash tokens|values KEY) ...)
///     (lookup (KEY ...) (NULL ...) ELSE (CONSTANT ... VALUE) ...)
///                                   the VALUE of the row with these keys; the NULLs have the types of the keys
///     (case C V ... ELSE)  (cast VALUE NULL)  (data TOKENS)  (and_ A B ...)  (or_ A B ...)
///     (map CALL)                    where rows are to be selected: by the computed bits
///     (operation ARGUMENT...)       a call of a kernel
///
/// Errors are VQLParseException 49013 at the node at fault.
class ExpBuilder : private VQLNodeVisitor {
public:
    using ContextType = ParseNamespace::ContextType;

    /// `input` must outlive the builder.
    ExpBuilder(ContextType context, const Namespace& input);
    RefCntPtr<Exp> operator()(const RefCntPtr<VQLNode>& node) { return Build(m_context, node); }

private:
    using Nodes = VQLNodeReader::Nodes;

    void VisitList(VQLListNode& node) override;
    void VisitSymbol(VQLSymbolNode& node) override;
    void VisitLiteral(VQLLiteralNode& node) override;
    void VisitIdentifier(VQLIdentifierNode& node) override;

    RefCntPtr<Exp> Build(ContextType context, const RefCntPtr<VQLNode>& node);
    Exp::Arguments BuildArguments(ContextType context, const Nodes& form);
    RefCntPtr<Exp> BuildForm(const std::wstring& word, const Nodes& form);
    RefCntPtr<Exp> BuildCall(const std::wstring& op, const Nodes& form);
    RefCntPtr<Exp> BuildValues(const Nodes& form);
    RefCntPtr<Exp> BuildHashes(const Nodes& form);
    RefCntPtr<Exp> BuildLookup(const Nodes& form);
    usratom BuildConstant(const RefCntPtr<VQLNode>& node);
    usratom QualifiedLiteral(const Nodes& form) const;
    usratom Null(const Nodes& form) const;
    [[noreturn]] void Raise(const wchar_t* text) const;

    const VQLNodeReader m_reader;
    const Namespace& m_input;
    ContextType m_context;
    RefCntPtr<VQLNode> m_node;  // the one that is being visited
    RefCntPtr<Exp> m_result;
};

}  // namespace qve
