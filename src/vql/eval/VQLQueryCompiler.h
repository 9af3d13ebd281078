#pragma once

#include <string>
#include <vector>

#include "algebra/Namespace.h"
#include "system/RefCntPtr.h"
#include "vql/VQLExpression.h"
#include "vql/VQLOrderQuery.h"
#include "vql/VQLQueryVisitor.h"

namespace qve {

struct LeafColumns;
class DatabaseFamily;
class DataFlow;
class Exp;
class LeafTable;
class Table;

/// Turns a checked and optimised query into a tree of operators. Nothing is read yet but the catalog.
class VQLQueryCompiler : private VQLQueryVisitor {
public:
    explicit VQLQueryCompiler(const DatabaseFamily& databases) : m_databases(databases) {}

    /// The root, which is a flow. Throws QVE_RuntimeError 40544 to 40546, and what the expression compiler throws.
    RefCntPtr<Namespace> operator()(const RefCntPtr<VQLQuery>& query);

private:
    void VisitTable(VQLTableQuery& query) override;
    void VisitDomain(VQLDomainQuery& query) override;
    void VisitText(VQLTextQuery& query) override;
    void VisitSelect(VQLSelectQuery& query) override;
    void VisitProject(VQLProjectQuery& query) override;
    void VisitRestrict(VQLRestrictQuery& query) override;
    void VisitPivot(VQLPivotQuery& query) override;
    void VisitAggregate(VQLAggregateQuery& query) override;
    void VisitOrder(VQLOrderQuery& query) override;
    void VisitTop(VQLTopQuery& query) override;
    void VisitJoin(VQLJoinQuery& query) override;
    void VisitIndexTable(VQLIndexTableQuery& query) override;
    void VisitIndexJoin(VQLIndexJoinQuery& query) override;
    void VisitExchange(VQLExchangeQuery& query) override;
    void VisitAppend(VQLAppendQuery& query) override;
    void VisitRemoteQuery(VQLRemoteQuery& query) override;

    RefCntPtr<Namespace> Compile(const RefCntPtr<VQLQuery>& query);
    RefCntPtr<DataFlow> CompileFlow(const RefCntPtr<VQLQuery>& query) { return MakeDataFlow(Compile(query)); }
    void Push(RefCntPtr<Namespace> result);
    RefCntPtr<Namespace> Pop();

    /// A broken promise of an earlier pass.
    [[noreturn]] static void Raise(const char* text);
    /// The columns `stored` of a table of the catalog. Throws QVE_RuntimeError 40544 to 40546.
    /// A table over a leaf, under the names that its columns have in the query.
    void PushLeaf(RefCntPtr<Table> table, const LeafColumns& columns);
    RefCntPtr<LeafTable> MakeLeafTable(const VQLTableQuery& query, const ColumnNames& stored) const;
    RefCntPtr<LeafTable> MakeLeafTable(const VQLIdentifier& name, const std::wstring& databasePath,
                                       const ColumnNames& stored) const;
    /// A table is read by a Scan of its columns.
    static RefCntPtr<DataFlow> MakeDataFlow(const RefCntPtr<Namespace>& input);
    /// A flow is drained into a FlowTable.
    static RefCntPtr<Table> MakeTable(const RefCntPtr<Namespace>& input);
    /// The right side of a join, whose columns `names` are to be found there under the names that they get.
    RefCntPtr<Table> CompileInner(const RefCntPtr<VQLQuery>& query, std::vector<std::wstring*> names);
    /// The text of a one-component name. Throws QVE_RuntimeError "bad identifier".
    static const std::wstring& GetIdentifier(const VQLIdentifier& name);
    static std::vector<Namespace::SortSpec> GetSortSpecs(const VQLOrderQuery::Orders& orders);
    static const std::wstring& GetGroupByKey(const VQLBinding& groupBy);
    std::vector<RefCntPtr<Exp>> CompileMeasures(const VQLBindings& measures, const Namespace& source) const;

    const DatabaseFamily& m_databases;
    std::vector<RefCntPtr<Namespace>> m_stack;
};

}  // namespace qve
