#include "vql/VQLUniquifyColumns.h"

#include <algorithm>

#include "metrics/Scope.h"
#include "vql/VQLExpressionRenamer.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueries.h"
#include "vql/VQLQueryCloner.h"
#include "vql/syntax/VQLIdentifierFactory.h"

namespace qve {
namespace {

// Every visit leaves the mapping of its node's output columns to their unique names in m_map.
class VQLQueryIdUniquifier : public VQLQueryCloner {
public:
    explicit VQLQueryIdUniquifier(VQLIdentifierFactory& factory)
        : VQLQueryCloner(factory.GetDictionary()), m_factory(factory) {}

    using VQLQueryCloner::Clone;
    RefCntPtr<VQLExpression> Clone(const RefCntPtr<VQLExpression>& expression) override {
        return VQLExpressionRenamer(GetDictionary(), m_map)(expression);
    }
    const VQLColumnMap& GetMap() const { return m_map; }

    RefCntPtr<VQLQuery> VisitTable(const VQLTableQuery& query) override {
        auto [map, scan] = UniquifyScan(query, query.GetColumnMap());
        return MakeRef<VQLTableQuery>(query.GetPosition(), query.GetTableName(), query.GetDatabasePath(),
                                      std::move(map), std::move(scan), query.GetParallelism(), query.GetClusterNames());
    }
    RefCntPtr<VQLQuery> VisitDomain(const VQLDomainQuery& query) override {
        auto [map, scan] = UniquifyScan(query, query.GetColumnMap());
        return MakeRef<VQLDomainQuery>(query.GetPosition(), query.GetQualifiedColumnName(), query.GetDatabasePath(),
                                       std::move(map), std::move(scan), query.GetParallelism(),
                                       query.GetClusterNames());
    }
    RefCntPtr<VQLQuery> VisitText(const VQLTextQuery& query) override {
        auto [map, scan] = UniquifyScan(query, query.GetColumnMap());
        return MakeRef<VQLTextQuery>(query.GetPosition(), query.GetPath(), query.GetSchema(), query.GetTextProperties(),
                                     std::move(scan), std::move(map));
    }

    RefCntPtr<VQLQuery> VisitIndexTable(const VQLIndexTableQuery& query) override {
        VQLColumnMap map = UniquifyScan(query, query.GetColumnMap()).first;
        return MakeRef<VQLIndexTableQuery>(query.GetPosition(), query.GetTableName(), query.GetDatabasePath(),
                                           query.GetRLEColumnName(), GetDictionary(), std::move(map),
                                           query.GetParallelism(), query.GetClusterNames());
    }
    RefCntPtr<VQLQuery> VisitIndexJoin(const VQLIndexJoinQuery& query) override {
        RefCntPtr<VQLQuery> left = Clone(query.GetLeft());
        VQLColumnMap leftMap = m_map;
        RefCntPtr<VQLQuery> right = Clone(query.GetRight());
        VQLBindings imports = Clone(query.GetImports());
        const VQLIdentifier start = m_map.Map(query.GetStartColumnName());
        const VQLIdentifier count = m_map.Map(query.GetCountColumnName());
        m_map.swap(leftMap);
        Rename(imports);
        return MakeRef<VQLIndexJoinQuery>(query.GetPosition(), std::move(left), std::move(right), std::move(imports),
                                          start, count);
    }

    RefCntPtr<VQLQuery> VisitProject(const VQLProjectQuery& query) override {
        RefCntPtr<VQLQuery> input = Clone(query.GetInput());
        VQLBindings bindings = Clone(query.GetBindings());  // still over the input's columns
        Rename(bindings);
        return MakeRef<VQLProjectQuery>(query.GetPosition(), std::move(input), std::move(bindings));
    }

    RefCntPtr<VQLQuery> VisitRestrict(const VQLRestrictQuery& query) override {
        RefCntPtr<VQLQuery> input = Clone(query.GetInput());
        std::vector<VQLIdentifier> names;
        VQLColumnMap map;
        for (const auto& name : query.GetIdentifiers()) {
            names.push_back(m_map.Map(name));
            map.Insert(name, names.back());
        }
        m_map.swap(map);
        return MakeRef<VQLRestrictQuery>(query.GetPosition(), std::move(input), std::move(names));
    }

    RefCntPtr<VQLQuery> VisitPivot(const VQLPivotQuery& query) override {
        RefCntPtr<VQLQuery> input = Clone(query.GetInput());
        const auto rename = [this](const VQLPivotQuery::Group& group, bool membersAreColumns) {
            VQLPivotQuery::Group renamed{m_factory.Uniquify(group.first), group.second};
            if (membersAreColumns) {
                for (auto& member : renamed.second) member = m_map.Map(member);
            }
            return renamed;
        };
        VQLPivotQuery::Group tags = rename(query.GetTags(), false);
        std::vector<VQLPivotQuery::Group> groups;
        for (const auto& group : query.GetGroups()) groups.push_back(rename(group, true));
        VQLColumnMap map;
        for (const auto& [name, unique] : m_map) {
            const auto isMember = [&member = name](const VQLPivotQuery::Group& group) {
                return std::find(group.second.begin(), group.second.end(), member) != group.second.end();
            };
            const bool pivoted = std::any_of(query.GetGroups().begin(), query.GetGroups().end(), isMember);
            if (!pivoted) map.Insert(name, unique);
        }
        map.Insert(query.GetTags().first, tags.first);
        for (size_t i = 0; i < groups.size(); ++i) map.Insert(query.GetGroups()[i].first, groups[i].first);
        m_map.swap(map);
        return MakeRef<VQLPivotQuery>(query.GetPosition(), std::move(input), std::move(tags), std::move(groups),
                                      query.DefaultCollation());
    }

