#pragma once

#include <map>
#include <optional>
#include <vector>

#include "vql/VQLExpression.h"
#include "vql/VQLQuery.h"

namespace qve {

/// What is known of the rows of a query beside its columns: dependencies, equal columns, unique keys and orderings.
/// The checker takes the facts of the inputs, carries them over to the output's columns, adds those that the node
/// itself brings about, and stores them.
class VQLDerivedFacts {
public:
    /// Which output columns hold the values of an input column. A column whose name is bound anew loses its old value.
    class Carriers {
    public:
        /// `keep`: columns keep their names unless they are bound anew; otherwise only bindings carry.
        Carriers(const VQLBindings& bindings, bool keep);
        /// Columns keep their names if they stand in `columns`.
        explicit Carriers(const VQLColumnSpace& columns) : m_columns(&columns) {}

        std::vector<VQLIdentifier> Of(const VQLIdentifier& column) const;

    private:
        bool Keeps(const VQLIdentifier& column) const;

        bool m_keep = false;
        const VQLColumnSpace* m_columns = nullptr;
        VQLIdentifierSet m_bound;
        std::map<VQLIdentifier, std::vector<VQLIdentifier>> m_copies;
    };

    VQLDerivedFacts() = default;
    /// The facts stored with a checked query.
    static VQLDerivedFacts Of(const VQLQuery& query);
    /// These facts in terms of the output's columns. A fact that rests on a column without carrier is dropped; of an
    /// ordering, what stands before it remains.
    VQLDerivedFacts Through(const Carriers& carriers) const;
    void Store(VQLQuery& query) const;

    /// Each bound column derives from the columns of its expression. With `output` the columns must all be in it.
    void AddDependenciesFromBindings(const VQLBindings& bindings, const VQLColumnSpace& output);
    /// A binding of a plain column equals that column, if it stands in `output` under its name.
    void AddEquivalencesFromBindings(const VQLBindings& bindings, const VQLColumnSpace& output);
    void AddDependency(const VQLIdentifier& column, VQLIdentifierSet sources);
    void AddEquivalence(const VQLIdentifier& a, const VQLIdentifier& b);
    void AddUniqueKey(VQLIdentifierSet key) { m_uniqueKeys.insert(std::move(key)); }
    void AddSort(VQLQuery::SortSpecs specs) {
        if (!specs.empty()) m_sorts.push_back(std::move(specs));
    }
    /// Adds the dependencies and equivalences of another input.
    void Merge(const VQLDerivedFacts& other);

    const VQLQuery::UniqueKeys& GetUniqueKeys() const { return m_uniqueKeys; }
    void SetUniqueKeys(VQLQuery::UniqueKeys keys) { m_uniqueKeys = std::move(keys); }
    void ClearSorts() { m_sorts.clear(); }

private:
    /// An output column that holds the values of an input column; for a set, one for each, or nothing.
    std::optional<VQLIdentifier> Carry(const VQLIdentifier& column, const Carriers& carriers) const;
    std::optional<VQLIdentifierSet> Carry(const VQLIdentifierSet& columns, const Carriers& carriers) const;

    VQLQuery::Dependencies m_dependencies;
    VQLQuery::Equivalences m_equivalences;
    unsigned m_nextClass = 0;
    VQLQuery::UniqueKeys m_uniqueKeys;
    std::vector<VQLQuery::SortSpecs> m_sorts;
};

/// The names of all columns that an expression reads.
VQLIdentifierSet VQLColumnsOf(const RefCntPtr<VQLExpression>& expression);
/// The column that an expression is, or null when it is anything else.
const VQLIdentifier* VQLPlainColumn(const RefCntPtr<VQLExpression>& expression);

}  // namespace qve
