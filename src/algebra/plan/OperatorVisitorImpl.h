#pragma once

#include "algebra/OperatorVisitor.h"

namespace qve {

/// Walks a plan depth first: every slot visits the sources of its operator. A derived visitor that overrides a slot
/// calls the base form to go on below.
///
/// A walk only reads what never changes in an operator once it stands, so any thread may walk a plan that runs.
class OperatorVisitorImpl : public OperatorVisitor {
public:
    OperatorVisitorImpl() : m_below(*this) {}
    /// Shows the sources to `below` in place of this visitor.
    explicit OperatorVisitorImpl(OperatorVisitor& below) : m_below(below) {}

    void VisitAggr(Aggr& table) override;
    void VisitAlterColumn(AlterColumn& statement) override;
    void VisitAppend(Append& flow) override;
    void VisitBinaryScan(BinaryScan& flow) override;
    void VisitCartProd(CartProd& flow) override;
    void VisitClusteringFlow(ClusteringFlow& flow) override;
    void VisitCompact(Compact& flow) override;
    void VisitCreateColumn(CreateColumn& statement) override;
    void VisitCreateDatabase(CreateDatabase& statement) override;
    void VisitCreateFolder(CreateFolder& statement) override;
    void VisitCreateSchema(CreateSchema& statement) override;
    void VisitCreateTable(CreateTable& statement) override;
    void VisitDictionaryTable(DictionaryTable& table) override;
    void VisitDropColumn(DropColumn& statement) override;
    void VisitDropDatabase(DropDatabase& statement) override;
    void VisitDropFolder(DropFolder& statement) override;
    void VisitDropSchema(DropSchema& statement) override;
    void VisitDropTable(DropTable& statement) override;
    void VisitExchange(Exchange& flow) override;
    void VisitFlowTable(FlowTable& table) override;
    void VisitFractionTable(FractionTable& table) override;
    void VisitIndexTable(IndexTable& table) override;
    void VisitIndexJoin(IndexJoin& flow) override;
    void VisitInsert(Insert& statement) override;
    void VisitJoin(Join& flow) override;
    void VisitLeafTable(LeafTable& table) override;
    void VisitLookup(Lookup& flow) override;
    void VisitOrdAggr(OrdAggr& flow) override;
    void VisitOrder(Order& table) override;
    void VisitPackageDatabase(PackageDatabase& statement) override;
    void VisitPartitionRestart(PartitionRestart& flow) override;
    void VisitPartitionSplit(PartitionSplit& flow) override;
    void VisitPivot(Pivot& table) override;
    void VisitPositionalJoin(PositionalJoin& flow) override;
    void VisitPrint(Print& statement) override;
    void VisitProject(Project& flow) override;
    void VisitRemote(Remote& flow) override;
    void VisitRemoteQuery(RemoteQuery& flow) override;
    void VisitRestrict(Restrict& flow) override;
    void VisitScan(Scan& flow) override;
    void VisitSelect(Select& flow) override;
    void VisitSharedTable(SharedTable& table) override;
    void VisitShowCollations(ShowCollations& statement) override;
    void VisitShowDatabase(ShowDatabase& statement) override;
    void VisitShowDatabases(ShowDatabases& statement) override;
    void VisitShowFolder(ShowFolder& statement) override;
    void VisitShowSchemas(ShowSchemas& statement) override;
    void VisitCheckDatabase(CheckDatabase& statement) override;
    void VisitShowVirtualTable(ShowVirtualTable& statement) override;
    void VisitShowTables(ShowTables& statement) override;
    void VisitTextScan(TextScan& flow) override;
    void VisitTopN(TopN& flow) override;
    void VisitTransform(Transform& flow) override;
    void VisitUpdate(Update& flow) override;
    void VisitSettingsCommand(SettingsCommand& statement) override;
    void VisitQuerybandCommand(QuerybandCommand& statement) override;

private:
    OperatorVisitor& m_below;
};

}  // namespace qve
