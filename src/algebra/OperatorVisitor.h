#pragma once

namespace qve {

class Aggr;
class AlterColumn;
class Append;
class BinaryScan;
class CartProd;
class ClusteringFlow;
class Compact;
class CreateColumn;
class CreateDatabase;
class CreateFolder;
class CreateSchema;
class CreateTable;
class DictionaryTable;
class DropColumn;
class DropDatabase;
class DropFolder;
class DropSchema;
class DropTable;
class Exchange;
class FlowTable;
class FractionTable;
class IndexTable;
class Insert;
class IndexJoin;
class Join;
class LeafTable;
class Lookup;
class OrdAggr;
class Order;
class PackageDatabase;
class PartitionRestart;
class PartitionSplit;
class Pivot;
class PositionalJoin;
class Print;
class Project;
class Remote;
class RemoteQuery;
class Restrict;
class Scan;
class Select;
class SharedTable;
class ShowCollations;
class ShowDatabase;
class ShowDatabases;
class ShowFolder;
class ShowSchemas;
class CheckDatabase;
class ShowVirtualTable;
class ShowTables;
class TextScan;
class TopN;
class Transform;
class Update;
class SettingsCommand;
class QuerybandCommand;

/// What walks a plan: one slot for each concrete operator. The operators are only declared here, since some live in
/// layers above; algebra/plan has the default walks, which know them all.
class OperatorVisitor {
public:
    virtual ~OperatorVisitor() = default;

    virtual void VisitAggr(Aggr& table) = 0;
    virtual void VisitAlterColumn(AlterColumn& statement) = 0;
    virtual void VisitAppend(Append& flow) = 0;
    virtual void VisitBinaryScan(BinaryScan& flow) = 0;
    virtual void VisitCartProd(CartProd& flow) = 0;
    virtual void VisitClusteringFlow(ClusteringFlow& flow) = 0;
    virtual void VisitCompact(Compact& flow) = 0;
    virtual void VisitCreateColumn(CreateColumn& statement) = 0;
    virtual void VisitCreateDatabase(CreateDatabase& statement) = 0;
    virtual void VisitCreateFolder(CreateFolder& statement) = 0;
    virtual void VisitCreateSchema(CreateSchema& statement) = 0;
    virtual void VisitCreateTable(CreateTable& statement) = 0;
    virtual void VisitDictionaryTable(DictionaryTable& table) = 0;
    virtual void VisitDropColumn(DropColumn& statement) = 0;
    virtual void VisitDropDatabase(DropDatabase& statement) = 0;
    virtual void VisitDropFolder(DropFolder& statement) = 0;
    virtual void VisitDropSchema(DropSchema& statement) = 0;
    virtual void VisitDropTable(DropTable& statement) = 0;
    virtual void VisitExchange(Exchange& flow) = 0;
    virtual void VisitFlowTable(FlowTable& table) = 0;
    virtual void VisitFractionTable(FractionTable& table) = 0;
    virtual void VisitIndexTable(IndexTable& table) = 0;
    virtual void VisitIndexJoin(IndexJoin& flow) = 0;
    virtual void VisitInsert(Insert& statement) = 0;
    virtual void VisitJoin(Join& flow) = 0;
    virtual void VisitLeafTable(LeafTable& table) = 0;
    virtual void VisitLookup(Lookup& flow) = 0;
    virtual void VisitOrdAggr(OrdAggr& flow) = 0;
    virtual void VisitOrder(Order& table) = 0;
    virtual void VisitPackageDatabase(PackageDatabase& statement) = 0;
    virtual void VisitPartitionRestart(PartitionRestart& flow) = 0;
    virtual void VisitPartitionSplit(PartitionSplit& flow) = 0;
    virtual void VisitPivot(Pivot& table) = 0;
    virtual void VisitPositionalJoin(PositionalJoin& flow) = 0;
    virtual void VisitPrint(Print& statement) = 0;
    virtual void VisitProject(Project& flow) = 0;
    virtual void VisitRemote(Remote& flow) = 0;
    virtual void VisitRemoteQuery(RemoteQuery& flow) = 0;
    virtual void VisitRestrict(Restrict& flow) = 0;
    virtual void VisitScan(Scan& flow) = 0;
    virtual void VisitSelect(Select& flow) = 0;
    virtual void VisitSharedTable(SharedTable& table) = 0;
    virtual void VisitShowCollations(ShowCollations& statement) = 0;
    virtual void VisitShowDatabase(ShowDatabase& statement) = 0;
    virtual void VisitShowDatabases(ShowDatabases& statement) = 0;
    virtual void VisitShowFolder(ShowFolder& statement) = 0;
    virtual void VisitShowSchemas(ShowSchemas& statement) = 0;
    virtual void VisitCheckDatabase(CheckDatabase& statement) = 0;
    virtual void VisitShowVirtualTable(ShowVirtualTable& statement) = 0;
    virtual void VisitShowTables(ShowTables& statement) = 0;
    virtual void VisitTextScan(TextScan& flow) = 0;
    virtual void VisitTopN(TopN& flow) = 0;
    virtual void VisitTransform(Transform& flow) = 0;
    virtual void VisitUpdate(Update& flow) = 0;
    virtual void VisitSettingsCommand(SettingsCommand& statement) = 0;
    virtual void VisitQuerybandCommand(QuerybandCommand& statement) = 0;
};

}  // namespace qve
