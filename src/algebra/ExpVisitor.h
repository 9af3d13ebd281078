#pragma once

namespace qve {

class CaseExp;
class CastExp;
class ColumnExp;
class CompressExp;
class ConstantExp;
class DataExp;
class ExpandExp;
class HashExp;
class LookupExp;
class PartitionExp;
class PrimitiveExp;

/// What walks an expression: one slot for each class of nodes. All calls of kernels, and the short-circuiting and/or,
/// are a PrimitiveExp.
class ExpVisitor {
public:
    virtual ~ExpVisitor() = default;

    virtual void VisitCaseExp(CaseExp& exp) = 0;
    virtual void VisitCastExp(CastExp& exp) = 0;
    virtual void VisitColumnExp(ColumnExp& exp) = 0;
    virtual void VisitCompressExp(CompressExp& exp) = 0;
    virtual void VisitConstantExp(ConstantExp& exp) = 0;
    virtual void VisitDataExp(DataExp& exp) = 0;
    virtual void VisitExpandExp(ExpandExp& exp) = 0;
    virtual void VisitHashExp(HashExp& exp) = 0;
    virtual void VisitLookupExp(LookupExp& exp) = 0;
    virtual void VisitPartitionExp(PartitionExp& exp) = 0;
    virtual void VisitPrimitiveExp(PrimitiveExp& exp) = 0;
};

}  // namespace qve
