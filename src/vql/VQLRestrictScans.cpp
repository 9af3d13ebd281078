#include "vql/VQLRestrictScans.h"

#include <algorithm>

#include "metrics/Scope.h"
#include "system/VQLException.h"
#include "vql/VQLExpressionInputs.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueries.h"
#include "vql/VQLQueryCloner.h"
#include "vql/VQLTableSpaceFamily.h"
#include "vql/status.h"

namespace qve {
namespace {

class ScanRestricter : public VQLQueryCloner {
public:
    ScanRestricter(SymbolDictionary& dictionary, VQLIdentifierSet wanted, bool exact)
        : VQLQueryCloner(dictionary), m_wanted(std::move(wanted)), m_exact(exact) {}

    RefCntPtr<VQLQuery> VisitTable(const VQLTableQuery& query) override {
        return MakeRef<VQLTableQuery>(query.GetPosition(), query.GetTableName(), query.GetDatabasePath(),
                                      query.GetColumnMap(), WantedOfScan(query), query.GetParallelism(),
                                      query.GetClusterNames());
    }
    RefCntPtr<VQLQuery> VisitDomain(const VQLDomainQuery& query) override {
        return MakeRef<VQLDomainQuery>(query.GetPosition(), query.GetQualifiedColumnName(), query.GetDatabasePath(),
                                       query.GetColumnMap(), WantedOfScan(query), query.GetParallelism(),
                                       query.GetClusterNames());
    }
    RefCntPtr<VQLQuery> VisitText(const VQLTextQuery& query) override {
        return MakeRef<VQLTextQuery>(query.GetPosition(), query.GetPath(), query.GetSchema(), query.GetTextProperties(),
                                     WantedOfScan(query), query.GetColumnMap());
    }

    RefCntPtr<VQLQuery> VisitSelect(const VQLSelectQuery& query) override {
        VQLIdentifierSet wanted = m_wanted;
        AddInputs(query.GetPredicate(), wanted);
        return MakeRef<VQLSelectQuery>(query.GetPosition(), Input(query.GetInput(), std::move(wanted)),
                                       Clone(query.GetPredicate()));
    }

    RefCntPtr<VQLQuery> VisitProject(const VQLProjectQuery& query) override {
        const VQLBindings kept = RestrictBindings(query.GetBindings());
        VQLIdentifierSet wanted = m_wanted;
        for (const auto& [name, expression] : kept) wanted.erase(name);
        AddInputs(kept, wanted);
        RefCntPtr<VQLQuery> input = Input(query.GetInput(), std::move(wanted));
        if (kept.empty()) return input;
        return MakeRef<VQLProjectQuery>(query.GetPosition(), std::move(input), Clone(kept));
    }

    RefCntPtr<VQLQuery> VisitRestrict(const VQLRestrictQuery& query) override {
        std::vector<VQLIdentifier> names;
        std::copy_if(query.GetIdentifiers().begin(), query.GetIdentifiers().end(), std::back_inserter(names),
                     [this](const VQLIdentifier& name) { return m_wanted.count(name) != 0; });
        VQLIdentifierSet wanted(names.begin(), names.end());
        return MakeRef<VQLRestrictQuery>(query.GetPosition(), Input(query.GetInput(), std::move(wanted)),
                                         std::move(names));
    }

    RefCntPtr<VQLQuery> VisitPivot(const VQLPivotQuery& query) override {
        return MakeRef<VQLPivotQuery>(query.GetPosition(), Input(query.GetInput(), All(*query.GetInput())),
                                      query.GetTags(), query.GetGroups(), query.DefaultCollation());
    }

