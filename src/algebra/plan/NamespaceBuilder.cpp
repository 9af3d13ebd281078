#include "algebra/plan/NamespaceBuilder.h"

#include <algorithm>
#include <limits>
#include <unordered_map>

#include "algebra/Aggr.h"
#include "algebra/AggrExp.h"
#include "algebra/Append.h"
#include "algebra/CartProd.h"
#include "algebra/ClusteringFlow.h"
#include "algebra/Compact.h"
#include "algebra/DictionaryTable.h"
#include "algebra/FlowTable.h"
#include "algebra/FractionTable.h"
#include "algebra/IndexJoin.h"
#include "algebra/IndexTable.h"
#include "algebra/Join.h"
#include "algebra/LeafTable.h"
#include "algebra/Lookup.h"
#include "algebra/OrdAggr.h"
#include "algebra/Order.h"
#include "algebra/PartitionRestart.h"
#include "algebra/PartitionSplit.h"
#include "algebra/PositionalJoin.h"
#include "algebra/Project.h"
#include "algebra/Restrict.h"
#include "algebra/Scan.h"
#include "algebra/Select.h"
#include "algebra/SharedTable.h"
#include "algebra/TopN.h"
#include "algebra/Update.h"
#include "algebra/plan/ExpBuilder.h"
#include "algebra/plan/status.h"
#include "ingest/TextScan.h"
#include "storage/Column.h"
#include "storage/Database.h"
#include "storage/DatabaseSchema.h"
#include "vql/syntax/VQLPropertyListParser.h"

