#include "algebra/plan/CancelStatement.h"

#include "algebra/Aggr.h"
#include "algebra/CartProd.h"
#include "algebra/Join.h"
#include "algebra/Namespace.h"
#include "algebra/Order.h"
#include "algebra/Scan.h"
#include "algebra/TopN.h"
#include "commands/CheckDatabase.h"
#include "commands/CreateColumn.h"
#include "commands/CreateTable.h"
#include "commands/Insert.h"
#include "commands/PackageDatabase.h"
#include "ingest/BinaryScan.h"
#include "ingest/TextScan.h"
#include "system/ProgressCallback.h"

namespace qve {

void CancelStatement::Do(Operator& root) {
    CancelStatement cancel;
    if (auto* columns = dynamic_cast<Namespace*>(&root)) columns->Accept(cancel);
}

void CancelStatement::VisitAggr(Aggr& table) {
    OperatorVisitorImpl::VisitAggr(table);
    table.GetProgressCallback()->SetCancelled();
}

void CancelStatement::VisitBinaryScan(BinaryScan& flow) {
    flow.SetCancelled();
}

void CancelStatement::VisitCreateColumn(CreateColumn& statement) {
    OperatorVisitorImpl::VisitCreateColumn(statement);
    statement.GetProgressCallback()->SetCancelled();
}

void CancelStatement::VisitCartProd(CartProd& flow) {
    OperatorVisitorImpl::VisitCartProd(flow);
    flow.GetProgressCallback()->SetCancelled();
}

void CancelStatement::VisitCreateTable(CreateTable& statement) {
    OperatorVisitorImpl::VisitCreateTable(statement);
    if (const RefCntPtr<ProgressCallback> progress = statement.GetProgressCallback()) progress->SetCancelled();
}

void CancelStatement::VisitInsert(Insert& statement) {
    statement.GetProgressCallback()->SetCancelled();
}

void CancelStatement::VisitJoin(Join& flow) {
    OperatorVisitorImpl::VisitJoin(flow);
    if (const RefCntPtr<ProgressCallback>& progress = flow.GetProgressCallback()) progress->SetCancelled();
}

void CancelStatement::VisitOrder(Order& table) {
    OperatorVisitorImpl::VisitOrder(table);
    if (const RefCntPtr<ProgressCallback>& progress = table.GetProgressCallback()) progress->SetCancelled();
}

void CancelStatement::VisitCheckDatabase(CheckDatabase& statement) {
    statement.GetProgressCallback()->SetCancelled();
}

void CancelStatement::VisitPackageDatabase(PackageDatabase& statement) {
    statement.GetProgressCallback()->SetCancelled();
}

void CancelStatement::VisitScan(Scan& flow) {
    OperatorVisitorImpl::VisitScan(flow);
    flow.SetCancelled();
}

void CancelStatement::VisitTopN(TopN& table) {
    OperatorVisitorImpl::VisitTopN(table);
    if (const RefCntPtr<ProgressCallback>& progress = table.GetProgressCallback()) progress->SetCancelled();
}

void CancelStatement::VisitTextScan(TextScan& flow) {
    flow.SetCancelled();
}

}  // namespace qve
