#include "vql/eval/VQLQueryCompiler.h"

#include <algorithm>

#include "algebra/Aggr.h"
#include "algebra/Append.h"
#include "algebra/ColumnExp.h"
#include "algebra/DictionaryTable.h"
#include "algebra/FlowTable.h"
#include "algebra/IndexJoin.h"
#include "algebra/IndexTable.h"
#include "algebra/LeafTable.h"
#include "algebra/OrdAggr.h"
#include "algebra/Order.h"
#include "algebra/Pivot.h"
#include "algebra/Project.h"
#include "algebra/Restrict.h"
#include "algebra/RestrictedTable.h"
#include "algebra/Scan.h"
#include "algebra/Select.h"
#include "algebra/TopN.h"
#include "ingest/TextScan.h"
#include "metrics/Scope.h"
#include "storage/Column.h"
#include "storage/Database.h"
#include "storage/DatabaseFamily.h"
#include "storage/DatabaseSchema.h"
#include "storage/EncodingFactory.h"
#include "storage/stream/DataStream.h"
#include "system/QuillonException.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueries.h"
#include "vql/eval/LeafColumns.h"
#include "vql/eval/VQLExpressionCompiler.h"
#include "vql/eval/status.h"

namespace qve {
namespace {

using ContextType = VQLExpressionCompiler::ContextType;

// A stored table with the columns that its scan selects; what reads it reads the stored table itself.
class ScanTable : public RestrictedTable {
public:
    ScanTable(RefCntPtr<Table> inner, const ColumnNames& names) : RestrictedTable(std::move(inner), names) {}
    const RefCntPtr<Table>& GetInnerTable() const { return GetDelegate(); }
};

[[noreturn]] void RaiseNotSupported(const char* form) {
    throw QVE_RuntimeError(status::VQLQueryCompiler_NotSupported,
                           std::string("VQLQueryCompiler: ") + form + " is not supported yet");
}

RefCntPtr<DataFlow> ScanOf(const RefCntPtr<Table>& table, const ColumnNames& names) {
    const auto* scanned = dynamic_cast<const ScanTable*>(table.get());
    return MakeRef<Scan>(scanned ? scanned->GetInnerTable() : table, names);
}

// The number of groups that the dictionaries and statistics of the keys let expect; 0 when they say nothing.
unsigned EstimateGroups(const Namespace& source, const ColumnNames& keys) {
    uint64_t groups = keys.empty() ? 0 : 1;
    for (const auto& key : keys) {
        const uint64_t cardinality = source.DescribeColumn(key)->GetSizeProperty(usrpropkey::cardinality);
        if (cardinality == 0 || groups > ~0U / cardinality) return 0;
        groups *= cardinality;
    }
    return static_cast<unsigned>(groups);
}

}  // namespace

RefCntPtr<Namespace> VQLQueryCompiler::operator()(const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLQueryCompiler");
    return CompileFlow(query);
}

RefCntPtr<Namespace> VQLQueryCompiler::Compile(const RefCntPtr<VQLQuery>& query) {
    query->Accept(*this);
    return Pop();
}

void VQLQueryCompiler::Push(RefCntPtr<Namespace> result) {
    m_stack.push_back(std::move(result));
}

RefCntPtr<Namespace> VQLQueryCompiler::Pop() {
    RefCntPtr<Namespace> result = std::move(m_stack.back());
    m_stack.pop_back();
    return result;
}

RefCntPtr<DataFlow> VQLQueryCompiler::MakeDataFlow(const RefCntPtr<Namespace>& input) {
    if (auto flow = DynamicPtrCast<DataFlow>(input)) return flow;
    if (auto table = DynamicPtrCast<Table>(input)) return ScanOf(table, table->GetColumnNames());
    Raise("namespace should be a dataflow or table");
}

RefCntPtr<Table> VQLQueryCompiler::MakeTable(const RefCntPtr<Namespace>& input) {
    if (auto table = DynamicPtrCast<Table>(input)) return table;
    if (auto flow = DynamicPtrCast<DataFlow>(input)) return MakeRef<FlowTable>(flow);
    Raise("namespace should be a dataflow or table");
}

const std::wstring& VQLQueryCompiler::GetIdentifier(const VQLIdentifier& name) {
    if (name.GetComponents().size() != 1) Raise("bad identifier");
    return name.GetComponents().front().AsString();
}

void VQLQueryCompiler::Raise(const char* text) {
    throw QVE_RuntimeError(status::VQLQueryCompiler_Input, text);
}

RefCntPtr<LeafTable> VQLQueryCompiler::MakeLeafTable(const VQLTableQuery& query, const ColumnNames& stored) const {
    if (query.GetParallelism() > 1) RaiseNotSupported("reading a table in parallel");
    return MakeLeafTable(query.GetTableName(), query.GetDatabasePath(), stored);
}

RefCntPtr<LeafTable> VQLQueryCompiler::MakeLeafTable(const VQLIdentifier& name, const std::wstring& databasePath,
                                                     const ColumnNames& stored) const {
    const auto& components = name.GetComponents();
    if (components.size() != 2) {
        throw QVE_RuntimeError(status::VQLQueryCompiler_TableName, "expected schema.table identifier");
    }
    if (!m_databases.HasDatabase(databasePath)) {
        throw QVE_RuntimeError(status::VQLQueryCompiler_Database, "no matching database");
    }
    const RefCntPtr<Database> database = m_databases.GetDatabase(databasePath);
    return MakeRef<LeafTable>(*database->GetSchema(components[0].AsString()), components[1].AsString(), stored);
}

void VQLQueryCompiler::VisitTable(VQLTableQuery& query) {
    const LeafColumns renaming(query);
    RefCntPtr<LeafTable> leaf = MakeLeafTable(query, renaming.stored);
    if (renaming.IsTrivial()) {
        Push(MakeRef<ScanTable>(leaf, renaming.stored));
    } else {
        Push(renaming.Apply(MakeRef<Scan>(leaf, renaming.stored)));
    }
}

void VQLQueryCompiler::VisitText(VQLTextQuery& query) {
    const std::wstring path = m_databases.ResolveDataFilePath(query.GetPath());
    const LeafColumns renaming(query);
    auto scan =
        MakeRef<TextScan>(TextScan::OpenFile(path), query.GetSchema(), query.GetTextProperties(), renaming.stored);
    Push(renaming.Apply(scan));
}

void VQLQueryCompiler::VisitSelect(VQLSelectQuery& query) {
    RefCntPtr<DataFlow> input = CompileFlow(query.GetInput());
    VQLExpressionCompiler compile(ContextType::select, *input);
    RefCntPtr<Exp> predicate = compile(query.GetPredicate());
    Push(MakeRef<Select>(std::move(input), std::move(predicate)));
}

void VQLQueryCompiler::VisitProject(VQLProjectQuery& query) {
    RefCntPtr<DataFlow> input = CompileFlow(query.GetInput());
    VQLExpressionCompiler compile(ContextType::map, *input);
    std::vector<RefCntPtr<Exp>> expressions;
    for (const auto& [name, expression] : query.GetBindings()) {
        expressions.push_back(compile(expression));
        expressions.back()->SetName(GetIdentifier(name));
    }
    Push(MakeRef<Project>(std::move(input), std::move(expressions)));
}

void VQLQueryCompiler::VisitRestrict(VQLRestrictQuery& query) {
    const RefCntPtr<Namespace> input = Compile(query.GetInput());
    const VQLIdentifierSet identifiers(query.GetIdentifiers().begin(), query.GetIdentifiers().end());
    const ColumnNames names = ColumnNamesOf(identifiers);
    if (auto table = DynamicPtrCast<Table>(input)) {
        Push(ScanOf(table, names));
    } else {
        Push(MakeRef<Restrict>(MakeDataFlow(input), names));
    }
}

std::vector<RefCntPtr<Exp>> VQLQueryCompiler::CompileMeasures(const VQLBindings& measures,
                                                              const Namespace& source) const {
    VQLExpressionCompiler compile(ContextType::aggregate, source);
    std::vector<RefCntPtr<Exp>> expressions;
    for (const auto& [name, expression] : measures) {
        const auto* call = dynamic_cast<const VQLFuncallExpression*>(expression.get());
        if (!call || !call->IsAggregate()) Raise("measure expressions must be aggregate");
        for (const auto& argument : call->GetArguments()) {
            if (!argument->IsScalar()) Raise("inputs to aggregate functions must be scalar");
        }
        expressions.push_back(compile(expression));
        expressions.back()->SetName(GetIdentifier(name));
    }
    return expressions;
}

const std::wstring& VQLQueryCompiler::GetGroupByKey(const VQLBinding& groupBy) {
    const auto* column = dynamic_cast<const VQLIdentifierExpression*>(groupBy.second.get());
    if (!column) Raise("group-by expressions must be trivial");
    if (!(column->GetIdentifier() == groupBy.first)) Raise("bad group-by identifier");
    return GetIdentifier(groupBy.first);
}

void VQLQueryCompiler::VisitAggregate(VQLAggregateQuery& query) {
    RefCntPtr<DataFlow> input = CompileFlow(query.GetInput());
    ColumnNames keys;
    for (const auto& groupBy : query.GetGroupBys()) keys.insert(GetGroupByKey(groupBy));
    std::vector<RefCntPtr<Exp>> measures = CompileMeasures(query.GetMeasures(), *input);
    const bool finishes = std::any_of(measures.begin(), measures.end(),
                                      [](const RefCntPtr<Exp>& measure) { return measure->NeedsFinish(); });
    if (query.IsOrdered() && !finishes && OrdAggr::CanCompare(*input, keys)) {
        Push(MakeRef<OrdAggr>(std::move(input), std::move(keys), std::move(measures)));
        return;
    }
    const unsigned estimate = EstimateGroups(*input, keys);
    Push(MakeRef<Aggr>(std::move(input), std::move(keys), std::move(measures), Aggr::noLimit, estimate));
}

std::vector<Namespace::SortSpec> VQLQueryCompiler::GetSortSpecs(const VQLOrderQuery::Orders& orders) {
    std::vector<Namespace::SortSpec> specs;
    for (const auto& order : orders) {
        const auto* column = dynamic_cast<const VQLIdentifierExpression*>(order.expression.get());
        if (!column) Raise("order expressions must be trivial");
        specs.push_back({GetIdentifier(column->GetIdentifier()), order.sense == VQLSortSense::descending});
    }
    return specs;
}

void VQLQueryCompiler::VisitOrder(VQLOrderQuery& query) {
    // Rows to be sorted are read whole, and then by their numbers: encoded cells would only have to be decoded.
    const RefCntPtr<Namespace> rows = Compile(query.GetInput());
    RefCntPtr<Table> input = DynamicPtrCast<Table>(rows);
    if (!input) input = MakeRef<FlowTable>(MakeDataFlow(rows), EncodingFactory::Mask::None);
    std::vector<std::wstring> ranks;
    for (const auto& order : query.GetOrders()) {
        ranks.push_back(order.output.empty() ? std::wstring() : GetIdentifier(order.output));
    }
    Push(MakeRef<Order>(std::move(input), GetSortSpecs(query.GetOrders()), std::move(ranks)));
}

void VQLQueryCompiler::VisitTop(VQLTopQuery& query) {
    RefCntPtr<DataFlow> input = CompileFlow(query.GetInput());
    const int count = query.GetTopCount();
    Push(MakeRef<TopN>(std::move(input), GetSortSpecs(query.GetOrders()), count > 0 ? count : 0));
}

void VQLQueryCompiler::VisitAppend(VQLAppendQuery& query) {
    RefCntPtr<DataFlow> outer = CompileFlow(query.GetLeft());
    std::vector<RefCntPtr<DataFlow>> inners;
    std::vector<Append::Renames> renames;
    for (size_t i = 0; i < query.GetRightList().size(); ++i) {
        inners.push_back(CompileFlow(query.GetRightList()[i]));
        Append::Renames& names = renames.emplace_back();
        for (const auto& [from, to] : query.GetRenamesList()[i]) names[GetIdentifier(from)] = GetIdentifier(to);
    }
    Push(MakeRef<Append>(std::move(outer), std::move(inners), std::move(renames)));
}

void VQLQueryCompiler::VisitPivot(VQLPivotQuery& query) {
    RefCntPtr<DataFlow> input = CompileFlow(query.GetInput());
    const auto makeGroup = [](const VQLPivotQuery::Group& group) {
        Pivot::Group made{GetIdentifier(group.first), {}};
        for (const VQLIdentifier& member : group.second) made.members.push_back(GetIdentifier(member));
        return made;
    };
    std::vector<Pivot::Group> groups;
    for (const auto& group : query.GetGroups()) groups.push_back(makeGroup(group));
    Push(MakeRef<Pivot>(std::move(input), makeGroup(query.GetTags()), std::move(groups), query.DefaultCollation()));
}

void VQLQueryCompiler::VisitIndexTable(VQLIndexTableQuery& query) {
    if (query.GetParallelism() > 1) RaiseNotSupported("reading a table in parallel");
    const std::wstring name = GetIdentifier(query.GetRLEColumnName());
    RefCntPtr<LeafTable> leaf = MakeLeafTable(query.GetTableName(), query.GetDatabasePath(), {name});
    if (leaf->DescribeColumn(name)->GetProperties().text(usrpropkey::encoding) != L"rle") Raise("expected RLE column");
    PushLeaf(MakeRef<IndexTable>(std::move(leaf), name), LeafColumns(query));
}

void VQLQueryCompiler::PushLeaf(RefCntPtr<Table> table, const LeafColumns& columns) {
    if (columns.IsTrivial()) {
        Push(std::move(table));
    } else {
        Push(columns.Apply(MakeRef<Scan>(std::move(table), columns.stored)));
    }
}

void VQLQueryCompiler::VisitIndexJoin(VQLIndexJoinQuery& query) {
    Join::NamePairs imports;
    for (const auto& [name, expression] : query.GetImports()) {
        const auto* column = dynamic_cast<const VQLIdentifierExpression*>(expression.get());
        if (!column) Raise("imports of an index join must be identifiers");
        imports.emplace_back(GetIdentifier(column->GetIdentifier()), GetIdentifier(name));
    }
    RefCntPtr<Table> table = MakeTable(Compile(query.GetLeft()));
    RefCntPtr<DataFlow> ranges = CompileFlow(query.GetRight());
    Push(MakeRef<IndexJoin>(std::move(table), std::move(ranges), std::move(imports),
                            GetIdentifier(query.GetStartColumnName()), GetIdentifier(query.GetCountColumnName())));
}

void VQLQueryCompiler::VisitDomain(VQLDomainQuery& query) {
    if (query.GetParallelism() > 1) RaiseNotSupported("reading a domain in parallel");
    if (query.GetQualifiedColumnName().GetComponents().size() != 3) Raise("expected schema.table.column identifier");
    const std::wstring name = GetIdentifier(query.GetColumnName());
    PushLeaf(MakeRef<DictionaryTable>(MakeLeafTable(query.GetTableName(), query.GetDatabasePath(), {name}), name),
             LeafColumns(query));
}
void VQLQueryCompiler::VisitExchange(VQLExchangeQuery&) {
    RaiseNotSupported("exchange");
}
void VQLQueryCompiler::VisitRemoteQuery(VQLRemoteQuery&) {
    RaiseNotSupported("remotequery");
}

}  // namespace qve
