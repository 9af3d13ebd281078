#include "vql/eval/VQLQueryEvaluator.h"

#include "algebra/DataFlow.h"
#include "algebra/plan/FormatNamespace.h"
#include "metrics/Scope.h"
#include "storage/Database.h"
#include "storage/DatabaseFamily.h"
#include "system/VQLException.h"
#include "telemetry/LogEntry.h"
#include "vql/VQLBuildTableSpaces.h"
#include "vql/VQLExpandMacros.h"
#include "vql/VQLFindOutputOrder.h"
#include "vql/VQLLowerAggregates.h"
#include "vql/VQLLowerJoins.h"
#include "vql/VQLLowerOrders.h"
#include "vql/VQLMarkOrderedAggregates.h"
#include "vql/VQLPushDownNullTypes.h"
#include "vql/VQLQueryChecker.h"
#include "vql/VQLQueryFormatter.h"
#include "vql/VQLQueryParser.h"
#include "vql/VQLRemoveRestricts.h"
#include "vql/VQLRemoveTrivialProjectBindings.h"
#include "vql/VQLRestrictScans.h"
#include "vql/VQLRewriteCorrelations.h"
#include "vql/VQLRewriteCountd.h"
#include "vql/VQLRewriteCovariances.h"
#include "vql/VQLRewriteQuantiles.h"
#include "vql/VQLRewriteVariances.h"
#include "vql/VQLTableSpaceFamily.h"
#include "vql/VQLUniquifyColumns.h"
#include "vql/eval/CollectsInMemory.h"
#include "vql/eval/ResultFlow.h"
#include "vql/eval/VQLQueryCompiler.h"
#include "vql/eval/VQLQueryEvaluatorLogger.h"
#include "vql/eval/status.h"
#include "vql/syntax/VQLIdentifierFactory.h"
#include "vql/syntax/VQLParser.h"

namespace qve {
namespace {

// A query on its way through the passes.
class Evaluation {
public:
    Evaluation(DatabaseFamily& databases, SymbolDictionary& symbols, RefCntPtr<VQLQuery> query)
        : m_query(std::move(query)),
          m_detailed(VQLQueryEvaluator::GetDefaultDetailedLogging()),
          m_spaces(VQLBuildTableSpaces(m_query, databases, symbols)),
          m_checker(m_spaces) {
        m_checker.SetForceRebuild(true);
    }

    const RefCntPtr<VQLQuery>& Get() const { return m_query; }
    const VQLTableSpaceFamily& GetTableSpaces() const { return m_spaces; }

