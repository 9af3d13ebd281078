#pragma once

#include "algebra/ExpVisitor.h"

namespace qve {

class Exp;

/// Visits the arguments of every node. A derived visitor that overrides a slot calls VisitArguments to go on.
class ExpVisitorImpl : public ExpVisitor {
public:
    void VisitCaseExp(CaseExp& exp) override;
    void VisitCastExp(CastExp& exp) override;
    void VisitColumnExp(ColumnExp& exp) override;
    void VisitCompressExp(CompressExp& exp) override;
    void VisitConstantExp(ConstantExp& exp) override;
    void VisitDataExp(DataExp& exp) override;
    void VisitExpandExp(ExpandExp& exp) override;
    void VisitHashExp(HashExp& exp) override;
    void VisitLookupExp(LookupExp& exp) override;
    void VisitPartitionExp(PartitionExp& exp) override;
    void VisitPrimitiveExp(PrimitiveExp& exp) override;

protected:
    void VisitArguments(Exp& exp);
};

}  // namespace qve
