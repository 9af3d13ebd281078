#include "vql/VQLColumnSpace.h"

#include <algorithm>

#include "system/VQLException.h"
#include "vql/status.h"

namespace qve {

namespace {

bool NameLess(const RefCntPtr<VQLColumn>& a, const RefCntPtr<VQLColumn>& b) {
    return a->GetName() < b->GetName();
}

}  // namespace

VQLColumnSpace::VQLColumnSpace(Columns columns) {
    std::stable_sort(columns.begin(), columns.end(), NameLess);
    m_columns.reserve(columns.size());
    for (RefCntPtr<VQLColumn>& column : columns) {
        if (!m_columns.empty() && m_columns.back()->GetName() == column->GetName())
            m_columns.back() = std::move(column);
        else
            m_columns.push_back(std::move(column));
    }
}

VQLColumnSpace::Columns::const_iterator VQLColumnSpace::Find(const VQLIdentifier& name) const {
    return std::lower_bound(
        m_columns.begin(), m_columns.end(), name,
        [](const RefCntPtr<VQLColumn>& column, const VQLIdentifier& wanted) { return column->GetName() < wanted; });
}

VQLColumn* VQLColumnSpace::FindColumn(const VQLIdentifier& name) const {
    const auto found = Find(name);
    return found != m_columns.end() && (*found)->GetName() == name ? found->get() : nullptr;
}

void VQLColumnSpace::AddColumn(RefCntPtr<VQLColumn> column) {
    const auto place = m_columns.begin() + (Find(column->GetName()) - m_columns.cbegin());
    if (place != m_columns.end() && (*place)->GetName() == column->GetName())
        *place = std::move(column);
    else
        m_columns.insert(place, std::move(column));
}

bool VQLColumnSpace::HasColumn(const VQLIdentifier& name) const {
    return FindColumn(name) != nullptr;
}

const RefCntPtr<VQLColumn>& VQLColumnSpace::GetColumn(const VQLIdentifier& name) const {
    const auto found = Find(name);
    if (found == m_columns.end() || !((*found)->GetName() == name))
        throw VQLException(status::VQLColumnSpace_GetColumn, L"no such column " + name.AsString());
    return *found;
}

}  // namespace qve
