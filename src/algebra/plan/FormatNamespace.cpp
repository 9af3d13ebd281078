#include "algebra/plan/FormatNamespace.h"

#include <algorithm>

#include "algebra/Aggr.h"
#include "algebra/Append.h"
#include "algebra/CartProd.h"
#include "algebra/ClusteringFlow.h"
#include "algebra/Compact.h"
#include "algebra/DictionaryTable.h"
#include "algebra/FlowTable.h"
#include "algebra/FractionTable.h"
#include "algebra/IndexJoin.h"
#include "algebra/IndexTable.h"
#include "algebra/LeafTable.h"
#include "algebra/Lookup.h"
#include "algebra/OrdAggr.h"
#include "algebra/Order.h"
#include "algebra/PartitionRestart.h"
#include "algebra/PartitionSplit.h"
#include "algebra/Pivot.h"
#include "algebra/PositionalJoin.h"
#include "algebra/Project.h"
#include "algebra/Restrict.h"
#include "algebra/Scan.h"
#include "algebra/Select.h"
#include "algebra/SharedTable.h"
#include "algebra/TopN.h"
#include "algebra/Update.h"
#include "algebra/plan/format_properties.h"
#include "ingest/TextScan.h"
#include "storage/Column.h"
#include "storage/Database.h"
#include "storage/DatabaseSchema.h"
#include "vql/syntax/FormatDataValue.h"
#include "vql/syntax/VQLIdentifier.h"

