#include "server/SessionTableFactory.h"

#include "algebra/LeafTable.h"
#include "commands/Listing.h"
#include "commands/ShowVirtualTable.h"
#include "server/RuntimeQueryStatsCollector.h"
#include "server/SessionPool.h"
#include "server/protocol/QVE_Command.h"
#include "system/unicode.h"

namespace qve::Server {
namespace {

class ListedTable : public MaterialisedTableSpace::Source {
public:
    explicit ListedTable(RefCntPtr<Table> table) : m_table(std::move(table)) {}

    std::vector<std::wstring> GetColumnNames() const override {
        const ColumnNames names = m_table->GetColumnNames();
        return {names.begin(), names.end()};
    }
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override { return m_table->GetColumn(name); }

private:
    const RefCntPtr<Table> m_table;
};

RefCntPtr<Table> MakeSessionsTable(const std::vector<SessionState>& sessions) {
    std::vector<long long> guids;
    std::vector<datetime> timestamps;
    std::vector<std::wstring> commands, databases, queries;
    for (const SessionState& session : sessions) {
        guids.push_back(static_cast<long long>(session.guid));
        timestamps.push_back(session.timestamp);
        commands.push_back(widen(QVE_CommandName(session.command)));
        databases.push_back(session.database);
        queries.push_back(session.query);
    }
    Listing listing(ShowVirtualTable::tableSessions, Listing::Names::plain);
    listing.AddNumbers(L"Guid", guids);
    listing.AddMoments(L"Timestamp", timestamps);
    listing.AddTexts(L"Command", commands);
    listing.AddTexts(L"Database", databases);
    listing.AddTexts(L"Query", queries);
    return listing.Finish();
}

RefCntPtr<Table> MakeRuntimeQueryStatsTable(const RuntimeQueryStatsCollector::Summary& summary) {
    Listing listing(ShowVirtualTable::tableRuntimeQueryStats, Listing::Names::plain);
    listing.AddNumbers(L"Execution count", {static_cast<long long>(summary.count)});
    listing.AddFigures(L"Average compile time", {summary.averageCompile});
    listing.AddFigures(L"St dev of compile time", {summary.deviationCompile});
    listing.AddFigures(L"Average execution time", {summary.averageExecute});
    listing.AddFigures(L"St dev of execution time", {summary.deviationExecute});
    return listing.Finish();
}

}  // namespace

std::vector<std::wstring> Session::TableFactory::GetTableNames() const {
    return {ShowVirtualTable::tableSessions, ShowVirtualTable::tableRuntimeQueryStats};
}

RefCntPtr<MaterialisedTableSpace::Source> Session::TableFactory::GetTable(const std::wstring& name) {
    RefCntPtr<MaterialisedTableSpace::Source>& made = m_made[name];
    if (!made) {
        made = MakeRef<ListedTable>(name == ShowVirtualTable::tableSessions
                                        ? MakeSessionsTable(m_pool.GetSessionStateTable())
                                        : MakeRuntimeQueryStatsTable(m_pool.GetQueryStats().GetSummary()));
    }
    return made;
}

}  // namespace qve::Server
