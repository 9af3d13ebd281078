#include "vql/VQLQuery.h"

#include <algorithm>

#include "vql/status.h"

namespace qve {

const RefCntPtr<VQLColumnSpace>& VQLQuery::GetColumnSpace() const {
    if (!m_columnSpace) throw VQLException(status::VQLQuery_GetColumnSpace, L"VQLQuery: columnspace not defined");
    return m_columnSpace;
}

bool VQLQuery::DependsOn(const VQLIdentifier& column, const VQLIdentifier& from) const {
    VQLIdentifierSet visited;
    return DependsOn(column, from, visited);
}

bool VQLQuery::DependsOn(const VQLIdentifier& column, const VQLIdentifier& from, VQLIdentifierSet& visited) const {
    if (!visited.insert(column).second) return false;
    const auto sources = m_dependencies.find(column);
    if (sources == m_dependencies.end()) return false;
    return std::any_of(sources->second.begin(), sources->second.end(),
                       [&](const VQLIdentifier& source) { return source == from || DependsOn(source, from, visited); });
}

bool VQLQuery::IsEquivalent(const VQLIdentifier& a, const VQLIdentifier& b) const {
    if (a == b) return true;
    const auto classOfA = m_equivalences.find(a);
    const auto classOfB = m_equivalences.find(b);
    return classOfA != m_equivalences.end() && classOfB != m_equivalences.end() && classOfA->second == classOfB->second;
}

VQLIdentifierSet VQLQuery::GetEquivalentColumns(const VQLIdentifier& column) const {
    VQLIdentifierSet columns{column};
    const auto classOfColumn = m_equivalences.find(column);
    if (classOfColumn == m_equivalences.end()) return columns;
    for (const auto& [other, classNumber] : m_equivalences)
        if (classNumber == classOfColumn->second) columns.insert(other);
    return columns;
}

bool VQLQuery::IsUnique(const VQLIdentifierSet& columns) const {
    VQLIdentifierSet known = columns;
    if (!m_equivalences.empty())
        for (const VQLIdentifier& column : columns) known.merge(GetEquivalentColumns(column));
    return std::any_of(m_uniqueKeys.begin(), m_uniqueKeys.end(), [&](const VQLIdentifierSet& key) {
        return std::includes(known.begin(), known.end(), key.begin(), key.end());
    });
}

bool VQLQuery::IsSortedBy(const SortSpecs& specs) const {
    if (specs.empty()) return true;
    return std::any_of(m_sortSpecsList.begin(), m_sortSpecsList.end(), [&](const SortSpecs& known) {
        return known.size() >= specs.size() &&
               std::equal(specs.begin(), specs.end(), known.begin(), [&](const SortSpec& wanted, const SortSpec& have) {
                   return wanted.sense == have.sense && IsEquivalent(wanted.column, have.column);
               });
    });
}

bool VQLQuery::AreColumnsSorted(const VQLIdentifierSet& columns) const {
    return std::any_of(m_sortSpecsList.begin(), m_sortSpecsList.end(), [&](const SortSpecs& known) {
        if (known.size() < columns.size()) return false;
        VQLIdentifierSet leading;
        for (size_t i = 0; i < columns.size(); ++i) leading.insert(known[i].column);
        return leading == columns;
    });
}

}  // namespace qve
