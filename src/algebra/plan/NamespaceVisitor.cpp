#include "algebra/plan/NamespaceVisitor.h"

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
#include "algebra/plan/OperatorVisitorImpl.h"
#include "algebra/plan/absent_operator.h"
#include "commands/CheckDatabase.h"
#include "commands/CreateColumn.h"
#include "commands/CreateDatabase.h"
#include "commands/CreateFolder.h"
#include "commands/CreateSchema.h"
#include "commands/CreateTable.h"
#include "commands/DropColumn.h"
#include "commands/DropDatabase.h"
#include "commands/DropFolder.h"
#include "commands/DropSchema.h"
#include "commands/DropTable.h"
#include "commands/Insert.h"
#include "commands/PackageDatabase.h"
#include "commands/ShowCollations.h"
#include "commands/ShowDatabase.h"
#include "commands/ShowDatabases.h"
#include "commands/ShowFolder.h"
#include "commands/ShowSchemas.h"
#include "commands/ShowTables.h"
#include "commands/ShowVirtualTable.h"
#include "ingest/BinaryScan.h"
#include "ingest/TextScan.h"

namespace qve {

void NamespaceVisitor::VisitNamespace(Namespace& node) {
    VisitSources(node);
}

void NamespaceVisitor::VisitSources(Namespace& node) {
    OperatorVisitorImpl sources(*this);
    node.Accept(sources);
}

void NamespaceVisitor::VisitAggr(Aggr& table) {
    VisitNamespace(table);
}

void NamespaceVisitor::VisitAppend(Append& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitBinaryScan(BinaryScan& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitCreateColumn(CreateColumn& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitCartProd(CartProd& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitIndexTable(IndexTable& table) {
    VisitNamespace(table);
}

void NamespaceVisitor::VisitIndexJoin(IndexJoin& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitPivot(Pivot& table) {
    VisitNamespace(table);
}

void NamespaceVisitor::VisitPositionalJoin(PositionalJoin& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitCreateDatabase(CreateDatabase& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitCreateFolder(CreateFolder& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitCreateSchema(CreateSchema& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitCreateTable(CreateTable& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitDropColumn(DropColumn& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitDropDatabase(DropDatabase& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitDropFolder(DropFolder& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitDropSchema(DropSchema& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitDropTable(DropTable& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitFlowTable(FlowTable& table) {
    VisitNamespace(table);
}

void NamespaceVisitor::VisitInsert(Insert& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitJoin(Join& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitLeafTable(LeafTable& table) {
    VisitNamespace(table);
}

void NamespaceVisitor::VisitOrdAggr(OrdAggr& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitOrder(Order& table) {
    VisitNamespace(table);
}

void NamespaceVisitor::VisitProject(Project& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitRestrict(Restrict& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitScan(Scan& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitSelect(Select& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitShowCollations(ShowCollations& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitShowDatabase(ShowDatabase& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitShowDatabases(ShowDatabases& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitShowFolder(ShowFolder& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitCheckDatabase(CheckDatabase& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitShowSchemas(ShowSchemas& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitShowVirtualTable(ShowVirtualTable& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitShowTables(ShowTables& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitTextScan(TextScan& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitTopN(TopN& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitClusteringFlow(ClusteringFlow& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitCompact(Compact& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitDictionaryTable(DictionaryTable& table) {
    VisitNamespace(table);
}

void NamespaceVisitor::VisitPartitionSplit(PartitionSplit& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitPartitionRestart(PartitionRestart& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitUpdate(Update& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitFractionTable(FractionTable& table) {
    VisitNamespace(table);
}

void NamespaceVisitor::VisitSharedTable(SharedTable& table) {
    VisitNamespace(table);
}

// Operators of these classes cannot be built yet.

void NamespaceVisitor::VisitAlterColumn(AlterColumn&) {
    throw_absent_operator("AlterColumn");
}

void NamespaceVisitor::VisitExchange(Exchange&) {
    throw_absent_operator("Exchange");
}

void NamespaceVisitor::VisitLookup(Lookup& flow) {
    VisitNamespace(flow);
}

void NamespaceVisitor::VisitPackageDatabase(PackageDatabase& statement) {
    VisitNamespace(statement);
}

void NamespaceVisitor::VisitPrint(Print&) {
    throw_absent_operator("Print");
}

void NamespaceVisitor::VisitRemote(Remote&) {
    throw_absent_operator("Remote");
}

void NamespaceVisitor::VisitRemoteQuery(RemoteQuery&) {
    throw_absent_operator("RemoteQuery");
}

void NamespaceVisitor::VisitTransform(Transform&) {
    throw_absent_operator("Transform");
}

void NamespaceVisitor::VisitSettingsCommand(SettingsCommand&) {
    throw_absent_operator("SettingsCommand");
}

void NamespaceVisitor::VisitQuerybandCommand(QuerybandCommand&) {
    throw_absent_operator("QuerybandCommand");
}

}  // namespace qve
