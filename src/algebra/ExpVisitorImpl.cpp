#include "algebra/ExpVisitorImpl.h"

#include "algebra/BooleanExp.h"
#include "algebra/CaseExp.h"
#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/CompressExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/DataExp.h"
#include "algebra/ExpandExp.h"
#include "algebra/HashExp.h"
#include "algebra/LookupExp.h"
#include "algebra/PartitionExp.h"

namespace qve {

void ExpVisitorImpl::VisitArguments(Exp& exp) {
    for (const RefCntPtr<Exp>& argument : exp.GetArguments()) argument->Accept(*this);
}

void ExpVisitorImpl::VisitCaseExp(CaseExp& exp) {
    VisitArguments(exp);
}

void ExpVisitorImpl::VisitCastExp(CastExp& exp) {
    VisitArguments(exp);
}

void ExpVisitorImpl::VisitColumnExp(ColumnExp& exp) {
    VisitArguments(exp);
}

void ExpVisitorImpl::VisitConstantExp(ConstantExp& exp) {
    VisitArguments(exp);
}

void ExpVisitorImpl::VisitDataExp(DataExp& exp) {
    VisitArguments(exp);
}

void ExpVisitorImpl::VisitHashExp(HashExp& exp) {
    if (exp.GetPrevious()) exp.GetPrevious()->Accept(*this);
    VisitArguments(exp);
}

void ExpVisitorImpl::VisitPrimitiveExp(PrimitiveExp& exp) {
    VisitArguments(exp);
}

void ExpVisitorImpl::VisitCompressExp(CompressExp& exp) {
    VisitArguments(exp);
}

void ExpVisitorImpl::VisitExpandExp(ExpandExp& exp) {
    VisitArguments(exp);
}

void ExpVisitorImpl::VisitLookupExp(LookupExp& exp) {
    VisitArguments(exp);
}

void ExpVisitorImpl::VisitPartitionExp(PartitionExp& exp) {
    VisitArguments(exp);
}

}  // namespace qve
