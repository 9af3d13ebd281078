#include "storage/MetadataTable.h"

#include <algorithm>

#include "storage/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

std::vector<std::wstring> MetadataTable::SelectNames(uint64_t parent) const {
    std::vector<std::wstring> names;
    const auto children = m_byParent.find(parent);
    if (children == m_byParent.end()) return names;
    names.reserve(children->second.size());
    for (const size_t row : children->second) names.push_back(m_entries[row].name);
    return names;
}

bool MetadataTable::HasName(uint64_t parent, const std::wstring& name) const {
    return m_byName.find(NameKey{parent, name}) != m_byName.end();
}

uint64_t MetadataTable::SelectMetadataName(uint64_t parent, const std::wstring& name) const {
    const auto [begin, end] = m_byName.equal_range(NameKey{parent, name});
    const auto found = std::distance(begin, end);
    if (found != 1) {
        throw QVE_RuntimeError(
            status::SimpleDatabase_SelectMetadataName,
            "SimpleDatabase::SelectMetadataName: expected found=1, actual found=" + std::to_string(found) +
                " (fk=" + (parent == noParent ? "none" : std::to_string(parent)) + " name=\"" + narrow(name) +
                "\" nameTable=\"" + narrow(m_name) + "\")");
    }
    return m_entries[begin->second].id;
}

usrprops MetadataTable::SelectProperties(uint64_t id) const {
    usrprops properties;
    const auto rows = m_propertyRows.find(id);
    if (rows == m_propertyRows.end()) return properties;
    for (const size_t row : rows->second) properties.set(m_properties[row].key, m_properties[row].value);
    return properties;
}

void MetadataTable::LoadEntry(Entry entry) {
    const size_t row = m_entries.size();
    if (entry.active) {
        m_byName.emplace(NameKey{entry.parent, entry.name}, row);
        m_byParent[entry.parent].push_back(row);
        m_byId.emplace(entry.id, row);
    }
    m_entries.push_back(std::move(entry));
}

void MetadataTable::LoadProperty(Property property) {
    if (property.active) m_propertyRows[property.parent].push_back(m_properties.size());
    m_properties.push_back(std::move(property));
}

uint64_t MetadataTable::InsertMetadata(uint64_t parent, const std::wstring& name, const usrprops& properties) {
    const uint64_t id = m_entries.empty() ? 1 : m_entries.back().id + 1;
    LoadEntry({id, parent, name, true});
    m_entriesChanged = true;
    InsertProperties(id, properties);
    return id;
}

void MetadataTable::InsertProperties(uint64_t id, const usrprops& properties) {
    for (const auto& [key, value] : OrderedUserProperties(properties)) {
        LoadProperty({m_properties.empty() ? 1 : m_properties.back().id + 1, id, key, value, true});
        m_propertiesChanged = true;
    }
}

void MetadataTable::DeleteMetadata(uint64_t id) {
    const auto found = m_byId.find(id);
    if (found == m_byId.end()) return;
    const size_t row = found->second;
    Entry& entry = m_entries[row];
    entry.active = false;
    std::erase(m_byParent[entry.parent], row);
    const auto [begin, end] = m_byName.equal_range(NameKey{entry.parent, entry.name});
    m_byName.erase(std::find_if(begin, end, [row](const auto& named) { return named.second == row; }));
    m_byId.erase(found);
    m_entriesChanged = true;
    UpdateMetadata(id, {});
}

void MetadataTable::UpdateMetadata(uint64_t id, const usrprops& properties) {
    usrprops added = properties;
    std::erase_if(m_propertyRows[id], [&](size_t row) {
        Property& property = m_properties[row];
        const auto kept = added.find(property.key);
        if (kept != added.end() && kept->second == property.value) {
            added.erase(kept);
            return false;
        }
        property.active = false;
        m_propertiesChanged = true;
        return true;
    });
    InsertProperties(id, added);
}

}  // namespace qve
