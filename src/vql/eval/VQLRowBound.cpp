#include "vql/eval/VQLRowBound.h"

#include <algorithm>

#include "storage/Column.h"
#include "storage/Database.h"
#include "storage/DatabaseFamily.h"
#include "vql/VQLDerivedFacts.h"
#include "vql/VQLQueries.h"

namespace qve {

uint64_t VQLRowBound::operator()(const RefCntPtr<VQLQuery>& query) {
    m_rows = unknown;
    query->Accept(*this);
    return m_rows;
}

void VQLRowBound::VisitTable(VQLTableQuery& query) {
    const auto& name = query.GetTableName().GetComponents();
    if (name.size() != 2 || !m_databases.HasDatabase(query.GetDatabasePath())) return;
    const RefCntPtr<Database> database = m_databases.GetDatabase(query.GetDatabasePath());
    const std::wstring& schema = name[0].AsString();
    const std::wstring& table = name[1].AsString();
    const std::vector<std::wstring> columns = database->GetColumnNames(table, schema);
    m_rows = columns.empty() ? 0 : database->LoadColumn(columns.front(), table, schema)->GetCount();
}

void VQLRowBound::VisitSelect(VQLSelectQuery& query) {
    m_rows = (*this)(query.GetInput());
}
void VQLRowBound::VisitProject(VQLProjectQuery& query) {
    m_rows = (*this)(query.GetInput());
}
void VQLRowBound::VisitRestrict(VQLRestrictQuery& query) {
    m_rows = (*this)(query.GetInput());
}
void VQLRowBound::VisitAggregate(VQLAggregateQuery& query) {
    m_rows = (*this)(query.GetInput());
    if (query.GetGroupBys().empty()) m_rows = std::min<uint64_t>(m_rows, 1);
}
void VQLRowBound::VisitOrder(VQLOrderQuery& query) {
    m_rows = (*this)(query.GetInput());
}
void VQLRowBound::VisitTop(VQLTopQuery& query) {
    const uint64_t rows = (*this)(query.GetInput());
    m_rows = std::min<uint64_t>(rows, static_cast<uint64_t>(std::max(query.GetTopCount(), 0)));
}
void VQLRowBound::VisitExchange(VQLExchangeQuery& query) {
    m_rows = (*this)(query.GetInput());
}

// Each row of the left meets one of the right at most when the conditions cover a unique key of the right.
void VQLRowBound::VisitJoin(VQLJoinQuery& query) {
    const uint64_t left = (*this)(query.GetLeft());
    const uint64_t right = (*this)(query.GetRight());
    m_rows = unknown;
    VQLIdentifierSet key;
    for (const auto& [leftSide, rightSide] : query.GetConditions())
        if (const VQLIdentifier* column = VQLPlainColumn(rightSide)) key.insert(*column);
    if (left == unknown || !(query.IsLookup() || query.GetRight()->IsUnique(key))) return;
    const bool keepsRight = query.GetJoinType() == VQLJoinType::right || query.GetJoinType() == VQLJoinType::full;
    if (!keepsRight) {
        m_rows = left;
    } else if (right != unknown) {
        m_rows = left + right;
    }
}

void VQLRowBound::VisitAppend(VQLAppendQuery& query) {
    uint64_t rows = (*this)(query.GetLeft());
    for (const RefCntPtr<VQLQuery>& right : query.GetRightList()) {
        const uint64_t more = (*this)(right);
        rows = rows == unknown || more == unknown ? unknown : rows + more;
    }
    m_rows = rows;
}

}  // namespace qve
