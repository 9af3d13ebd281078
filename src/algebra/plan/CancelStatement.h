#pragma once

#include "algebra/plan/OperatorVisitorImpl.h"

namespace qve {

class Operator;

/// Asks every operator of a running plan that can run for long to end: each sets a flag or tells its progress callback,
/// nothing waits. The operator that sees it throws CancelledException. May run on another thread than the plan, also
/// while the plan is finishing.
class CancelStatement : public OperatorVisitorImpl {
public:
    static void Do(Operator& root);

    void VisitAggr(Aggr& table) override;
    void VisitBinaryScan(BinaryScan& flow) override;
    void VisitCreateColumn(CreateColumn& statement) override;
    void VisitCartProd(CartProd& flow) override;
    void VisitCreateTable(CreateTable& statement) override;
    void VisitInsert(Insert& statement) override;
    void VisitJoin(Join& flow) override;
    void VisitOrder(Order& table) override;
    void VisitCheckDatabase(CheckDatabase& statement) override;
    void VisitPackageDatabase(PackageDatabase& statement) override;
    void VisitScan(Scan& flow) override;
    void VisitTextScan(TextScan& flow) override;
    void VisitTopN(TopN& table) override;
};

}  // namespace qve