    RefCntPtr<VQLQuery> VisitAggregate(const VQLAggregateQuery& query) override {
        VQLBindings measures = RestrictBindings(query.GetMeasures());
        // The one group of an aggregate without group-bys exists through its measures.
        if (measures.empty() && query.GetGroupBys().empty() && !query.GetMeasures().empty()) {
            measures.push_back(query.GetMeasures().front());
        }
        VQLIdentifierSet wanted;
        AddInputs(query.GetGroupBys(), wanted);
        AddInputs(measures, wanted);
        return MakeRef<VQLAggregateQuery>(query.GetPosition(), Input(query.GetInput(), std::move(wanted)),
                                          Clone(query.GetGroupBys()), Clone(measures), query.IsOrdered());
    }

    RefCntPtr<VQLQuery> VisitOrder(const VQLOrderQuery& query) override {
        return MakeRef<VQLOrderQuery>(query.GetPosition(), OrderInput(query), Clone(query.GetOrders()));
    }
    RefCntPtr<VQLQuery> VisitTop(const VQLTopQuery& query) override {
        return MakeRef<VQLTopQuery>(query.GetPosition(), OrderInput(query), Clone(query.GetOrders()),
                                    query.GetTopCount());
    }

    RefCntPtr<VQLQuery> VisitJoin(const VQLJoinQuery& query) override {
        const VQLBindings imports = RestrictBindings(query.GetImports());
        VQLIdentifierSet leftWanted = m_wanted;
        for (const auto& [name, expression] : query.GetImports()) leftWanted.erase(name);
        VQLIdentifierSet rightWanted;
        AddInputs(imports, rightWanted);
        for (const auto& [left, right] : query.GetConditions()) {
            AddInputs(left, leftWanted);
            AddInputs(right, rightWanted);
        }
        RefCntPtr<VQLQuery> left = Input(query.GetLeft(), std::move(leftWanted));
        RefCntPtr<VQLQuery> right = Input(query.GetRight(), std::move(rightWanted));
        return MakeRef<VQLJoinQuery>(query.GetPosition(), std::move(left), std::move(right),
                                     Clone(query.GetConditions()), Clone(imports), query.GetJoinType(),
                                     query.UseEqualToComparison(), query.IsLookup());
    }

    RefCntPtr<VQLQuery> VisitIndexJoin(const VQLIndexJoinQuery& query) override {
        const VQLBindings imports = RestrictBindings(query.GetImports());
        VQLIdentifierSet leftWanted = m_wanted;
        for (const auto& [name, expression] : query.GetImports()) leftWanted.erase(name);
        VQLIdentifierSet rightWanted{query.GetStartColumnName(), query.GetCountColumnName()};
        AddInputs(imports, rightWanted);
        RefCntPtr<VQLQuery> left = Input(query.GetLeft(), std::move(leftWanted));
        RefCntPtr<VQLQuery> right = Input(query.GetRight(), std::move(rightWanted));
        return MakeRef<VQLIndexJoinQuery>(query.GetPosition(), std::move(left), std::move(right), Clone(imports),
                                          query.GetStartColumnName(), query.GetCountColumnName());
    }

    RefCntPtr<VQLQuery> VisitExchange(const VQLExchangeQuery& query) override {
        return MakeRef<VQLExchangeQuery>(query.GetPosition(), Input(query.GetInput(), m_wanted),
                                         query.GetProducerCount());
    }

    RefCntPtr<VQLQuery> VisitAppend(const VQLAppendQuery& query) override {
        const VQLIdentifierSet outputs = m_wanted;
        RefCntPtr<VQLQuery> left = Input(query.GetLeft(), outputs);
        std::vector<RefCntPtr<VQLQuery>> rights;
        std::vector<VQLAppendQuery::Renames> renamesList;
        for (size_t i = 0; i < query.GetRightList().size(); ++i) {
            VQLIdentifierSet wanted = outputs;
            VQLAppendQuery::Renames renames;
            for (const auto& [from, to] : query.GetRenamesList()[i]) {
                if (outputs.count(to) == 0) continue;
                wanted.erase(to);
                renames.emplace_back(from, to);
            }
            for (const auto& [from, to] : renames) wanted.insert(from);
            rights.push_back(Input(query.GetRightList()[i], std::move(wanted)));
            renamesList.push_back(std::move(renames));
        }
        return MakeRef<VQLAppendQuery>(query.GetPosition(), std::move(left), std::move(rights), std::move(renamesList));
    }

private:
    static VQLIdentifierSet All(const VQLQuery& query) {
        VQLIdentifierSet names;
        for (const auto& column : query.GetColumnSpace()->GetColumns()) names.insert(column->GetName());
        return names;
    }

