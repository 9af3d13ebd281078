#pragma once

#include <map>
#include <set>
#include <vector>

#include "system/RefCntPtr.h"
#include "system/VQLException.h"
#include "vql/VQLColumnSpace.h"
#include "vql/syntax/VQLIdentifier.h"

namespace qve {

class VQLQueryVisitor;

enum class VQLSortSense { ascending, descending };

using VQLIdentifierSet = std::set<VQLIdentifier>;

/// A node of a query tree. The checker adds what is known of the rows that it yields: columns, orderings, functional
/// dependencies, equal columns and unique keys. Trees are shared between passes and belong to one thread.
class VQLQuery : public RefCntObject {
public:
    /// One key of an ordering.
    struct SortSpec {
        VQLIdentifier column;
        VQLSortSense sense = VQLSortSense::ascending;
        friend bool operator==(const SortSpec&, const SortSpec&) = default;
    };
    /// Outermost key first.
    using SortSpecs = std::vector<SortSpec>;
    /// From a column to the columns that it derives from.
    using Dependencies = std::map<VQLIdentifier, VQLIdentifierSet>;
    /// From a column to a class number; columns of one class always hold equal values.
    using Equivalences = std::map<VQLIdentifier, unsigned>;
    using UniqueKeys = std::set<VQLIdentifierSet>;

    explicit VQLQuery(VQLPosition position) : m_position(position) {}

    virtual void Accept(VQLQueryVisitor& visitor) = 0;

    /// Where the query was written; 0, 0 for one that a pass made.
    const VQLPosition& GetPosition() const { return m_position; }

    bool HasColumnSpace() const { return static_cast<bool>(m_columnSpace); }
    void SetColumnSpace(RefCntPtr<VQLColumnSpace> columnSpace) { m_columnSpace = std::move(columnSpace); }
    /// The output columns. Throws VQLException "VQLQuery: columnspace not defined" before the query was checked.
    const RefCntPtr<VQLColumnSpace>& GetColumnSpace() const;

    /// The orderings that the output is known to have; several can hold at once.
    const std::vector<SortSpecs>& GetSortSpecsList() const { return m_sortSpecsList; }
    void SetSortSpecsList(std::vector<SortSpecs> list) { m_sortSpecsList = std::move(list); }
    const Dependencies& GetDependencies() const { return m_dependencies; }
    void SetDependencies(Dependencies dependencies) { m_dependencies = std::move(dependencies); }
    const Equivalences& GetEquivalences() const { return m_equivalences; }
    void SetEquivalences(Equivalences equivalences) { m_equivalences = std::move(equivalences); }
    const UniqueKeys& GetUniqueKeys() const { return m_uniqueKeys; }
    void SetUniqueKeys(UniqueKeys keys) { m_uniqueKeys = std::move(keys); }

    /// Whether `column` derives from `from`, directly or through others.
    virtual bool DependsOn(const VQLIdentifier& column, const VQLIdentifier& from) const;
    virtual bool IsEquivalent(const VQLIdentifier& a, const VQLIdentifier& b) const;
    /// The columns that equal `column`, itself among them.
    virtual VQLIdentifierSet GetEquivalentColumns(const VQLIdentifier& column) const;
    /// Whether some unique key lies within `columns` and what equals them.
    virtual bool IsUnique(const VQLIdentifierSet& columns) const;
    /// Whether some known ordering begins with `specs`, equal columns counting as the same. True for no specs.
    virtual bool IsSortedBy(const SortSpecs& specs) const;
    /// Whether some known ordering begins with these columns, in any sequence.
    virtual bool AreColumnsSorted(const VQLIdentifierSet& columns) const;

private:
    bool DependsOn(const VQLIdentifier& column, const VQLIdentifier& from, VQLIdentifierSet& visited) const;

    VQLPosition m_position;
    RefCntPtr<VQLColumnSpace> m_columnSpace;
    std::vector<SortSpecs> m_sortSpecsList;
    Dependencies m_dependencies;
    Equivalences m_equivalences;
    UniqueKeys m_uniqueKeys;
};

/// A query over one input.
class VQLUnaryQuery : public VQLQuery {
public:
    VQLUnaryQuery(VQLPosition position, RefCntPtr<VQLQuery> input) : VQLQuery(position), m_input(std::move(input)) {}
    const RefCntPtr<VQLQuery>& GetInput() const { return m_input; }

private:
    RefCntPtr<VQLQuery> m_input;
};

}  // namespace qve
