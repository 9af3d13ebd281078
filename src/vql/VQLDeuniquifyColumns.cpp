#include <map>

#include "metrics/Scope.h"
#include "vql/VQLExpressionRenamer.h"
#include "vql/VQLQueries.h"
#include "vql/VQLQueryCloner.h"
#include "vql/VQLUniquifyColumns.h"

namespace qve {
namespace {

// The name that a unique name was made of: without "#" and the number at its end.
VQLIdentifier BaseName(SymbolDictionary& dictionary, const VQLIdentifier& unique) {
    const std::wstring& text = unique.GetComponents().back().AsString();
    const size_t mark = text.find_last_not_of(L"0123456789");
    if (mark == std::wstring::npos || mark + 1 == text.size() || text[mark] != L'#') return unique;
    const VQLIdentifier tail = VQLIdentifier::Unquoted(text.substr(0, mark), dictionary);
    return unique.GetComponents().size() == 1 ? tail : VQLIdentifier::Join(unique.Head(), tail, dictionary);
}

// Renames every column of a tree.
class QueryRenamer : public VQLQueryCloner {
public:
    using VQLQueryCloner::Clone;
    using VQLQueryCloner::VQLQueryCloner;

    virtual VQLIdentifier Rename(const VQLIdentifier& name) = 0;

    RefCntPtr<VQLQuery> VisitTable(const VQLTableQuery& query) override {
        return MakeRef<VQLTableQuery>(query.GetPosition(), query.GetTableName(), query.GetDatabasePath(),
                                      Rename(query.GetColumnMap()), Rename(query.GetScanColumns()),
                                      query.GetParallelism(), query.GetClusterNames());
    }
    RefCntPtr<VQLQuery> VisitDomain(const VQLDomainQuery& query) override {
        return MakeRef<VQLDomainQuery>(query.GetPosition(), query.GetQualifiedColumnName(), query.GetDatabasePath(),
                                       Rename(query.GetColumnMap()), Rename(query.GetScanColumns()),
                                       query.GetParallelism(), query.GetClusterNames());
    }
    RefCntPtr<VQLQuery> VisitText(const VQLTextQuery& query) override {
        return MakeRef<VQLTextQuery>(query.GetPosition(), query.GetPath(), query.GetSchema(), query.GetTextProperties(),
                                     Rename(query.GetScanColumns()), Rename(query.GetColumnMap()));
    }
    RefCntPtr<VQLQuery> VisitRestrict(const VQLRestrictQuery& query) override {
        return MakeRef<VQLRestrictQuery>(query.GetPosition(), Clone(query.GetInput()), Rename(query.GetIdentifiers()));
    }
    RefCntPtr<VQLQuery> VisitPivot(const VQLPivotQuery& query) override {
        const VQLPivotQuery::Group tags{Rename(query.GetTags().first), query.GetTags().second};
        std::vector<VQLPivotQuery::Group> groups;
        for (const auto& [name, members] : query.GetGroups()) groups.emplace_back(Rename(name), Rename(members));
        return MakeRef<VQLPivotQuery>(query.GetPosition(), Clone(query.GetInput()), tags, std::move(groups),
                                      query.DefaultCollation());
    }
    RefCntPtr<VQLQuery> VisitIndexTable(const VQLIndexTableQuery& query) override {
        return MakeRef<VQLIndexTableQuery>(query.GetPosition(), query.GetTableName(), query.GetDatabasePath(),
                                           query.GetRLEColumnName(), GetDictionary(), Rename(query.GetColumnMap()),
                                           query.GetParallelism(), query.GetClusterNames());
    }
    RefCntPtr<VQLQuery> VisitIndexJoin(const VQLIndexJoinQuery& query) override {
        return MakeRef<VQLIndexJoinQuery>(query.GetPosition(), Clone(query.GetLeft()), Clone(query.GetRight()),
                                          Clone(query.GetImports()), Rename(query.GetStartColumnName()),
                                          Rename(query.GetCountColumnName()));
    }
    RefCntPtr<VQLQuery> VisitAppend(const VQLAppendQuery& query) override {
        std::vector<VQLAppendQuery::Renames> renamesList;
        for (const auto& renames : query.GetRenamesList()) {
            renamesList.emplace_back();
            for (const auto& [from, to] : renames) renamesList.back().emplace_back(Rename(from), Rename(to));
        }
        return MakeRef<VQLAppendQuery>(query.GetPosition(), Clone(query.GetLeft()), Clone(query.GetRightList()),
                                       std::move(renamesList));
    }