    // What a pass leaves is checked again, so that the next one finds fresh columns and types.
    template <class Pass>
    void Rewrite(Pass pass) {
        m_query = pass(m_query);
        m_checker(m_query);
    }
    // One pass of the list; its metric scope bears the name too.
    template <class Pass>
    void Run(const char* name, Pass pass) {
        Rewrite(pass);
        LogStage(name);
    }
    void LogStage(const char* name) { m_stages.LogStage(name, m_query); }
    void LogQuery(const char* title) const {
        if (m_detailed) LogEntry() << title << FormatQuery(m_query);
    }
    void LogPlan(const char* name, Namespace& plan, const Database* current) {
        if (!m_stages && !m_detailed) return;
        const std::wstring text = FormatNamespace::Do(plan, current);
        m_stages.LogNote(name, text);
        if (m_detailed) LogEntry() << "Query compiled:\n" << text;
    }
    void LogColumns(const char* name, const std::vector<VQLIdentifier>& columns) {
        if (!m_stages) return;
        std::wstring text;
        for (const auto& column : columns) text += column.AsString() + L" ";
        m_stages.LogNote(name, text);
    }
    void LogColumns(const char* name, const VQLColumnMap& columns) {
        if (!m_stages) return;
        std::wstring text;
        for (const auto& [from, to] : columns) text += L"(" + from.AsString() + L" " + to.AsString() + L") ";
        m_stages.LogNote(name, text);
    }

private:
    RefCntPtr<VQLQuery> m_query;
    const bool m_detailed;
    VQLQueryEvaluatorLogger m_stages;
    VQLTableSpaceFamily m_spaces;
    VQLQueryChecker m_checker;
};

std::vector<std::wstring> ColumnTexts(const std::vector<VQLIdentifier>& columns) {
    std::vector<std::wstring> texts;
    for (const auto& column : columns) texts.push_back(column.GetComponents().back().AsString());
    return texts;
}

}  // namespace

RefCntPtr<Namespace> VQLQueryEvaluator::operator()(const std::wstring& text) const {
    return Eval(VQLParser::ParseAndReturnFirstNode(m_symbols, text.c_str(), false, [](RefCntPtr<VQLNode>) {
        throw VQLException(status::VQLQueryEvaluator_BadInput, L"bad input");
    }));
}

RefCntPtr<Namespace> VQLQueryEvaluator::Eval(const RefCntPtr<VQLNode>& node) const {
    Metrics::Scope scope("VQLQueryEvaluator::Eval");
    SymbolDictionary& symbols = m_symbols;
    VQLIdentifierFactory factory(symbols);

    Evaluation evaluation(m_databases, symbols, VQLQueryParser(symbols)(node));
    evaluation.LogStage("Parsed");
    evaluation.LogQuery("Query parsed:\n");
    // Before the first check, since a macro takes precedence over the function of its name.
    evaluation.Rewrite(
        [&](const RefCntPtr<VQLQuery>& query) { return VQLExpandMacros(symbols, GetVQLMacros(), query); });
    const VQLTableSpaceFamily& spaces = evaluation.GetTableSpaces();
    // What the client asked for, and in which order; the passes may add columns and forget orders.
    const RefCntPtr<VQLColumnSpace> wanted = evaluation.Get()->GetColumnSpace();
    const std::vector<VQLIdentifier> outputs = VQLFindOutputOrder(evaluation.Get());
    evaluation.LogColumns("projection list", outputs);

    using Query = const RefCntPtr<VQLQuery>&;
    const auto restrictScans = [&](Query query) { return VQLRestrictScans(spaces, *wanted, false, query); };

    evaluation.Run("VQLRemoveRestricts", [&](Query query) { return VQLRemoveRestricts(symbols, query); });
    // Nulls need their types before aggregates are lowered.
    evaluation.Run("VQLPushDownNullTypes", [&](Query query) { return VQLPushDownNullTypes(symbols, query); });
    evaluation.Run("VQLRemoveTrivialProjectBindings",
                   [&](Query query) { return VQLRemoveTrivialProjectBindings(symbols, query); });
    evaluation.Run("VQLRestrictScans", restrictScans);
    evaluation.Run("VQLLowerAggregates", [&](Query query) { return VQLLowerAggregates(factory, query); });
    evaluation.Run("VQLLowerOrders", [&](Query query) { return VQLLowerOrders(factory, query); });

    // What is rewritten first leaves the later kinds in its last aggregate.
    evaluation.Run("VQLRewriteCorrelations",
                   [&](Query query) { return VQLRewriteCorrelations(factory, query, FindsMoments(m_databases)); });
    evaluation.Run("VQLRewriteCovariances",
                   [&](Query query) { return VQLRewriteCovariances(factory, query, FindsMoments(m_databases)); });
    evaluation.Run("VQLRewriteVariances",
                   [&](Query query) { return VQLRewriteVariances(factory, query, FindsMoments(m_databases)); });
    evaluation.Run("VQLRewriteQuantiles",
                   [&](Query query) { return VQLRewriteQuantiles(factory, query, CollectsQuantiles(m_databases)); });
    evaluation.Run("VQLRewriteCountd",
                   [&](Query query) { return VQLRewriteCountd(factory, query, CountsDistinct(m_databases)); });

    evaluation.Run("VQLLowerJoins", [&](Query query) { return VQLLowerJoins(factory, query); });

    // From here on every column has a name of its own, so that passes may move expressions.
    VQLColumnMap columns;
    evaluation.Run("VQLUniquifyColumns", [&](Query query) { return VQLUniquifyColumns(factory, query, columns); });
    evaluation.LogColumns("top level column map", columns);
    if (VQLQueryEvaluator::GetDefaultOrderedAggregates()) {
        evaluation.Run("VQLMarkOrderedAggregates",
                       [&](Query query) { return VQLMarkOrderedAggregates(spaces, VQLFunction::Table(), query); });
    }
    evaluation.Run("VQLDeuniquifyColumns", [&](Query query) { return VQLDeuniquifyColumns(symbols, columns, query); });

    evaluation.Run("VQLRemoveTrivialProjectBindings",
                   [&](Query query) { return VQLRemoveTrivialProjectBindings(symbols, query); });
    evaluation.Run("RestrictQuery", [&](Query query) { return RestrictQuery(*wanted, query); });
    evaluation.Run("VQLRestrictScans", [&](Query query) { return VQLRestrictScans(spaces, *wanted, true, query); });
    evaluation.LogQuery("Query optimized:\n");

    const RefCntPtr<Namespace> root = VQLQueryCompiler(m_databases)(evaluation.Get());
    const RefCntPtr<Namespace> plan = MakeRef<ResultFlow>(StaticPtrCast<DataFlow>(root), ColumnTexts(outputs));
    evaluation.LogPlan("Compiled", *plan, m_databases.GetDefaultDatabase().get());
    return plan;
}

}  // namespace qve
