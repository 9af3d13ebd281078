#pragma once

#include <string>

#include "system/RefCntPtr.h"
#include "vql/syntax/VQLEvaluatorSettings.h"

namespace qve {

class DatabaseFamily;
class Namespace;
class SymbolDictionary;
class VQLNode;

/// Makes a plan of a query: builds the query tree, checks it, runs all passes in their one order, and compiles it.
/// The settings that it reads on each evaluation are process-wide. One evaluation runs on one thread.
class VQLQueryEvaluator : public VQLEvaluatorSettings {
public:
    /// Names are looked up in `databases` and interned in `symbols`; both must outlive the plan.
    VQLQueryEvaluator(DatabaseFamily& databases, SymbolDictionary& symbols)
        : m_databases(databases), m_symbols(symbols) {}

    /// The plan: a flow of the columns that the query yields, each with its place in the result as property "ordinal".
    /// Throws VQLException 48034 "bad input" unless the text is a single form, and whatever the passes throw.
    RefCntPtr<Namespace> operator()(const std::wstring& text) const;
    RefCntPtr<Namespace> operator()(const RefCntPtr<VQLNode>& node) const { return Eval(node); }
    RefCntPtr<Namespace> Eval(const RefCntPtr<VQLNode>& node) const;

private:
    DatabaseFamily& m_databases;
    SymbolDictionary& m_symbols;
};

}  // namespace qve
