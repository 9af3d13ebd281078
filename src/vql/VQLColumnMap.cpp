#include "vql/VQLColumnMap.h"

#include <algorithm>

#include "system/VQLException.h"
#include "vql/status.h"

namespace qve {

const VQLColumnMap::Entry* VQLColumnMap::Find(const VQLIdentifier& from) const {
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) { return entry.first == from; });
    return found == m_entries.end() ? nullptr : &*found;
}

const VQLColumnMap::Entry* VQLColumnMap::FindTarget(const VQLIdentifier& to) const {
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) { return entry.second == to; });
    return found == m_entries.end() ? nullptr : &*found;
}

void VQLColumnMap::Insert(const VQLIdentifier& from, const VQLIdentifier& to) {
    const Entry* entry = Find(from);
    if (entry)
        m_entries[entry - m_entries.data()].second = to;
    else
        m_entries.emplace_back(from, to);
}

void VQLColumnMap::Invert() {
    for (Entry& entry : m_entries) std::swap(entry.first, entry.second);
}

const VQLIdentifier& VQLColumnMap::Map(const VQLIdentifier& from) const {
    if (const Entry* entry = Find(from)) return entry->second;
    throw VQLParseException(status::VQLColumnMap_Map, L"no mapping for column " + from.AsString(), {});
}

const VQLIdentifier& VQLColumnMap::Remap(const VQLIdentifier& to) const {
    if (const Entry* entry = FindTarget(to)) return entry->first;
    throw VQLParseException(status::VQLColumnMap_Remap, L"no mapping for column " + to.AsString(), {});
}

const VQLIdentifier& VQLColumnMap::PartialMap(const VQLIdentifier& from) const {
    const Entry* entry = Find(from);
    return entry ? entry->second : from;
}

const VQLIdentifier& VQLColumnMap::PartialRemap(const VQLIdentifier& to) const {
    const Entry* entry = FindTarget(to);
    return entry ? entry->first : to;
}

}  // namespace qve
