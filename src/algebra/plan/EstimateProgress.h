#pragma once

#include <cstdint>
#include <vector>

#include "algebra/plan/OperatorVisitorImpl.h"

namespace qve {

class Operator;
class ProgressCallback;

/// Estimates, while a plan runs or before, how many rows it will give and how far it is. Reads cursors and counts only,
/// so another thread than the plan's may ask.
class EstimateProgress : public OperatorVisitorImpl {
public:
    static constexpr uint64_t unknown = ~uint64_t{0};

    struct Estimate {
        uint64_t first = unknown;  ///< the least number of rows
        uint64_t last = unknown;   ///< the greatest number of rows
        uint64_t done = 0;         ///< rows of work that are done
        uint64_t total = 0;        ///< rows of work in all
    };

    /// All unknown for an operator without columns.
    static Estimate Do(Operator& root);

    void VisitAggr(Aggr& table) override;
    void VisitAppend(Append& flow) override;
    void VisitBinaryScan(BinaryScan& flow) override;
    void VisitCartProd(CartProd& flow) override;
    void VisitFlowTable(FlowTable& table) override;
    void VisitFractionTable(FractionTable& table) override;
    void VisitIndexJoin(IndexJoin& flow) override;
    void VisitDictionaryTable(DictionaryTable& table) override;
    void VisitIndexTable(IndexTable& table) override;
    void VisitJoin(Join& flow) override;
    void VisitLeafTable(LeafTable& table) override;
    void VisitOrdAggr(OrdAggr& flow) override;
    void VisitOrder(Order& table) override;
    void VisitCheckDatabase(CheckDatabase& statement) override;
    void VisitPackageDatabase(PackageDatabase& statement) override;
    void VisitPivot(Pivot& flow) override;
    void VisitPositionalJoin(PositionalJoin& table) override;
    void VisitScan(Scan& flow) override;
    void VisitSelect(Select& flow) override;
    void VisitTextScan(TextScan& flow) override;
    void VisitTopN(TopN& flow) override;

private:
    Estimate Pop();
    void PushProgress(const ProgressCallback& progress);
    void Push(const Estimate& estimate) { m_stack.push_back(estimate); }

    std::vector<Estimate> m_stack;
};

}  // namespace qve
