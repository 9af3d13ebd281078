#include "algebra/plan/OperatorVisitorImpl.h"

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
#include "algebra/Join.h"
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
#include "algebra/plan/absent_operator.h"
#include "commands/CreateColumn.h"
#include "commands/CreateTable.h"

namespace qve {

void OperatorVisitorImpl::VisitAggr(Aggr& table) {
    table.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitAppend(Append& flow) {
    flow.GetSource()->Accept(m_below);
    for (const RefCntPtr<DataFlow>& inner : flow.GetInners()) inner->Accept(m_below);
}

void OperatorVisitorImpl::VisitCartProd(CartProd& flow) {
    flow.GetSource()->Accept(m_below);
    flow.GetInner()->Accept(m_below);
}

void OperatorVisitorImpl::VisitIndexTable(IndexTable& table) {
    table.GetTable()->Accept(m_below);
}

void OperatorVisitorImpl::VisitIndexJoin(IndexJoin& flow) {
    flow.GetSource()->Accept(m_below);
    flow.GetTable()->Accept(m_below);
}

void OperatorVisitorImpl::VisitPivot(Pivot& table) {
    table.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitPositionalJoin(PositionalJoin& flow) {
    if (flow.GetFirst()) flow.GetFirst()->Accept(m_below);
    if (flow.GetSecond()) flow.GetSecond()->Accept(m_below);
}

void OperatorVisitorImpl::VisitFlowTable(FlowTable& table) {
    table.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitJoin(Join& flow) {
    flow.GetSource()->Accept(m_below);
    flow.GetInner()->Accept(m_below);
}

void OperatorVisitorImpl::VisitLeafTable(LeafTable&) {}

void OperatorVisitorImpl::VisitOrdAggr(OrdAggr& flow) {
    flow.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitOrder(Order& table) {
    table.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitProject(Project& flow) {
    flow.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitRestrict(Restrict& flow) {
    flow.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitScan(Scan& flow) {
    flow.GetTable()->Accept(m_below);
}

void OperatorVisitorImpl::VisitSelect(Select& flow) {
    flow.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitTopN(TopN& flow) {
    flow.GetSource()->Accept(m_below);
}

// Statements and text scans have no sources, but for a table that is made of a plan.

void OperatorVisitorImpl::VisitCreateTable(CreateTable& statement) {
    if (const RefCntPtr<Namespace> plan = statement.GetPlan()) plan->Accept(m_below);
}

void OperatorVisitorImpl::VisitCreateColumn(CreateColumn& statement) {
    if (const RefCntPtr<Namespace>& plan = statement.GetPlan()) plan->Accept(m_below);
}

void OperatorVisitorImpl::VisitCreateDatabase(CreateDatabase&) {}

void OperatorVisitorImpl::VisitCreateFolder(CreateFolder&) {}

void OperatorVisitorImpl::VisitCreateSchema(CreateSchema&) {}

void OperatorVisitorImpl::VisitDropColumn(DropColumn&) {}

void OperatorVisitorImpl::VisitDropDatabase(DropDatabase&) {}

void OperatorVisitorImpl::VisitDropFolder(DropFolder&) {}

void OperatorVisitorImpl::VisitDropSchema(DropSchema&) {}

void OperatorVisitorImpl::VisitDropTable(DropTable&) {}

void OperatorVisitorImpl::VisitInsert(Insert&) {}

void OperatorVisitorImpl::VisitPackageDatabase(PackageDatabase&) {}

void OperatorVisitorImpl::VisitShowCollations(ShowCollations&) {}

void OperatorVisitorImpl::VisitShowDatabase(ShowDatabase&) {}

void OperatorVisitorImpl::VisitShowDatabases(ShowDatabases&) {}

void OperatorVisitorImpl::VisitShowFolder(ShowFolder&) {}

void OperatorVisitorImpl::VisitShowSchemas(ShowSchemas&) {}

void OperatorVisitorImpl::VisitCheckDatabase(CheckDatabase&) {}

void OperatorVisitorImpl::VisitShowVirtualTable(ShowVirtualTable&) {}

void OperatorVisitorImpl::VisitShowTables(ShowTables&) {}

void OperatorVisitorImpl::VisitTextScan(TextScan&) {}

void OperatorVisitorImpl::VisitBinaryScan(BinaryScan&) {}

void OperatorVisitorImpl::VisitClusteringFlow(ClusteringFlow& flow) {
    flow.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitCompact(Compact& flow) {
    flow.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitDictionaryTable(DictionaryTable& table) {
    table.GetTable()->Accept(m_below);
}

void OperatorVisitorImpl::VisitPartitionSplit(PartitionSplit& flow) {
    flow.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitPartitionRestart(PartitionRestart& flow) {
    flow.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitUpdate(Update& flow) {
    flow.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitFractionTable(FractionTable& table) {
    table.GetSource()->Accept(m_below);
}

void OperatorVisitorImpl::VisitSharedTable(SharedTable& table) {
    table.GetSource()->Accept(m_below);
}

// Operators of these classes cannot be built yet.

void OperatorVisitorImpl::VisitAlterColumn(AlterColumn&) {
    throw_absent_operator("AlterColumn");
}

void OperatorVisitorImpl::VisitExchange(Exchange&) {
    throw_absent_operator("Exchange");
}

void OperatorVisitorImpl::VisitLookup(Lookup& flow) {
    VisitJoin(flow);
}

void OperatorVisitorImpl::VisitPrint(Print&) {
    throw_absent_operator("Print");
}

void OperatorVisitorImpl::VisitRemote(Remote&) {
    throw_absent_operator("Remote");
}

void OperatorVisitorImpl::VisitRemoteQuery(RemoteQuery&) {
    throw_absent_operator("RemoteQuery");
}

void OperatorVisitorImpl::VisitTransform(Transform&) {
    throw_absent_operator("Transform");
}

void OperatorVisitorImpl::VisitSettingsCommand(SettingsCommand&) {
    throw_absent_operator("SettingsCommand");
}

void OperatorVisitorImpl::VisitQuerybandCommand(QuerybandCommand&) {
    throw_absent_operator("QuerybandCommand");
}

}  // namespace qve
