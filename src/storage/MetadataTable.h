#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "types/usrprops.h"

namespace qve {

/// One kind of catalog entry in memory: the rows of a main table such as "TABLES" and of its property table, with an
/// index over the rows that are active. Rows are only ever added and deactivated, so an id is never used again. A value
/// type.
class MetadataTable {
public:
    /// The parent of entries that have none.
    static constexpr uint64_t noParent = ~uint64_t{0};

    struct Entry {
        uint64_t id;
        uint64_t parent;
        std::wstring name;
        bool active;
    };
    struct Property {
        uint64_t id;
        uint64_t parent;  // id of the entry
        usrpropkey key;
        std::wstring value;
        bool active;
    };

    /// @param name of the main table, for messages
    explicit MetadataTable(std::wstring name) : m_name(std::move(name)) {}

    const std::vector<Entry>& GetEntries() const { return m_entries; }
    const std::vector<Property>& GetProperties() const { return m_properties; }
    /// Whether rows changed since the last ClearChanged.
    bool EntriesChanged() const { return m_entriesChanged; }
    bool PropertiesChanged() const { return m_propertiesChanged; }
    void ClearChanged() { m_entriesChanged = m_propertiesChanged = false; }

    /// The names of the entries of a parent, in the order of their creation.
    std::vector<std::wstring> SelectNames(uint64_t parent) const;
    bool HasName(uint64_t parent, const std::wstring& name) const;
    /// The id of an entry. Throws QVE_RuntimeError 40460 unless there is exactly one.
    uint64_t SelectMetadataName(uint64_t parent, const std::wstring& name) const;
    usrprops SelectProperties(uint64_t id) const;

    /// Adds an entry and gives its id.
    uint64_t InsertMetadata(uint64_t parent, const std::wstring& name, const usrprops& properties);
    /// Deactivates an entry and its properties.
    void DeleteMetadata(uint64_t id);
    /// Makes the properties of an entry those given.
    void UpdateMetadata(uint64_t id, const usrprops& properties);

    /// Rows as they were stored, in their order.
    void LoadEntry(Entry entry);
    void LoadProperty(Property property);

private:
    struct NameKey {
        uint64_t parent;
        std::wstring name;
        friend bool operator==(const NameKey&, const NameKey&) = default;
    };
    struct NameHash {
        size_t operator()(const NameKey& key) const {
            return std::hash<std::wstring>()(key.name) ^ (key.parent * 0x9E3779B97F4A7C15u);
        }
    };

    void InsertProperties(uint64_t id, const usrprops& properties);

    std::wstring m_name;
    std::vector<Entry> m_entries;
    std::vector<Property> m_properties;
    std::unordered_multimap<NameKey, size_t, NameHash> m_byName;       // active rows of m_entries
    std::unordered_map<uint64_t, std::vector<size_t>> m_byParent;      // the same by parent, ascending
    std::unordered_map<uint64_t, size_t> m_byId;                       // the same by id
    std::unordered_map<uint64_t, std::vector<size_t>> m_propertyRows;  // active rows of m_properties by entry
    bool m_entriesChanged = false;
    bool m_propertiesChanged = false;
};

}  // namespace qve
