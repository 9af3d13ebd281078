#include <gtest/gtest.h>

#include "algebra/Aggr.h"
#include "algebra/AggrExp.h"
#include "algebra/ClusteringFlow.h"
#include "algebra/ColumnExp.h"
#include "algebra/Compact.h"
#include "algebra/FlowTable.h"
#include "algebra/FractionTable.h"
#include "algebra/Order.h"
#include "algebra/Project.h"
#include "algebra/Restrict.h"
#include "algebra/Scan.h"
#include "algebra/Select.h"
#include "algebra/SelectExp.h"
#include "algebra/SharedTable.h"
#include "algebra/TopN.h"
#include "algebra/plan/EstimateProgress.h"
#include "algebra/plan/FormatNamespace.h"
#include "algebra/plan/NamespaceVisitor.h"
#include "algebra/plan/OperatorVisitorImpl.h"
#include "algebra/plan/status.h"
#include "system/QuillonException.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

RefCntPtr<LeafTable> Numbers(unsigned rows) {
    std::vector<std::string> values;
    for (unsigned row = 0; row < rows; ++row) values.push_back(std::to_string(row));
    return TableOf({ColumnOf(L"long", L"a", values)});
}

RefCntPtr<Exp> Predicate() {
    return MakeRef<SelectBinaryExp>(L"ge", MakeRef<ColumnExp>(L"a"), Literal(L"long", "10"));
}

// Every operator that can be built, from the result down to the table.
RefCntPtr<Namespace> Tower(const RefCntPtr<LeafTable>& table, RefCntPtr<Scan>& scan) {
    scan = MakeRef<Scan>(table);
    const auto select = MakeRef<Select>(scan, Predicate());
    const auto project = MakeRef<Project>(select, std::vector<RefCntPtr<Exp>>{});
    const auto restrict = MakeRef<Restrict>(project, ColumnNames{L"a"});
    const auto aggr = MakeRef<Aggr>(restrict, ColumnNames{L"a"},
                                    std::vector<RefCntPtr<Exp>>{MakeRef<AggrUnaryExp>(L"n", L"countstar")});
    const std::vector<Namespace::SortSpec> specs{{L"a", false}};
    const auto top = MakeRef<TopN>(MakeRef<Scan>(aggr), specs, 50);
    const auto order = MakeRef<Order>(MakeRef<FlowTable>(MakeRef<Scan>(top)), specs);
    return MakeRef<Scan>(order);
}

class Counter : public NamespaceVisitor {
public:
    void VisitNamespace(Namespace& node) override {
        ++nodes;
        NamespaceVisitor::VisitNamespace(node);
    }
    unsigned nodes = 0;
};

class Canceller : public OperatorVisitorImpl {
public:
    void VisitScan(Scan& flow) override {
        OperatorVisitorImpl::VisitScan(flow);
        flow.SetCancelled();
        ++scans;
    }
    unsigned scans = 0;
};

TEST(OperatorVisitorTest, WalksReachEveryOperator) {
    RefCntPtr<Scan> lowest;
    const auto root = Tower(Numbers(100), lowest);
    Counter counter;
    root->Accept(counter);
    EXPECT_EQ(counter.nodes, 12u);

    Canceller canceller;
    root->Accept(canceller);
    EXPECT_EQ(canceller.scans, 4u);
    EXPECT_THROW(lowest->Next(10), Operator::CancelledException);
}

// What several flows may read is walked, written and estimated as any other operator.
TEST(OperatorVisitorTest, PassesThroughSharesAndCollectedPages) {
    const auto shares = [](std::vector<std::wstring> clusters) {
        const auto table = Numbers(100);
        table->Build(10);
        const auto compact = MakeRef<Compact>(MakeRef<Scan>(
            MakeRef<FractionTable>(MakeRef<SharedTable>(table), 1, 4, std::move(clusters)), ColumnNames{L"a"}));
        return MakeRef<ClusteringFlow>(compact, MakeRef<ColumnExp>(L"a"), 8, 100);
    };
    const auto flow = shares({});
    EXPECT_EQ(FormatNamespace::Do(*shares({L"a"})),
              L"(clustering-flow [a] 8 100\n  (compact\n    (scan ([a])\n      (fraction 1 4 ([a])\n        (shared\n"
              L"          (table [sample] ([a])))))))");
    Counter counter;
    flow->Accept(counter);
    EXPECT_EQ(counter.nodes, 6u);

    const auto estimate = EstimateProgress::Do(*flow);
    EXPECT_EQ(estimate.first, 25u);
    EXPECT_EQ(estimate.last, 26u);
    const auto clustered = EstimateProgress::Do(*shares({L"a"}));
    EXPECT_EQ(clustered.first, 0u);
    EXPECT_EQ(clustered.last, 100u);

    Canceller canceller;
    flow->Accept(canceller);
    EXPECT_THROW(flow->Next(10), Operator::CancelledException);
}

// A plan with an operator that this program has not is refused by name.
class Foreign : public DataFlow {
public:
    Foreign() : DataFlow(nullptr, {}) {}
    void Accept(OperatorVisitor& visitor) override { visitor.VisitRemote(reinterpret_cast<Remote&>(*this)); }
};

TEST(OperatorVisitorTest, AbsentOperatorsAreRefused) {
    OperatorVisitorImpl walk;
    EXPECT_EQ(StatusOf([&] { MakeRef<Foreign>()->Accept(walk); }), status::absent_operator);
}

TEST(EstimateProgressTest, BoundsAndWork) {
    const auto estimate = [](Operator& root) {
        const auto e = EstimateProgress::Do(root);
        return std::vector<uint64_t>{e.first, e.last, e.done, e.total};
    };
    constexpr uint64_t unknown = EstimateProgress::unknown;
    using Figures = std::vector<uint64_t>;

    const auto table = Numbers(100);
    const auto scan = MakeRef<Scan>(table);
    EXPECT_EQ(estimate(*scan), (Figures{unknown, unknown, 0, unknown}));
    scan->Next(30);
    EXPECT_EQ(estimate(*scan), (Figures{100, 100, 30, 100}));

    Select guessed(scan, Predicate(), 0.25);
    EXPECT_EQ(estimate(guessed), (Figures{25, 25, 30, 100}));
    const auto unguessed = MakeRef<Select>(scan, Predicate());
    EXPECT_EQ(estimate(*unguessed), (Figures{0, 100, 30, 100}));

    const auto drained = MakeRef<FlowTable>(unguessed);
    EXPECT_EQ(estimate(*drained), (Figures{0, 100, 30, 200}));
    drained->Build(1024);
    EXPECT_EQ(estimate(*drained), (Figures{0, 100, 170, 200}));

    Aggr groups(unguessed, ColumnNames{L"a"}, {});
    EXPECT_EQ(estimate(groups), (Figures{0, 100, 100, 100}));
    TopN top(unguessed, {}, 7);
    EXPECT_EQ(estimate(top), (Figures{0, 7, 100, 100}));
    Order order(drained, {}, {}, 9);
    EXPECT_EQ(estimate(order), (Figures{0, 9, 170, 300}));

    class Statement : public Operator {};
    Statement statement;
    EXPECT_EQ(estimate(statement), (Figures{unknown, unknown, 0, 0}));
}

}  // namespace
}  // namespace qve