    // What a scan reads. An empty set would mean all columns, so a scan of which only the number of rows counts reads
    // its narrowest column.
    VQLIdentifierSet WantedOfScan(const VQLQuery& scan) const {
        const auto& columns = scan.GetColumnSpace()->GetColumns();
        if (!m_wanted.empty() || columns.empty()) return m_wanted;
        const auto narrower = [](const auto& a, const auto& b) { return Width(*a) < Width(*b); };
        return {(*std::min_element(columns.begin(), columns.end(), narrower))->GetName()};
    }
    static unsigned long long Width(const VQLColumn& column) {
        const bool known = column.HasProperty(usrpropkey::storagewidth) || column.HasProperty(usrpropkey::size);
        return known ? column.GetDataWidth() : ~0ULL;
    }

    // The copy of an input of which `wanted` is wanted.
    RefCntPtr<VQLQuery> Input(const RefCntPtr<VQLQuery>& input, VQLIdentifierSet wanted) {
        const VQLColumnSpace& columns = *input->GetColumnSpace();
        for (const auto& name : wanted) {
            if (!columns.HasColumn(name)) {
                throw VQLException(status::VQLRestrictScans_Wanted, L"wanted column not present in input");
            }
        }
        const bool narrows =
            m_exact && !wanted.empty() && wanted.size() < columns.GetColumns().size() && !IsScan(*input);
        std::swap(m_wanted, wanted);
        RefCntPtr<VQLQuery> copy = Clone(input);
        std::swap(m_wanted, wanted);
        if (!narrows) return copy;
        return MakeRef<VQLRestrictQuery>(input->GetPosition(), std::move(copy),
                                         std::vector<VQLIdentifier>(wanted.begin(), wanted.end()));
    }
    static bool IsScan(const VQLQuery& query) {
        return dynamic_cast<const VQLTableQuery*>(&query) || dynamic_cast<const VQLTextQuery*>(&query) ||
               dynamic_cast<const VQLDomainQuery*>(&query);
    }

    RefCntPtr<VQLQuery> OrderInput(const VQLOrderQuery& query) {
        VQLIdentifierSet wanted = m_wanted;
        for (const auto& order : query.GetOrders()) wanted.erase(order.output);
        for (const auto& order : query.GetOrders()) AddInputs(order.expression, wanted);
        return Input(query.GetInput(), std::move(wanted));
    }

    VQLBindings RestrictBindings(const VQLBindings& bindings) const {
        VQLBindings kept;
        std::copy_if(bindings.begin(), bindings.end(), std::back_inserter(kept),
                     [this](const VQLBinding& binding) { return m_wanted.count(binding.first) != 0; });
        return kept;
    }

    VQLIdentifierSet m_wanted;
    const bool m_exact;
};

}  // namespace

RefCntPtr<VQLQuery> VQLRestrictScans(const VQLTableSpaceFamily& family, const VQLColumnSpace& columnSpace, bool exact,
                                     const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLRestrictScans");
    VQLIdentifierSet wanted;
    for (const auto& column : columnSpace.GetColumns()) wanted.insert(column->GetName());
    return ScanRestricter(family.GetDictionary(), std::move(wanted), exact)(query);
}

RefCntPtr<VQLQuery> RestrictQuery(const VQLColumnSpace& columnSpace, const RefCntPtr<VQLQuery>& query) {
    std::vector<VQLIdentifier> names;
    for (const auto& column : columnSpace.GetColumns()) names.push_back(column->GetName());
    return MakeRef<VQLRestrictQuery>(VQLPosition(), query, std::move(names));
}

}  // namespace qve
