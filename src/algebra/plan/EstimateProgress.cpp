#include "algebra/plan/EstimateProgress.h"

#include <algorithm>

#include "algebra/Aggr.h"
#include "algebra/Append.h"
#include "algebra/CartProd.h"
#include "algebra/DictionaryTable.h"
#include "algebra/FlowTable.h"
#include "algebra/FractionTable.h"
#include "algebra/IndexJoin.h"
#include "algebra/IndexTable.h"
#include "algebra/Join.h"
#include "algebra/LeafTable.h"
#include "algebra/OrdAggr.h"
#include "algebra/Order.h"
#include "algebra/Pivot.h"
#include "algebra/PositionalJoin.h"
#include "algebra/Scan.h"
#include "algebra/Select.h"
#include "algebra/TopN.h"
#include "commands/CheckDatabase.h"
#include "commands/PackageDatabase.h"
#include "ingest/BinaryScan.h"
#include "ingest/TextScan.h"
#include "types/datatraits.h"

namespace qve {

namespace {

// A part that is not known makes the sum unknown.
uint64_t Sum(uint64_t a, uint64_t b) {
    return a == EstimateProgress::unknown || b == EstimateProgress::unknown ? EstimateProgress::unknown : a + b;
}

uint64_t Share(uint64_t rows, double selectivity) {
    if (rows == EstimateProgress::unknown) return rows;
    return static_cast<uint64_t>(static_cast<double>(rows) * std::clamp(selectivity, 0.0, 1.0));
}

}  // namespace

EstimateProgress::Estimate EstimateProgress::Do(Operator& root) {
    EstimateProgress visitor;
    if (auto* node = dynamic_cast<Namespace*>(&root)) node->Accept(visitor);
    return visitor.Pop();
}

EstimateProgress::Estimate EstimateProgress::Pop() {
    if (m_stack.empty()) return {};
    const Estimate estimate = m_stack.back();
    m_stack.pop_back();
    return estimate;
}

void EstimateProgress::VisitLeafTable(LeafTable& table) {
    const uint64_t rows = table.IsCounted() ? table.GetCount() : unknown;
    Push({.first = rows, .last = rows});
}

void EstimateProgress::PushProgress(const ProgressCallback& progress) {
    uint64_t first, last;
    Estimate work{.first = unknown, .last = unknown};
    progress.GetProgress(first, last, work.done, work.total);
    Push(work);
}

void EstimateProgress::VisitCheckDatabase(CheckDatabase& statement) {
    PushProgress(*statement.GetProgressCallback());
}

void EstimateProgress::VisitPackageDatabase(PackageDatabase& statement) {
    PushProgress(*statement.GetProgressCallback());
}

void EstimateProgress::VisitScan(Scan& flow) {
    OperatorVisitorImpl::VisitScan(flow);
    Estimate rows = Pop();
    rows.done = Sum(rows.done, flow.GetCursor());
    rows.total = Sum(rows.total, rows.last);
    Push(rows);
}

void EstimateProgress::VisitSelect(Select& flow) {
    OperatorVisitorImpl::VisitSelect(flow);
    Estimate rows = Pop();
    if (is_null(flow.GetSelectivity())) {
        rows.first = 0;
    } else {
        rows.first = Share(rows.first, flow.GetSelectivity());
        rows.last = Share(rows.last, flow.GetSelectivity());
    }
    Push(rows);
}

void EstimateProgress::VisitFlowTable(FlowTable& table) {
    OperatorVisitorImpl::VisitFlowTable(table);
    Estimate rows = Pop();
    rows.done = Sum(rows.done, table.GetCount());
    rows.total = Sum(rows.total, rows.last);
    Push(rows);
}

void EstimateProgress::VisitOrdAggr(OrdAggr& flow) {
    OperatorVisitorImpl::VisitOrdAggr(flow);
    Estimate groups = Pop();
    groups.first = groups.first == unknown ? 0 : std::min<uint64_t>(groups.first, 1);
    Push(groups);
}

void EstimateProgress::VisitOrder(Order& table) {
    OperatorVisitorImpl::VisitOrder(table);
    Estimate rows = Pop();
    rows.total = Sum(rows.total, rows.last);
    rows.first = std::min(rows.first, table.GetLimit());
    rows.last = std::min(rows.last, table.GetLimit());
    Push(rows);
}

void EstimateProgress::VisitBinaryScan(BinaryScan& flow) {
    Push({.first = 0, .last = unknown, .done = flow.GetCursor(), .total = unknown});
}

// How many rows a text has shows only at its end; the work is its bytes.
void EstimateProgress::VisitTextScan(TextScan& flow) {
    Push({.first = flow.GetCursor(), .last = unknown, .done = flow.GetTextCursor(), .total = flow.GetTextSize()});
}

// There are at most as many groups as rows.
void EstimateProgress::VisitAggr(Aggr& table) {
    OperatorVisitorImpl::VisitAggr(table);
    Estimate groups = Pop();
    groups.first = groups.first == unknown ? 0 : std::min<uint64_t>(groups.first, 1);
    Push(groups);
}

void EstimateProgress::VisitTopN(TopN& table) {
    OperatorVisitorImpl::VisitTopN(table);
    Estimate rows = Pop();
    rows.first = std::min(rows.first, table.GetLimit());
    rows.last = std::min(rows.last, table.GetLimit());
    Push(rows);
}

void EstimateProgress::VisitAppend(Append& flow) {
    OperatorVisitorImpl::VisitAppend(flow);
    Estimate rows = Pop();
    for (size_t i = 0; i < flow.GetInners().size(); ++i) {
        const Estimate other = Pop();
        rows.first = Sum(rows.first, other.first);
        rows.last = Sum(rows.last, other.last);
        rows.done = Sum(rows.done, other.done);
        rows.total = Sum(rows.total, other.total);
    }
    Push(rows);
}

void EstimateProgress::VisitCartProd(CartProd& flow) {
    OperatorVisitorImpl::VisitCartProd(flow);
    const Estimate inner = Pop();
    Estimate rows = Pop();
    rows.done = Sum(rows.done, inner.done);
    rows.total = Sum(rows.total, inner.total);
    rows.first = 0;
    rows.last = unknown;
    Push(rows);
}

// About as many rows as each other share; groups of rows that lie together may move all of them into one.
void EstimateProgress::VisitFractionTable(FractionTable& table) {
    OperatorVisitorImpl::VisitFractionTable(table);
    Estimate rows = Pop();
    if (!table.GetClusters().empty()) {
        rows.first = 0;
    } else if (rows.last != unknown) {
        rows.first = rows.first == unknown ? 0 : rows.first / table.GetFractionCount();
        rows.last = rows.last / table.GetFractionCount() + 1;
    }
    Push(rows);
}

// There are no more runs than rows.
void EstimateProgress::VisitDictionaryTable(DictionaryTable& table) {
    OperatorVisitorImpl::VisitDictionaryTable(table);
    Pop();
    Push(Estimate{.first = 0});
}

void EstimateProgress::VisitIndexTable(IndexTable& table) {
    OperatorVisitorImpl::VisitIndexTable(table);
    Estimate rows = Pop();
    rows.first = 0;
    Push(rows);
}

void EstimateProgress::VisitIndexJoin(IndexJoin& flow) {
    OperatorVisitorImpl::VisitIndexJoin(flow);
    Pop();
    Estimate rows = Pop();
    rows.first = 0;
    rows.last = unknown;
    Push(rows);
}

void EstimateProgress::VisitPivot(Pivot& flow) {
    OperatorVisitorImpl::VisitPivot(flow);
    Estimate rows = Pop();
    const Estimate once = rows;
    for (size_t i = 1; i < flow.GetTags().members.size(); ++i) {
        rows.first = Sum(rows.first, once.first);
        rows.last = Sum(rows.last, once.last);
    }
    Push(rows);
}

void EstimateProgress::VisitPositionalJoin(PositionalJoin& table) {
    OperatorVisitorImpl::VisitPositionalJoin(table);
    Estimate rows = Pop();
    if (table.GetFirst() && table.GetSecond()) {
        const Estimate other = Pop();
        rows.done = Sum(rows.done, other.done);
        rows.total = Sum(rows.total, other.total);
    }
    Push(rows);
}

// How often keys repeat is not known.
void EstimateProgress::VisitJoin(Join& flow) {
    OperatorVisitorImpl::VisitJoin(flow);
    const Estimate inner = Pop();
    Estimate rows = Pop();
    rows.done = Sum(rows.done, inner.done);
    rows.total = Sum(rows.total, inner.total);
    const bool keepsOuter = flow.GetJoinType() == Join::LeftJoin || flow.GetJoinType() == Join::FullJoin;
    if (!keepsOuter || rows.first == unknown) rows.first = 0;
    rows.last = unknown;
    Push(rows);
}

}  // namespace qve