namespace qve {
namespace {

std::wstring Quote(const std::wstring& name) {
    return VQLIdentifier::UnquotedName(name);
}

template <class Range, class Text>
std::wstring List(const Range& range, Text text) {
    std::wstring list;
    for (const auto& member : range) {
        if (!list.empty()) list += L' ';
        list += text(member);
    }
    return L"(" + list + L")";
}

}  // namespace

std::wstring FormatNamespace::Do(Namespace& plan, const Database* current) {
    std::wstring text;
    for (const Line& line : Lines(plan, current)) {
        if (!text.empty()) text += L'\n';
        text += Indent(line.depth) + line.text + std::wstring(line.closed, L')');
    }
    return text;
}

std::vector<FormatNamespace::Line> FormatNamespace::Lines(Namespace& plan, const Database* current) {
    FormatNamespace format(current);
    plan.Accept(format);
    return std::move(format.m_lines);
}

std::wstring FormatNamespace::Indent(unsigned depth) {
    return std::wstring(2 * size_t{depth}, L' ');
}

FormatNamespace::Operator::Operator(FormatNamespace& format, const Namespace& node, std::wstring text)
    : m_format(format) {
    m_format.m_lines.push_back({m_format.m_depth, L"(" + std::move(text), &node, 0});
    ++m_format.m_depth;
}

FormatNamespace::Operator::~Operator() {
    --m_format.m_depth;
    ++m_format.m_lines.back().closed;
}

std::wstring FormatNamespace::Names(const ColumnNames& names) {
    return List(names, Quote);
}
std::wstring FormatNamespace::Names(const std::vector<std::wstring>& names) {
    return List(names, Quote);
}

std::wstring FormatNamespace::Pairs(const Join::NamePairs& pairs) {
    return List(pairs, [](const auto& pair) { return L"(" + Quote(pair.first) + L" " + Quote(pair.second) + L")"; });
}

std::wstring FormatNamespace::Bindings(ContextType context, const std::vector<RefCntPtr<Exp>>& expressions) {
    return List(expressions, [context](const RefCntPtr<Exp>& exp) {
        return L"(" + Quote(exp->GetName()) + L" " + FormatExp::Do(context, exp) + L")";
    });
}

std::wstring FormatNamespace::Sorts(const std::vector<Namespace::SortSpec>& specs,
                                    const std::vector<std::wstring>& ranks) {
    size_t place = 0;
    return List(specs, [&](const Namespace::SortSpec& spec) {
        const std::wstring rank = place < ranks.size() ? ranks[place] : std::wstring();
        ++place;
        return L"(" + Quote(spec.name) + (spec.descending ? L" desc" : L" asc") +
               (rank.empty() ? rank : L" " + Quote(rank)) + L")";
    });
}

void FormatNamespace::VisitAggr(Aggr& table) {
    std::wstring text =
        L"aggregate " + Names(table.GetKeyNames()) + L" " + Bindings(ContextType::aggregate, table.GetAggregates());
    if (table.GetEstimate() > 0) text += L" " + std::to_wstring(table.GetEstimate());
    const Operator line(*this, table, std::move(text));
    OperatorVisitorImpl::VisitAggr(table);
}

void FormatNamespace::VisitAppend(Append& flow) {
    const Operator line(*this, flow, L"append " + List(flow.GetRenames(), [](const Append::Renames& renames) {
                                         return Pairs({renames.begin(), renames.end()});
                                     }));
    OperatorVisitorImpl::VisitAppend(flow);
}

void FormatNamespace::VisitOrdAggr(OrdAggr& flow) {
    const Operator line(
        *this, flow,
        L"ordaggr " + Names(flow.GetKeyNames()) + L" " + Bindings(ContextType::aggregate, flow.GetAggregates()));
    OperatorVisitorImpl::VisitOrdAggr(flow);
}

void FormatNamespace::VisitFlowTable(FlowTable& table) {
    std::wstring text = L"flowtable";
    if (table.GetEncodings() == 0) text += L" plain";
    if (table.GetEncodings() == FlowTable::randomAccess) text += L" random-access";
    const Operator line(*this, table, std::move(text));
    OperatorVisitorImpl::VisitFlowTable(table);
}

void FormatNamespace::VisitCartProd(CartProd& flow) {
    const Operator line(*this, flow, L"cartprod " + Pairs(flow.GetImports()));
    OperatorVisitorImpl::VisitCartProd(flow);
}

void FormatNamespace::VisitClusteringFlow(ClusteringFlow& flow) {
    std::wstring text = L"clustering-flow " + FormatExp::Do(ContextType::map, flow.GetNumber()) + L" " +
                        std::to_wstring(flow.GetClusterCount());
    if (flow.GetLimit() != ClusteringFlow::rowsOfCluster * flow.GetClusterCount()) {
        text += L" " + std::to_wstring(flow.GetLimit());
    }
    const Operator line(*this, flow, std::move(text));
    OperatorVisitorImpl::VisitClusteringFlow(flow);
}

void FormatNamespace::VisitCompact(Compact& flow) {
    const Operator line(*this, flow, L"compact");
    OperatorVisitorImpl::VisitCompact(flow);
}

void FormatNamespace::VisitDictionaryTable(DictionaryTable& table) {
    const Operator line(*this, table, L"dict " + Quote(table.GetName()));
    OperatorVisitorImpl::VisitDictionaryTable(table);
}

void FormatNamespace::VisitPartitionRestart(PartitionRestart& flow) {
    const Operator line(*this, flow, L"partition-restart");
    OperatorVisitorImpl::VisitPartitionRestart(flow);
}

void FormatNamespace::VisitPartitionSplit(PartitionSplit& flow) {
    const Operator line(*this, flow, L"partition-split " + Quote(flow.GetColumnName()));
    OperatorVisitorImpl::VisitPartitionSplit(flow);
}

void FormatNamespace::VisitUpdate(Update& flow) {
    const Operator line(*this, flow, L"update " + Pairs(flow.GetPairs()));
    OperatorVisitorImpl::VisitUpdate(flow);
}

void FormatNamespace::VisitFractionTable(FractionTable& table) {
    std::wstring text =
        L"fraction " + std::to_wstring(table.GetFraction()) + L" " + std::to_wstring(table.GetFractionCount());
    if (!table.GetClusters().empty()) text += L" " + Names(table.GetClusters());
    const Operator line(*this, table, std::move(text));
    OperatorVisitorImpl::VisitFractionTable(table);
}

// A plan has one view of each table; what others see of it is their matter.
void FormatNamespace::VisitSharedTable(SharedTable& table) {
    const Operator line(*this, table, L"shared");
    OperatorVisitorImpl::VisitSharedTable(table);
}

void FormatNamespace::VisitIndexTable(IndexTable& table) {
    const Operator line(*this, table, L"indextable " + Quote(table.GetName()));
    OperatorVisitorImpl::VisitIndexTable(table);
}

void FormatNamespace::VisitIndexJoin(IndexJoin& flow) {
    const Operator line(*this, flow,
                        L"indexjoin " + Pairs(flow.GetImports()) + L" " + Quote(flow.GetStartName()) + L" " +
                            Quote(flow.GetCountName()));
    OperatorVisitorImpl::VisitIndexJoin(flow);
}

void FormatNamespace::VisitPivot(Pivot& flow) {
    const auto group = [](const Pivot::Group& one) {
        return L"(" + Quote(one.name) + L" " + Names(one.members) + L")";
    };
    std::wstring text = L"pivot " + group(flow.GetTags()) + L" " + List(flow.GetGroups(), group);
    if (!flow.GetCollation().empty()) text += L" " + FormatString(flow.GetCollation());
    const Operator line(*this, flow, std::move(text));
    OperatorVisitorImpl::VisitPivot(flow);
}

void FormatNamespace::VisitPositionalJoin(PositionalJoin& table) {
    const Operator line(*this, table, L"positionaljoin");
    OperatorVisitorImpl::VisitPositionalJoin(table);
}

void FormatNamespace::VisitJoin(Join& flow) {
    static constexpr const wchar_t* words[] = {L"inner", L"left", L"right", L"full"};
    const bool isLookup = dynamic_cast<const Lookup*>(&flow) != nullptr;
    std::wstring text = std::wstring(isLookup ? L"lookup " : L"join ") + words[flow.GetJoinType()];
    if (flow.GetSemantics() == CompareSemantics::nullsMatch) text += L" isnotdistinct";
    text += L" " + Pairs(flow.GetKeys()) + L" " + Pairs(flow.GetImports());
    const Operator line(*this, flow, std::move(text));
    OperatorVisitorImpl::VisitJoin(flow);
}

void FormatNamespace::VisitLeafTable(LeafTable& table) {
    std::wstring text = L"table ";
    const DatabaseSchema* schema = table.GetSchema();
    if (schema) text += Quote(schema->GetName()) + L".";
    text += Quote(table.GetName()) + L" " + Names(table.GetColumnNames());
    if (schema && m_current && schema->GetDatabase() != m_current) {
        text += L" " + FormatString(schema->GetDatabase()->GetRoot());
    }
    const Operator line(*this, table, std::move(text));
    OperatorVisitorImpl::VisitLeafTable(table);
}

void FormatNamespace::VisitOrder(Order& table) {
    std::wstring text = L"order " + Sorts(table.GetSpecs(), table.GetRankColumns());
    if (table.GetLimit() != Order::noLimit) text += L" " + std::to_wstring(table.GetLimit());
    const Operator line(*this, table, std::move(text));
    OperatorVisitorImpl::VisitOrder(table);
}

void FormatNamespace::VisitTopN(TopN& flow) {
    const Operator line(*this, flow, L"top " + Sorts(flow.GetSpecs(), {}) + L" " + std::to_wstring(flow.GetLimit()));
    OperatorVisitorImpl::VisitTopN(flow);
}

void FormatNamespace::VisitProject(Project& flow) {
    const Operator line(*this, flow, L"project " + Bindings(ContextType::map, flow.GetExpressions()));
    OperatorVisitorImpl::VisitProject(flow);
}

// The columns of a result are listed in their order there.
void FormatNamespace::VisitRestrict(Restrict& flow) {
    const ColumnNames all = flow.GetColumnNames();
    std::vector<std::wstring> names(all.begin(), all.end());
    std::stable_sort(names.begin(), names.end(), [&flow](const std::wstring& a, const std::wstring& b) {
        return flow.DescribeColumn(a)->GetSizeProperty(usrpropkey::ordinal) <
               flow.DescribeColumn(b)->GetSizeProperty(usrpropkey::ordinal);
    });
    const Operator line(*this, flow, L"restrict " + Names(names));
    OperatorVisitorImpl::VisitRestrict(flow);
}

void FormatNamespace::VisitScan(Scan& flow) {
    const Operator line(*this, flow, L"scan " + Names(flow.GetColumnNames()));
    OperatorVisitorImpl::VisitScan(flow);
}

void FormatNamespace::VisitSelect(Select& flow) {
    const Operator line(*this, flow, L"select " + FormatExp::Do(ContextType::select, flow.GetPredicate()));
    OperatorVisitorImpl::VisitSelect(flow);
}

void FormatNamespace::VisitTextScan(TextScan& flow) {
    const Operator line(*this, flow,
                        L"text " + FormatString(flow.GetPath()) + L" " + List(flow.GetSchema(), format_properties) +
                            L" " + format_properties(flow.GetTextProperties()) + L" " + Names(flow.GetColumnNames()));
    OperatorVisitorImpl::VisitTextScan(flow);
}

}  // namespace qve
