#include "algebra/plan/NamespaceVisitor.h"

#include "algebra/Aggr.h"
#include "algebra/FlowTable.h"
#include "algebra/LeafTable.h"
#include "algebra/Order.h"
#include "algebra/Project.h"
#include "algebra/Restrict.h"
#include "algebra/Scan.h"
#include "algebra/Select.h"
#include "algebra/TopN.h"
#include "algebra/plan/OperatorVisitorImpl.h"
#include "algebra/plan/absent_operator.h"

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

void NamespaceVisitor::VisitFlowTable(FlowTable& table) {
    VisitNamespace(table);
}

void NamespaceVisitor::VisitLeafTable(LeafTable& table) {
    VisitNamespace(table);
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

void NamespaceVisitor::VisitTopN(TopN& flow) {
    VisitNamespace(flow);
}

// Operators of these classes cannot be built yet.

void NamespaceVisitor::VisitAlterColumn(AlterColumn&) {
    throw_absent_operator("AlterColumn");
}

void NamespaceVisitor::VisitAppend(Append&) {
    throw_absent_operator("Append");
}

void NamespaceVisitor::VisitBinaryScan(BinaryScan&) {
    throw_absent_operator("BinaryScan");
}

void NamespaceVisitor::VisitCartProd(CartProd&) {
    throw_absent_operator("CartProd");
}

void NamespaceVisitor::VisitClusteringFlow(ClusteringFlow&) {
    throw_absent_operator("ClusteringFlow");
}

void NamespaceVisitor::VisitCompact(Compact&) {
    throw_absent_operator("Compact");
}

void NamespaceVisitor::VisitCreateDatabase(CreateDatabase&) {
    throw_absent_operator("CreateDatabase");
}

void NamespaceVisitor::VisitCreateFolder(CreateFolder&) {
    throw_absent_operator("CreateFolder");
}

void NamespaceVisitor::VisitCreateSchema(CreateSchema&) {
    throw_absent_operator("CreateSchema");
}

void NamespaceVisitor::VisitCreateTable(CreateTable&) {
    throw_absent_operator("CreateTable");
}

void NamespaceVisitor::VisitDictionaryTable(DictionaryTable&) {
    throw_absent_operator("DictionaryTable");
}

void NamespaceVisitor::VisitDropColumn(DropColumn&) {
    throw_absent_operator("DropColumn");
}

void NamespaceVisitor::VisitDropDatabase(DropDatabase&) {
    throw_absent_operator("DropDatabase");
}

void NamespaceVisitor::VisitDropFolder(DropFolder&) {
    throw_absent_operator("DropFolder");
}

void NamespaceVisitor::VisitDropSchema(DropSchema&) {
    throw_absent_operator("DropSchema");
}

void NamespaceVisitor::VisitDropTable(DropTable&) {
    throw_absent_operator("DropTable");
}

void NamespaceVisitor::VisitExchange(Exchange&) {
    throw_absent_operator("Exchange");
}

void NamespaceVisitor::VisitFractionTable(FractionTable&) {
    throw_absent_operator("FractionTable");
}

void NamespaceVisitor::VisitIndexTable(IndexTable&) {
    throw_absent_operator("IndexTable");
}

void NamespaceVisitor::VisitIndexJoin(IndexJoin&) {
    throw_absent_operator("IndexJoin");
}

void NamespaceVisitor::VisitJoin(Join&) {
    throw_absent_operator("Join");
}

void NamespaceVisitor::VisitLookup(Lookup&) {
    throw_absent_operator("Lookup");
}

void NamespaceVisitor::VisitOrdAggr(OrdAggr&) {
    throw_absent_operator("OrdAggr");
}

void NamespaceVisitor::VisitPackageDatabase(PackageDatabase&) {
    throw_absent_operator("PackageDatabase");
}

void NamespaceVisitor::VisitPartitionRestart(PartitionRestart&) {
    throw_absent_operator("PartitionRestart");
}

void NamespaceVisitor::VisitPartitionSplit(PartitionSplit&) {
    throw_absent_operator("PartitionSplit");
}

void NamespaceVisitor::VisitPivot(Pivot&) {
    throw_absent_operator("Pivot");
}

void NamespaceVisitor::VisitPositionalJoin(PositionalJoin&) {
    throw_absent_operator("PositionalJoin");
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

void NamespaceVisitor::VisitSharedTable(SharedTable&) {
    throw_absent_operator("SharedTable");
}

void NamespaceVisitor::VisitShowCollations(ShowCollations&) {
    throw_absent_operator("ShowCollations");
}

void NamespaceVisitor::VisitShowDatabase(ShowDatabase&) {
    throw_absent_operator("ShowDatabase");
}

void NamespaceVisitor::VisitShowDatabases(ShowDatabases&) {
    throw_absent_operator("ShowDatabases");
}

void NamespaceVisitor::VisitShowFolder(ShowFolder&) {
    throw_absent_operator("ShowFolder");
}

void NamespaceVisitor::VisitShowSchemas(ShowSchemas&) {
    throw_absent_operator("ShowSchemas");
}

void NamespaceVisitor::VisitShowVirtualTable(ShowVirtualTable&) {
    throw_absent_operator("ShowVirtualTable");
}

void NamespaceVisitor::VisitShowTables(ShowTables&) {
    throw_absent_operator("ShowTables");
}

void NamespaceVisitor::VisitTextScan(TextScan&) {
    throw_absent_operator("TextScan");
}

void NamespaceVisitor::VisitTransform(Transform&) {
    throw_absent_operator("Transform");
}

void NamespaceVisitor::VisitUpdate(Update&) {
    throw_absent_operator("Update");
}

void NamespaceVisitor::VisitSettingsCommand(SettingsCommand&) {
    throw_absent_operator("SettingsCommand");
}

void NamespaceVisitor::VisitQuerybandCommand(QuerybandCommand&) {
    throw_absent_operator("QuerybandCommand");
}

}  // namespace qve
