#pragma once

#include "system/RefCntPtr.h"

namespace qve {

class Database;
class Exp;
class Namespace;
class VQLNode;

/// Reads the language of plans: operators and expressions as they run, in the list form of statements. FormatNamespace
/// and FormatExp write it. Names of tables are those of the given database; nothing is read yet but the catalog.
/// Errors are VQLParseException 49012 at the operator and 49013 at the expression at fault, and what the operators and
/// expressions raise.
class ParseNamespace {
public:
    /// What an expression is for: a column of values, the rows that pass, or a measure of groups. A call takes its
    /// kernel from that family.
    enum class ContextType { map, select, aggregate };

    /// `database` may be null: then there are no tables.
    RefCntPtr<Namespace> operator()(const RefCntPtr<VQLNode>& node, const RefCntPtr<Database>& database) const;
    /// Throws VQLParseException 49014 "expected single query" unless the text holds one form.
    RefCntPtr<Namespace> operator()(const wchar_t* text, const RefCntPtr<Database>& database) const;
    /// An expression over the columns of `input`.
    RefCntPtr<Exp> operator()(ContextType context, const RefCntPtr<VQLNode>& node,
                              const RefCntPtr<Namespace>& input) const;
    /// Throws VQLParseException 49014 "expected single expression" unless the text holds one form.
    RefCntPtr<Exp> operator()(ContextType context, const wchar_t* text, const RefCntPtr<Namespace>& input) const;
};

}  // namespace qve