    RefCntPtr<VQLQuery> VisitAggregate(const VQLAggregateQuery& query) override {
        RefCntPtr<VQLQuery> input = Clone(query.GetInput());
        VQLBindings groupBys = Clone(query.GetGroupBys());
        VQLBindings measures = Clone(query.GetMeasures());
        m_map.Clear();
        for (auto& [name, expression] : groupBys) {
            // A key that is a column stays that column.
            const auto* column = dynamic_cast<const VQLIdentifierExpression*>(expression.get());
            const VQLIdentifier unique = column ? column->GetIdentifier() : m_factory.Uniquify(name);
            m_map.Insert(name, unique);
            name = unique;
        }
        Rename(measures);
        return MakeRef<VQLAggregateQuery>(query.GetPosition(), std::move(input), std::move(groupBys),
                                          std::move(measures), query.IsOrdered());
    }

    RefCntPtr<VQLQuery> VisitOrder(const VQLOrderQuery& query) override {
        RefCntPtr<VQLQuery> input = Clone(query.GetInput());
        return MakeRef<VQLOrderQuery>(query.GetPosition(), std::move(input), UniquifyOrders(query));
    }
    RefCntPtr<VQLQuery> VisitTop(const VQLTopQuery& query) override {
        RefCntPtr<VQLQuery> input = Clone(query.GetInput());
        return MakeRef<VQLTopQuery>(query.GetPosition(), std::move(input), UniquifyOrders(query), query.GetTopCount());
    }

    RefCntPtr<VQLQuery> VisitJoin(const VQLJoinQuery& query) override {
        VQLJoinQuery::Conditions conditions;
        RefCntPtr<VQLQuery> left = Clone(query.GetLeft());
        for (const auto& [a, b] : query.GetConditions()) conditions.emplace_back(Clone(a), nullptr);
        VQLColumnMap leftMap = m_map;
        RefCntPtr<VQLQuery> right = Clone(query.GetRight());
        for (size_t i = 0; i < conditions.size(); ++i) {
            conditions[i].second = Clone(query.GetConditions()[i].second);
        }
        VQLBindings imports = Clone(query.GetImports());
        m_map.swap(leftMap);
        Rename(imports);
        return MakeRef<VQLJoinQuery>(query.GetPosition(), std::move(left), std::move(right), std::move(conditions),
                                     std::move(imports), query.GetJoinType(), query.UseEqualToComparison(),
                                     query.IsLookup());
    }

    RefCntPtr<VQLQuery> VisitAppend(const VQLAppendQuery& query) override {
        RefCntPtr<VQLQuery> left = Clone(query.GetLeft());
        VQLColumnMap leftMap = m_map;
        std::vector<RefCntPtr<VQLQuery>> rights;
        std::vector<VQLAppendQuery::Renames> renamesList;
        for (size_t i = 0; i < query.GetRightList().size(); ++i) {
            rights.push_back(Clone(query.GetRightList()[i]));
            VQLColumnMap sources;  // from a left column to the right one that continues it
            VQLIdentifierSet renamed;
            for (const auto& [from, to] : query.GetRenamesList()[i]) {
                sources.Insert(to, from);
                renamed.insert(from);
            }
            VQLAppendQuery::Renames renames;
            VQLColumnMap supplied;
            for (const auto& [name, unique] : leftMap) {
                const VQLIdentifier& source = sources.PartialMap(name);
                // A column that goes by another name is not there under its own.
                if (!m_map.HasMapping(source) || (!sources.HasMapping(name) && renamed.count(source))) continue;
                renames.emplace_back(m_map.Map(source), unique);
                supplied.Insert(name, unique);
            }
            renamesList.push_back(std::move(renames));
            leftMap.swap(supplied);
        }
        m_map.swap(leftMap);
        return MakeRef<VQLAppendQuery>(query.GetPosition(), std::move(left), std::move(rights), std::move(renamesList));
    }

private:
    // The column map and scan columns of a leaf whose output columns get new names.
    std::pair<VQLColumnMap, VQLIdentifierSet> UniquifyScan(const VQLQuery& scan, const VQLColumnMap& given) {
        VQLColumnMap map;
        VQLIdentifierSet scanColumns;
        m_map.Clear();
        for (const auto& column : scan.GetColumnSpace()->GetColumns()) {
            const VQLIdentifier& name = column->GetName();
            const VQLIdentifier unique = m_factory.Uniquify(name);
            map.Insert(given.PartialRemap(name), unique);
            scanColumns.insert(unique);
            m_map.Insert(name, unique);
        }
        return {std::move(map), std::move(scanColumns)};
    }

    void Rename(VQLBindings& bindings) {
        for (auto& [name, expression] : bindings) {
            const VQLIdentifier unique = m_factory.Uniquify(name);
            m_map.Insert(name, unique);
            name = unique;
        }
    }

    VQLOrderQuery::Orders UniquifyOrders(const VQLOrderQuery& query) {
        VQLOrderQuery::Orders orders = Clone(query.GetOrders());
        for (auto& order : orders) {
            if (order.output.empty()) continue;
            const VQLIdentifier unique = m_factory.Uniquify(order.output);
            m_map.Insert(order.output, unique);
            order.output = unique;
        }
        return orders;
    }

    VQLIdentifierFactory& m_factory;
    VQLColumnMap m_map;
};

}  // namespace

RefCntPtr<VQLQuery> VQLUniquifyColumns(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query,
                                       VQLColumnMap& columns) {
    Metrics::Scope scope("VQLUniquifyColumns");
    VQLQueryIdUniquifier uniquifier(factory);
    RefCntPtr<VQLQuery> result = uniquifier(query);
    columns = uniquifier.GetMap();
    return result;
}

}  // namespace qve
