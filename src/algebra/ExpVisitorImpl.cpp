#include "algebra/ExpVisitorImpl.h"

#include "algebra/BooleanExp.h"
#include "algebra/CaseExp.h"
#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/DataExp.h"
#include "algebra/HashExp.h"
#include "algebra/status.h"
#include "system/QuillonException.h"

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

// Nodes of these classes cannot be built yet.

void ExpVisitorImpl::VisitCompressExp(CompressExp&) {
    throw QVE_LogicError(status::ExpVisitorImpl_Absent, "ExpVisitorImpl::VisitCompressExp");
}

void ExpVisitorImpl::VisitExpandExp(ExpandExp&) {
    throw QVE_LogicError(status::ExpVisitorImpl_Absent, "ExpVisitorImpl::VisitExpandExp");
}

void ExpVisitorImpl::VisitLookupExp(LookupExp&) {
    throw QVE_LogicError(status::ExpVisitorImpl_Absent, "ExpVisitorImpl::VisitLookupExp");
}

void ExpVisitorImpl::VisitPartitionExp(PartitionExp&) {
    throw QVE_LogicError(status::ExpVisitorImpl_Absent, "ExpVisitorImpl::VisitPartitionExp");
}

}  // namespace qve
