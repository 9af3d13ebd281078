#pragma once

#include <utility>
#include <vector>

#include "vql/syntax/VQLIdentifier.h"

namespace qve {

/// An ordered mapping from inner column names, those of a table, to outer ones, those of a query.
class VQLColumnMap {
public:
    using Entry = std::pair<VQLIdentifier, VQLIdentifier>;
    using const_iterator = std::vector<Entry>::const_iterator;

    /// Maps `from` to `to`. A `from` that is mapped already keeps its place and gets the new target.
    void Insert(const VQLIdentifier& from, const VQLIdentifier& to);
    bool HasMapping(const VQLIdentifier& from) const { return Find(from) != nullptr; }
    bool Empty() const { return m_entries.empty(); }
    void Clear() { m_entries.clear(); }
    /// Swaps each pair, in order.
    void Invert();

    /// Forward and reverse look-up. Throw VQLParseException 49007 and 49008, "no mapping for column %1".
    const VQLIdentifier& Map(const VQLIdentifier& from) const;
    const VQLIdentifier& Remap(const VQLIdentifier& to) const;
    /// The same, but give the name back when it has no mapping.
    const VQLIdentifier& PartialMap(const VQLIdentifier& from) const;
    const VQLIdentifier& PartialRemap(const VQLIdentifier& to) const;

    const_iterator begin() const { return m_entries.begin(); }
    const_iterator end() const { return m_entries.end(); }
    void swap(VQLColumnMap& other) noexcept { m_entries.swap(other.m_entries); }

private:
    const Entry* Find(const VQLIdentifier& from) const;
    const Entry* FindTarget(const VQLIdentifier& to) const;

    std::vector<Entry> m_entries;
};

}  // namespace qve
