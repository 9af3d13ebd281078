#include "vql/VQLDerivedFacts.h"

#include <algorithm>

#include "vql/VQLExpressions.h"

namespace qve {

VQLDerivedFacts::Carriers::Carriers(const VQLBindings& bindings, bool keep) : m_keep(keep) {
    for (const auto& [name, expression] : bindings) {
        m_bound.insert(name);
        if (const VQLIdentifier* source = VQLPlainColumn(expression)) m_copies[*source].push_back(name);
    }
}

bool VQLDerivedFacts::Carriers::Keeps(const VQLIdentifier& column) const {
    return m_columns ? m_columns->HasColumn(column) : m_keep && !m_bound.count(column);
}

std::vector<VQLIdentifier> VQLDerivedFacts::Carriers::Of(const VQLIdentifier& column) const {
    std::vector<VQLIdentifier> carriers;
    if (Keeps(column)) carriers.push_back(column);
    const auto copies = m_copies.find(column);
    if (copies != m_copies.end()) carriers.insert(carriers.end(), copies->second.begin(), copies->second.end());
    return carriers;
}

VQLDerivedFacts VQLDerivedFacts::Of(const VQLQuery& query) {
    VQLDerivedFacts facts;
    facts.m_dependencies = query.GetDependencies();
    facts.m_equivalences = query.GetEquivalences();
    for (const auto& [column, classNumber] : facts.m_equivalences)
        facts.m_nextClass = std::max(facts.m_nextClass, classNumber + 1);
    facts.m_uniqueKeys = query.GetUniqueKeys();
    facts.m_sorts = query.GetSortSpecsList();
    return facts;
}

void VQLDerivedFacts::Store(VQLQuery& query) const {
    query.SetDependencies(m_dependencies);
    query.SetEquivalences(m_equivalences);
    query.SetUniqueKeys(m_uniqueKeys);
    query.SetSortSpecsList(m_sorts);
}

std::optional<VQLIdentifier> VQLDerivedFacts::Carry(const VQLIdentifier& column, const Carriers& carriers) const {
    const std::vector<VQLIdentifier> names = carriers.Of(column);
    if (!names.empty()) return names[0];
    // A column that is gone may live on in an equal one.
    const auto classOfColumn = m_equivalences.find(column);
    if (classOfColumn == m_equivalences.end()) return {};
    for (const auto& [other, classNumber] : m_equivalences) {
        if (classNumber != classOfColumn->second) continue;
        const std::vector<VQLIdentifier> others = carriers.Of(other);
        if (!others.empty()) return others[0];
    }
    return {};
}

std::optional<VQLIdentifierSet> VQLDerivedFacts::Carry(const VQLIdentifierSet& columns,
                                                       const Carriers& carriers) const {
    VQLIdentifierSet carried;
    for (const VQLIdentifier& column : columns) {
        const std::optional<VQLIdentifier> name = Carry(column, carriers);
        if (!name) return {};
        carried.insert(*name);
    }
    return carried;
}

VQLDerivedFacts VQLDerivedFacts::Through(const Carriers& carriers) const {
    VQLDerivedFacts facts;
    for (const auto& [column, sources] : m_dependencies)
        if (const auto carried = Carry(sources, carriers))
            for (const VQLIdentifier& name : carriers.Of(column)) facts.AddDependency(name, *carried);
    std::map<unsigned, VQLIdentifier> firstOfClass;
    for (const auto& [column, classNumber] : m_equivalences)
        for (const VQLIdentifier& name : carriers.Of(column)) {
            const auto [first, isFirst] = firstOfClass.emplace(classNumber, name);
            if (!isFirst) facts.AddEquivalence(first->second, name);
        }
    for (const VQLIdentifierSet& key : m_uniqueKeys)
        if (auto carried = Carry(key, carriers)) facts.AddUniqueKey(std::move(*carried));
    for (const VQLQuery::SortSpecs& sort : m_sorts) {
        VQLQuery::SortSpecs carried;
        for (const VQLQuery::SortSpec& spec : sort) {
            const std::optional<VQLIdentifier> name = Carry(spec.column, carriers);
            if (!name) break;
            carried.push_back({*name, spec.sense});
        }
        facts.AddSort(std::move(carried));
    }
    return facts;
}

void VQLDerivedFacts::AddDependency(const VQLIdentifier& column, VQLIdentifierSet sources) {
    sources.erase(column);
    if (!sources.empty()) m_dependencies.emplace(column, std::move(sources));
}

void VQLDerivedFacts::AddEquivalence(const VQLIdentifier& a, const VQLIdentifier& b) {
    if (a == b) return;
    const auto classOfA = m_equivalences.find(a);
    const auto classOfB = m_equivalences.find(b);
    if (classOfA == m_equivalences.end() && classOfB == m_equivalences.end()) {
        m_equivalences[a] = m_equivalences[b] = m_nextClass++;
    } else if (classOfB == m_equivalences.end()) {
        m_equivalences[b] = classOfA->second;
    } else if (classOfA == m_equivalences.end()) {
        m_equivalences[a] = classOfB->second;
    } else {
        const unsigned from = classOfB->second;
        for (auto& [column, classNumber] : m_equivalences)
            if (classNumber == from) classNumber = classOfA->second;
    }
}

void VQLDerivedFacts::Merge(const VQLDerivedFacts& other) {
    for (const auto& [column, sources] : other.m_dependencies) AddDependency(column, sources);
    std::map<unsigned, VQLIdentifier> firstOfClass;
    for (const auto& [column, classNumber] : other.m_equivalences) {
        const auto [first, isFirst] = firstOfClass.emplace(classNumber, column);
        if (!isFirst) AddEquivalence(first->second, column);
    }
}

void VQLDerivedFacts::AddDependenciesFromBindings(const VQLBindings& bindings, const VQLColumnSpace& output) {
    VQLIdentifierSet bound;
    for (const auto& [name, expression] : bindings) bound.insert(name);
    for (const auto& [name, expression] : bindings) {
        VQLIdentifierSet sources = VQLColumnsOf(expression);
        // A name bound anew is another column than the one that the expression reads.
        const bool allOutput = std::all_of(sources.begin(), sources.end(), [&](const VQLIdentifier& source) {
            return output.HasColumn(source) && !bound.count(source);
        });
        if (allOutput) AddDependency(name, std::move(sources));
    }
}

void VQLDerivedFacts::AddEquivalencesFromBindings(const VQLBindings& bindings, const VQLColumnSpace& output) {
    const Carriers carriers(bindings, true);
    for (const auto& [name, expression] : bindings) {
        const VQLIdentifier* source = VQLPlainColumn(expression);
        if (!source) continue;
        for (const VQLIdentifier& carrier : carriers.Of(*source))
            if (output.HasColumn(carrier)) AddEquivalence(carrier, name);
    }
}

namespace {

class ColumnCollector : private VQLExpressionVisitor {
public:
    VQLIdentifierSet operator()(const RefCntPtr<VQLExpression>& expression) {
        expression->Accept(*this);
        return std::move(m_columns);
    }

private:
    void VisitLiteral(VQLLiteralExpression&) override {}
    void VisitIdentifier(VQLIdentifierExpression& expression) override { m_columns.insert(expression.GetIdentifier()); }
    void VisitFuncall(VQLFuncallExpression& expression) override { VisitAll(expression.GetArguments()); }
    void VisitCase(VQLCaseExpression& expression) override { VisitAll(expression.GetArguments()); }
    void VisitAll(const VQLExpressions& expressions) {
        for (const RefCntPtr<VQLExpression>& expression : expressions) expression->Accept(*this);
    }

    VQLIdentifierSet m_columns;
};

}  // namespace

VQLIdentifierSet VQLColumnsOf(const RefCntPtr<VQLExpression>& expression) {
    return ColumnCollector()(expression);
}

const VQLIdentifier* VQLPlainColumn(const RefCntPtr<VQLExpression>& expression) {
    const auto* identifier = dynamic_cast<const VQLIdentifierExpression*>(expression.get());
    return identifier ? &identifier->GetIdentifier() : nullptr;
}

}  // namespace qve