namespace qve {
namespace {

constexpr long long anyNumber = std::numeric_limits<long long>::max();
constexpr size_t anyCount = std::numeric_limits<size_t>::max() - 1;

const std::wstring* SymbolAt(const VQLNodeReader::Nodes& form, size_t place) {
    const auto* symbol = place < form.size() ? dynamic_cast<const VQLSymbolNode*>(form[place].get()) : nullptr;
    return symbol ? &symbol->GetSymbol() : nullptr;
}

}  // namespace

NamespaceBuilder::NamespaceBuilder(RefCntPtr<Database> database)
    : m_reader(status::NamespaceBuilder_Raise), m_database(std::move(database)) {}

RefCntPtr<Namespace> NamespaceBuilder::Finish(RefCntPtr<Namespace> built, unsigned) {
    return built;
}

std::wstring NamespaceBuilder::ResolveDataFile(const std::wstring& path) const {
    return path;
}

RefCntPtr<Namespace> NamespaceBuilder::Build(const RefCntPtr<VQLNode>& node) {
    static const std::unordered_map<std::wstring, Builder> builders{
        {L"aggregate", &NamespaceBuilder::BuildAggr},
        {L"ordaggr", &NamespaceBuilder::BuildAggr},
        {L"append", &NamespaceBuilder::BuildAppend},
        {L"cartprod", &NamespaceBuilder::BuildCartProd},
        {L"clustering-flow", &NamespaceBuilder::BuildClusteringFlow},
        {L"compact", &NamespaceBuilder::BuildCompact},
        {L"fraction", &NamespaceBuilder::BuildFractionTable},
        {L"shared", &NamespaceBuilder::BuildSharedTable},
        {L"flowtable", &NamespaceBuilder::BuildFlowTable},
        {L"indexjoin", &NamespaceBuilder::BuildIndexJoin},
        {L"dict", &NamespaceBuilder::BuildDictionaryTable},
        {L"indextable", &NamespaceBuilder::BuildIndexTable},
        {L"partition-restart", &NamespaceBuilder::BuildPartitionRestart},
        {L"partition-split", &NamespaceBuilder::BuildPartitionSplit},
        {L"pivot", &NamespaceBuilder::BuildPivot},
        {L"positionaljoin", &NamespaceBuilder::BuildPositionalJoin},
        {L"join", &NamespaceBuilder::BuildJoin},
        {L"lookup", &NamespaceBuilder::BuildJoin},
        {L"order", &NamespaceBuilder::BuildOrder},
        {L"project", &NamespaceBuilder::BuildProject},
        {L"restrict", &NamespaceBuilder::BuildRestrict},
        {L"scan", &NamespaceBuilder::BuildScan},
        {L"select", &NamespaceBuilder::BuildSelect},
        {L"table", &NamespaceBuilder::BuildTable},
        {L"text", &NamespaceBuilder::BuildText},
        {L"top", &NamespaceBuilder::BuildTopN},
        {L"update", &NamespaceBuilder::BuildUpdate},
    };
    const Nodes& form = m_reader.List(node);
    if (form.empty()) m_reader.Raise(L"empty operator", node);
    const auto builder = builders.find(m_reader.Symbol(form[0]));
    if (builder == builders.end()) m_reader.Raise(L"unknown operator (" + VQLNodeReader::Head(form) + L")", node);
    const RefCntPtr<VQLNode> outer = std::exchange(m_node, node);
    const unsigned number = m_count++;
    RefCntPtr<Namespace> built = Finish((this->*builder->second)(form), number);
    m_node = outer;
    return built;
}

void NamespaceBuilder::Expect(const Nodes& form, size_t least, size_t most) const {
    if (form.size() < least + 1 || form.size() > most + 1) m_reader.Raise(L"Wrong number of arguments", m_node);
}

RefCntPtr<DataFlow> NamespaceBuilder::AsFlow(const RefCntPtr<Namespace>& input) {
    if (auto flow = DynamicPtrCast<DataFlow>(input)) return flow;
    return MakeRef<Scan>(StaticPtrCast<Table>(input));
}

RefCntPtr<Table> NamespaceBuilder::AsTable(const RefCntPtr<Namespace>& input) {
    if (auto table = DynamicPtrCast<Table>(input)) return table;
    return MakeRef<FlowTable>(StaticPtrCast<DataFlow>(input));
}

const std::wstring& NamespaceBuilder::Name(const RefCntPtr<VQLNode>& node) const {
    const auto& components = m_reader.Identifier(node).GetComponents();
    if (components.size() != 1) m_reader.Raise(L"composite identifier", node);
    return components.front().AsString();
}

ColumnNames NamespaceBuilder::BuildIdentifiers(const RefCntPtr<VQLNode>& node, const Namespace* input) const {
    ColumnNames names;
    for (const RefCntPtr<VQLNode>& member : m_reader.List(node)) {
        const std::wstring& name = Name(member);
        if (input) input->DescribeColumn(name);
        names.insert(name);
    }
    return names;
}

std::vector<RefCntPtr<Exp>> NamespaceBuilder::BuildBindings(const RefCntPtr<VQLNode>& node, ContextType context,
                                                            const Namespace& input) const {
    std::vector<RefCntPtr<Exp>> expressions;
    for (const RefCntPtr<VQLNode>& member : m_reader.List(node)) {
        const Nodes& binding = m_reader.List(member, 2, L"wrong number of arguments to binding");
        expressions.push_back(ExpBuilder(context, input)(binding[1]));
        expressions.back()->SetName(Name(binding[0]));
    }
    return expressions;
}

std::vector<std::pair<std::wstring, std::wstring>> NamespaceBuilder::BuildRenames(const RefCntPtr<VQLNode>& node,
                                                                                  const Namespace& from) const {
    std::vector<std::pair<std::wstring, std::wstring>> renames;
    for (const RefCntPtr<VQLNode>& member : m_reader.List(node)) {
        const Nodes& rename = m_reader.List(member, 2, L"renames take two identifiers");
        from.DescribeColumn(Name(rename[0]));
        renames.emplace_back(Name(rename[0]), Name(rename[1]));
    }
    return renames;
}

std::pair<std::vector<Namespace::SortSpec>, std::vector<std::wstring>> NamespaceBuilder::BuildSortSpecs(
    const RefCntPtr<VQLNode>& node, const Namespace& input) const {
    std::vector<Namespace::SortSpec> specs;
    std::vector<std::wstring> ranks;
    for (const RefCntPtr<VQLNode>& member : m_reader.List(node)) {
        const Nodes& sort = m_reader.List(member);
        const std::wstring* sense = SymbolAt(sort, 1);
        if (sort.size() < 2 || sort.size() > 3 || !sense || (*sense != L"asc" && *sense != L"desc")) {
            m_reader.Raise(L"invalid sort spec", member);
        }
        input.DescribeColumn(Name(sort[0]));
        specs.push_back({Name(sort[0]), *sense == L"desc"});
        ranks.push_back(sort.size() == 3 ? Name(sort[2]) : std::wstring());
    }
    return {std::move(specs), std::move(ranks)};
}

RefCntPtr<Namespace> NamespaceBuilder::BuildAggr(const Nodes& form) {
    const bool ordered = VQLNodeReader::Head(form) == L"ordaggr";
    Expect(form, 3, ordered ? 3 : 4);
    RefCntPtr<DataFlow> source = BuildFlow(form.back());
    ColumnNames keys = BuildIdentifiers(form[1], source.get());
    std::vector<RefCntPtr<Exp>> aggregates = BuildBindings(form[2], ContextType::aggregate, *source);
    const auto isAggregate = [](const RefCntPtr<Exp>& exp) { return dynamic_cast<AggrExp*>(exp.get()) != nullptr; };
    if (!std::all_of(aggregates.begin(), aggregates.end(), isAggregate)) {
        m_reader.Raise(L"Invalid Operator: measures must be aggregates", form[2]);
    }
    const auto finishes = [](const RefCntPtr<Exp>& exp) { return exp->NeedsFinish(); };
    if (ordered && std::any_of(aggregates.begin(), aggregates.end(), finishes)) {
        m_reader.Raise(L"Invalid Operator: measures of whole groups need an aggregate", form[2]);
    }
    if (ordered) return MakeRef<OrdAggr>(std::move(source), std::move(keys), std::move(aggregates));
    const long long groups = form.size() == 5 ? m_reader.Integer(form[3], 0, ~0u) : 0;
    return MakeRef<Aggr>(std::move(source), std::move(keys), std::move(aggregates), Aggr::noLimit,
                         static_cast<unsigned>(groups));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildAppend(const Nodes& form) {
    Expect(form, 3, anyCount);
    const Nodes& lists = m_reader.List(form[1], form.size() - 3, L"one list of renames for each flow but the first");
    RefCntPtr<DataFlow> outer = BuildFlow(form[2]);
    std::vector<RefCntPtr<DataFlow>> inners;
    std::vector<Append::Renames> renames;
    for (size_t i = 0; i < lists.size(); ++i) {
        inners.push_back(BuildFlow(form[i + 3]));
        const auto pairs = BuildRenames(lists[i], *inners.back());
        for (const auto& pair : pairs) outer->DescribeColumn(pair.second);
        renames.emplace_back(pairs.begin(), pairs.end());
    }
    return MakeRef<Append>(std::move(outer), std::move(inners), std::move(renames));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildFlowTable(const Nodes& form) {
    Expect(form, 1, 2);
    uint64_t encodings = FlowTable::anyEncoding;
    if (form.size() == 3) {
        const std::wstring& access = m_reader.Symbol(form[1]);
        if (access != L"random-access" && access != L"plain") m_reader.Raise(L"unknown access", form[1]);
        encodings = access == L"plain" ? 0 : FlowTable::randomAccess;
    }
    return MakeRef<FlowTable>(BuildFlow(form.back()), encodings);
}

RefCntPtr<Namespace> NamespaceBuilder::BuildClusteringFlow(const Nodes& form) {
    constexpr long long mostClusters = 1 << 16;
    Expect(form, 3, 4);
    RefCntPtr<DataFlow> source = BuildFlow(form.back());
    RefCntPtr<Exp> number = ExpBuilder(ContextType::map, *source)(form[1]);
    const auto clusters = static_cast<unsigned>(m_reader.Integer(form[2], 1, mostClusters));
    const long long limit = form.size() == 5 ? m_reader.Integer(form[3], 1, anyNumber)
                                             : static_cast<long long>(ClusteringFlow::rowsOfCluster * clusters);
    return MakeRef<ClusteringFlow>(std::move(source), std::move(number), clusters,
                                   static_cast<unsigned long long>(limit));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildCompact(const Nodes& form) {
    Expect(form, 1, 1);
    return MakeRef<Compact>(BuildFlow(form[1]));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildFractionTable(const Nodes& form) {
    Expect(form, 3, 4);
    const auto count = static_cast<unsigned>(m_reader.Integer(form[2], 1, ~0u));
    const auto index = static_cast<unsigned>(m_reader.Integer(form[1], 0, count - 1));
    RefCntPtr<Table> table = BuildSource(form.back());
    std::vector<std::wstring> clusters;
    if (form.size() == 5) {
        for (const RefCntPtr<VQLNode>& member : m_reader.List(form[3])) {
            table->DescribeColumn(Name(member));
            clusters.push_back(Name(member));
        }
    }
    return MakeRef<FractionTable>(std::move(table), index, count, std::move(clusters));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildSharedTable(const Nodes& form) {
    Expect(form, 1, 1);
    return MakeRef<SharedTable>(BuildSource(form[1]));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildJoin(const Nodes& form) {
    static const std::unordered_map<std::wstring, Join::JoinType> types{
        {L"inner", Join::InnerJoin}, {L"left", Join::LeftJoin}, {L"right", Join::RightJoin}, {L"full", Join::FullJoin}};
    Expect(form, 5, 6);
    const auto type = types.find(m_reader.Symbol(form[1]));
    if (type == types.end()) m_reader.Raise(L"unknown join type", form[1]);
    const bool nullsMatch = form.size() == 7;
    if (nullsMatch && m_reader.Symbol(form[2]) != L"isnotdistinct") m_reader.Raise(L"expected isnotdistinct", form[2]);
    const size_t keys = nullsMatch ? 3 : 2;
    RefCntPtr<DataFlow> outer = BuildFlow(form[keys + 2]);
    RefCntPtr<Table> inner = BuildSource(form[keys + 3]);
    Join::NamePairs pairs = BuildRenames(form[keys], *outer);
    for (const auto& pair : pairs) inner->DescribeColumn(pair.second);
    Join::NamePairs imports = BuildRenames(form[keys + 1], *inner);
    if (m_reader.Symbol(form[0]) == L"lookup") {
        return MakeRef<Lookup>(std::move(outer), std::move(inner), std::move(pairs), std::move(imports), type->second,
                               nullsMatch);
    }
    return MakeRef<Join>(std::move(outer), std::move(inner), std::move(pairs), std::move(imports), type->second,
                         nullsMatch);
}

RefCntPtr<Namespace> NamespaceBuilder::BuildCartProd(const Nodes& form) {
    Expect(form, 3, 3);
    RefCntPtr<DataFlow> outer = BuildFlow(form[2]);
    RefCntPtr<Table> inner = BuildSource(form[3]);
    Join::NamePairs imports = BuildRenames(form[1], *inner);
    return MakeRef<CartProd>(std::move(outer), std::move(inner), std::move(imports));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildIndexTable(const Nodes& form) {
    Expect(form, 2, 2);
    RefCntPtr<Table> table = BuildSource(form[2]);
    table->DescribeColumn(Name(form[1]));
    return MakeRef<IndexTable>(std::move(table), Name(form[1]));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildDictionaryTable(const Nodes& form) {
    Expect(form, 2, 2);
    RefCntPtr<Table> table = BuildSource(form[2]);
    table->DescribeColumn(Name(form[1]));
    return MakeRef<DictionaryTable>(std::move(table), Name(form[1]));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildPartitionRestart(const Nodes& form) {
    Expect(form, 1, 1);
    RefCntPtr<DataFlow> source = BuildFlow(form[1]);
    if (!PartitionRestart::FindSplit(source)) m_reader.Raise(L"Invalid Operator: no partition-split below", form[0]);
    return MakeRef<PartitionRestart>(std::move(source));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildPartitionSplit(const Nodes& form) {
    Expect(form, 2, 2);
    RefCntPtr<DataFlow> source = BuildFlow(form[2]);
    source->DescribeColumn(Name(form[1]));
    return MakeRef<PartitionSplit>(std::move(source), Name(form[1]));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildUpdate(const Nodes& form) {
    Expect(form, 2, 2);
    RefCntPtr<DataFlow> source = BuildFlow(form[2]);
    Update::Pairs pairs = BuildRenames(form[1], *source);
    for (const auto& pair : pairs) source->DescribeColumn(pair.second);
    return MakeRef<Update>(std::move(source), std::move(pairs));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildIndexJoin(const Nodes& form) {
    Expect(form, 5, 5);
    RefCntPtr<DataFlow> ranges = BuildFlow(form[4]);
    RefCntPtr<Table> table = BuildSource(form[5]);
    Join::NamePairs imports = BuildRenames(form[1], *ranges);
    for (const size_t place : {2, 3}) ranges->DescribeColumn(Name(form[place]));
    return MakeRef<IndexJoin>(std::move(table), std::move(ranges), std::move(imports), Name(form[2]), Name(form[3]));
}

Pivot::Group NamespaceBuilder::BuildPivotGroup(const RefCntPtr<VQLNode>& node) const {
    const Nodes& pair = m_reader.List(node, 2, L"invalid pivot group");
    Pivot::Group group{Name(pair[0]), {}};
    for (const RefCntPtr<VQLNode>& member : m_reader.List(pair[1])) group.members.push_back(Name(member));
    if (group.members.empty()) m_reader.Raise(L"invalid pivot group", node);
    return group;
}

RefCntPtr<Namespace> NamespaceBuilder::BuildPivot(const Nodes& form) {
    Expect(form, 3, 4);
    RefCntPtr<DataFlow> source = BuildFlow(form.back());
    Pivot::Group tags = BuildPivotGroup(form[1]);
    std::vector<Pivot::Group> groups;
    for (const RefCntPtr<VQLNode>& group : m_reader.List(form[2])) groups.push_back(BuildPivotGroup(group));
    std::wstring collation = form.size() == 5 ? m_reader.String(form[3], L"the collation is no text") : std::wstring();
    return MakeRef<Pivot>(std::move(source), std::move(tags), std::move(groups), std::move(collation));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildPositionalJoin(const Nodes& form) {
    Expect(form, 1, 2);
    RefCntPtr<Table> first = BuildSource(form[1]);
    RefCntPtr<Table> second = form.size() == 3 ? BuildSource(form[2]) : nullptr;
    return MakeRef<PositionalJoin>(std::move(first), std::move(second));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildOrder(const Nodes& form) {
    Expect(form, 2, 3);
    RefCntPtr<Table> source = BuildSource(form.back());
    auto [specs, ranks] = BuildSortSpecs(form[1], *source);
    const uint64_t limit =
        form.size() == 4 ? static_cast<uint64_t>(m_reader.Integer(form[2], 0, anyNumber)) : Order::noLimit;
    return MakeRef<Order>(std::move(source), std::move(specs), std::move(ranks), limit);
}

RefCntPtr<Namespace> NamespaceBuilder::BuildProject(const Nodes& form) {
    Expect(form, 2, 2);
    RefCntPtr<DataFlow> source = BuildFlow(form[2]);
    std::vector<RefCntPtr<Exp>> expressions = BuildBindings(form[1], ContextType::map, *source);
    return MakeRef<Project>(std::move(source), std::move(expressions));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildRestrict(const Nodes& form) {
    Expect(form, 2, 2);
    RefCntPtr<DataFlow> source = BuildFlow(form[2]);
    const ColumnNames names = BuildIdentifiers(form[1], source.get());
    return MakeRef<Restrict>(std::move(source), names);
}

RefCntPtr<Namespace> NamespaceBuilder::BuildScan(const Nodes& form) {
    Expect(form, 2, 2);
    RefCntPtr<Table> table = BuildSource(form[2]);
    const ColumnNames names = BuildIdentifiers(form[1], table.get());
    return MakeRef<Scan>(std::move(table), names);
}

RefCntPtr<Namespace> NamespaceBuilder::BuildSelect(const Nodes& form) {
    Expect(form, 2, 2);
    RefCntPtr<DataFlow> source = BuildFlow(form[2]);
    RefCntPtr<Exp> predicate = ExpBuilder(ContextType::select, *source)(form[1]);
    return MakeRef<Select>(std::move(source), std::move(predicate));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildTable(const Nodes& form) {
    Expect(form, 2, 3);
    const auto& name = m_reader.Identifier(form[1]).GetComponents();
    if (name.size() != 2) m_reader.Raise(L"Identifier is not a table name", form[1]);
    if (!m_database) m_reader.Raise(L"No database specified", m_node);
    const std::wstring& schema = name[0].AsString();
    const std::wstring& table = name[1].AsString();
    if (form.size() == 4 && m_reader.String(form[3], L"Invalid database path") != m_database->GetRoot()) {
        m_reader.Raise(L"Invalid database path", form[3]);
    }
    if (!m_database->HasSchema(schema)) m_reader.Raise(L"Unknown schema (" + schema + L")", form[1]);
    DatabaseSchema& handle = *m_database->GetSchema(schema);
    if (!handle.HasTable(table)) m_reader.Raise(L"Unknown table (" + table + L")", form[1]);
    const RefCntPtr<LeafTable> leaf = MakeRef<LeafTable>(handle, table, BuildIdentifiers(form[2], nullptr));
    for (const std::wstring& column : leaf->GetColumnNames()) leaf->DescribeColumn(column);
    return leaf;
}

RefCntPtr<Namespace> NamespaceBuilder::BuildText(const Nodes& form) {
    Expect(form, 4, 4);
    const std::wstring& path = m_reader.String(form[1], L"expected literal");
    std::vector<usrprops> columns;
    for (const RefCntPtr<VQLNode>& column : m_reader.List(form[2]))
        columns.push_back(ParseVQLPropertyList(column, status::NamespaceBuilder_Raise));
    usrprops properties = ParseVQLPropertyList(form[3], status::NamespaceBuilder_Raise);
    return MakeRef<TextScan>(TextScan::OpenFile(ResolveDataFile(path)), std::move(columns), std::move(properties),
                             BuildIdentifiers(form[4], nullptr));
}

RefCntPtr<Namespace> NamespaceBuilder::BuildTopN(const Nodes& form) {
    Expect(form, 3, 3);
    RefCntPtr<DataFlow> source = BuildFlow(form[3]);
    std::vector<Namespace::SortSpec> specs = BuildSortSpecs(form[1], *source).first;
    const auto count = static_cast<uint64_t>(m_reader.Integer(form[2], 0, anyNumber));
    return MakeRef<TopN>(std::move(source), std::move(specs), count);
}

}  // namespace qve
