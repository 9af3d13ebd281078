#pragma once

#include <string>
#include <utility>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/Exp.h"
#include "algebra/Pivot.h"
#include "algebra/Table.h"
#include "algebra/plan/ParseNamespace.h"
#include "vql/syntax/VQLNodeReader.h"

namespace qve {

class Database;

/// Builds the operators of the language of plans. In every form what the operator does comes first and its inputs come
/// last, so that a plan reads from the result down.
///
///     (table [schema].[table] COLUMNS)            a stored table
///     (text "path" (PROPERTIES ...) PROPERTIES COLUMNS)  a text file: what is known of its columns, of its format
///     (scan COLUMNS TABLE)                        (flowtable [random-access | plain] FLOW)
///     (select CONDITION FLOW)                     (project BINDINGS FLOW)
///     (restrict COLUMNS FLOW)
///     (aggregate COLUMNS BINDINGS [groups] FLOW)  (ordaggr COLUMNS BINDINGS FLOW)
///     (order SORTS [limit] TABLE)                 (top SORTS count FLOW)
///     (compact FLOW)                              (shared TABLE)
///     (fraction index count [COLUMNS] TABLE)      a share of the rows, cut where one of the columns changes
///     (cartprod PAIRS FLOW TABLE)                 (positionaljoin TABLE [TABLE])
///     (indextable [column] TABLE)                 (indexjoin PAIRS [start] [count] FLOW TABLE)
///     (pivot ([tag] ([name] ...)) (([group] COLUMNS) ...) ["collation"] FLOW)
///     (append (PAIRS ...) FLOW FLOW ...)          for each flow but the first: its column and the first one's
///     (join TYPE [isnotdistinct] PAIRS PAIRS FLOW TABLE)  keys as outer and inner column, imports as inner column and
///                                                 its name in the output; TYPE is inner, left, right or full
///
/// COLUMNS is ([name] ...), BINDINGS is (([name] expression) ...), SORTS is (([column] asc | desc [row number]) ...).
/// Where a table is wanted a flow will do, and the other way round. Errors are VQLParseException 49012.
class NamespaceBuilder {
public:
    /// `database` may be null: then there are no tables.
    explicit NamespaceBuilder(RefCntPtr<Database> database);
    virtual ~NamespaceBuilder() = default;

    RefCntPtr<Namespace> operator()(const RefCntPtr<VQLNode>& node) { return Build(node); }

protected:
    /// What shall stand for an operator that was built: the operator itself, unless a derived class puts something
    /// around it. `number` counts the operators as they are written, from 0.
    virtual RefCntPtr<Namespace> Finish(RefCntPtr<Namespace> built, unsigned number);
    /// The path of the file that a plan names; by default the same. A derived class may refuse it.
    virtual std::wstring ResolveDataFile(const std::wstring& path) const;

private:
    using Nodes = VQLNodeReader::Nodes;
    using ContextType = ParseNamespace::ContextType;
    using Builder = RefCntPtr<Namespace> (NamespaceBuilder::*)(const Nodes&);

    RefCntPtr<Namespace> Build(const RefCntPtr<VQLNode>& node);
    RefCntPtr<Namespace> BuildAggr(const Nodes& form);
    RefCntPtr<Namespace> BuildAppend(const Nodes& form);
    RefCntPtr<Namespace> BuildCartProd(const Nodes& form);
    RefCntPtr<Namespace> BuildClusteringFlow(const Nodes& form);
    RefCntPtr<Namespace> BuildDictionaryTable(const Nodes& form);
    RefCntPtr<Namespace> BuildPartitionSplit(const Nodes& form);
    RefCntPtr<Namespace> BuildPartitionRestart(const Nodes& form);
    RefCntPtr<Namespace> BuildUpdate(const Nodes& form);
    RefCntPtr<Namespace> BuildCompact(const Nodes& form);
    RefCntPtr<Namespace> BuildFlowTable(const Nodes& form);
    RefCntPtr<Namespace> BuildFractionTable(const Nodes& form);
    RefCntPtr<Namespace> BuildIndexJoin(const Nodes& form);
    RefCntPtr<Namespace> BuildIndexTable(const Nodes& form);
    RefCntPtr<Namespace> BuildJoin(const Nodes& form);
    RefCntPtr<Namespace> BuildOrder(const Nodes& form);
    RefCntPtr<Namespace> BuildPivot(const Nodes& form);
    RefCntPtr<Namespace> BuildPositionalJoin(const Nodes& form);
    RefCntPtr<Namespace> BuildProject(const Nodes& form);
    RefCntPtr<Namespace> BuildRestrict(const Nodes& form);
    RefCntPtr<Namespace> BuildScan(const Nodes& form);
    RefCntPtr<Namespace> BuildSelect(const Nodes& form);
    RefCntPtr<Namespace> BuildSharedTable(const Nodes& form);
    RefCntPtr<Namespace> BuildTable(const Nodes& form);
    RefCntPtr<Namespace> BuildText(const Nodes& form);
    RefCntPtr<Namespace> BuildTopN(const Nodes& form);

    RefCntPtr<DataFlow> BuildFlow(const RefCntPtr<VQLNode>& node) { return AsFlow(Build(node)); }
    RefCntPtr<Table> BuildSource(const RefCntPtr<VQLNode>& node) { return AsTable(Build(node)); }
    static RefCntPtr<DataFlow> AsFlow(const RefCntPtr<Namespace>& input);
    static RefCntPtr<Table> AsTable(const RefCntPtr<Namespace>& input);

    /// "composite identifier" for names of several components.
    const std::wstring& Name(const RefCntPtr<VQLNode>& node) const;
    /// Without `input` any names; else those of its columns.
    ColumnNames BuildIdentifiers(const RefCntPtr<VQLNode>& node, const Namespace* input) const;
    std::vector<RefCntPtr<Exp>> BuildBindings(const RefCntPtr<VQLNode>& node, ContextType context,
                                              const Namespace& input) const;
    /// Each first name is a column of `from`.
    std::vector<std::pair<std::wstring, std::wstring>> BuildRenames(const RefCntPtr<VQLNode>& node,
                                                                    const Namespace& from) const;
    /// "invalid pivot group" for what is no name and list of names.
    Pivot::Group BuildPivotGroup(const RefCntPtr<VQLNode>& node) const;
    /// With the names of the columns of row numbers, empty for none.
    std::pair<std::vector<Namespace::SortSpec>, std::vector<std::wstring>> BuildSortSpecs(
        const RefCntPtr<VQLNode>& node, const Namespace& input) const;
    /// Counts the members of a form, its word not counted.
    void Expect(const Nodes& form, size_t least, size_t most) const;

    const VQLNodeReader m_reader;
    const RefCntPtr<Database> m_database;
    RefCntPtr<VQLNode> m_node;  // the form that is being built
    unsigned m_count = 0;
};

}  // namespace qve