    VQLBindings Clone(const VQLBindings& bindings) override {
        VQLBindings renamed = VQLQueryCloner::Clone(bindings);
        for (auto& [name, expression] : renamed) name = Rename(name);
        return renamed;
    }
    VQLOrderQuery::Orders Clone(const VQLOrderQuery::Orders& orders) override {
        VQLOrderQuery::Orders renamed = VQLQueryCloner::Clone(orders);
        for (auto& order : renamed) {
            if (!order.output.empty()) order.output = Rename(order.output);
        }
        return renamed;
    }

private:
    VQLColumnMap Rename(const VQLColumnMap& map) {
        VQLColumnMap renamed;
        for (const auto& [from, to] : map) renamed.Insert(from, Rename(to));
        return renamed;
    }
    VQLIdentifierSet Rename(const VQLIdentifierSet& names) {
        VQLIdentifierSet renamed;
        for (const auto& name : names) renamed.insert(Rename(name));
        return renamed;
    }
    std::vector<VQLIdentifier> Rename(std::vector<VQLIdentifier> names) {
        for (auto& name : names) name = Rename(name);
        return names;
    }
};

// Notes all names that columns have in a tree.
class NameCollector : public QueryRenamer {
public:
    using QueryRenamer::QueryRenamer;
    VQLIdentifier Rename(const VQLIdentifier& name) override {
        m_names[BaseName(GetDictionary(), name)].insert(name);
        return name;
    }
    // From each unique name to the name that nobody else was made of.
    VQLColumnMap Restorable() const {
        VQLColumnMap map;
        for (const auto& [base, uniques] : m_names) {
            if (uniques.size() == 1) map.Insert(*uniques.begin(), base);
        }
        return map;
    }

private:
    std::map<VQLIdentifier, VQLIdentifierSet> m_names;
};

class VQLQueryIdDeuniquifier : public QueryRenamer {
public:
    VQLQueryIdDeuniquifier(SymbolDictionary& dictionary, const VQLColumnMap& names)
        : QueryRenamer(dictionary), m_names(names) {}
    using QueryRenamer::Clone;
    VQLIdentifier Rename(const VQLIdentifier& name) override { return m_names.PartialMap(name); }
    RefCntPtr<VQLExpression> Clone(const RefCntPtr<VQLExpression>& expression) override {
        return VQLExpressionRenamer(GetDictionary(), m_names)(expression);
    }

private:
    const VQLColumnMap& m_names;
};

}  // namespace

RefCntPtr<VQLQuery> VQLDeuniquifyColumns(SymbolDictionary& dictionary, const VQLColumnMap& columns,
                                         const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLDeuniquifyColumns");
    NameCollector collector(dictionary);
    collector(query);
    const VQLColumnMap names = collector.Restorable();
    RefCntPtr<VQLQuery> result = VQLQueryIdDeuniquifier(dictionary, names)(query);

    VQLBindings bindings;
    for (const auto& [name, unique] : columns) {
        bindings.emplace_back(name,
                              MakeRef<VQLIdentifierExpression>(VQLPosition(), names.PartialMap(columns.Map(name))));
    }
    if (bindings.empty()) return result;
    return MakeRef<VQLProjectQuery>(VQLPosition(), std::move(result), std::move(bindings));
}

}  // namespace qve
