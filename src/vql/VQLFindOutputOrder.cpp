#include "vql/VQLFindOutputOrder.h"

#include <algorithm>

#include "vql/VQLQueries.h"
#include "vql/VQLQueryVisitor.h"

namespace qve {
namespace {

class OutputOrderFinder : public VQLQueryVisitor {
public:
    using Names = std::vector<VQLIdentifier>;

    Names Find(const RefCntPtr<VQLQuery>& query) {
        query->Accept(*this);
        return std::move(m_names);
    }

private:
    void VisitTable(VQLTableQuery& query) override { VisitLeaf(query); }
    void VisitDomain(VQLDomainQuery& query) override { VisitLeaf(query); }
    void VisitText(VQLTextQuery& query) override { VisitLeaf(query); }
    void VisitIndexTable(VQLIndexTableQuery& query) override { VisitLeaf(query); }
    void VisitRemoteQuery(VQLRemoteQuery& query) override { VisitLeaf(query); }
    void VisitSelect(VQLSelectQuery& query) override { query.GetInput()->Accept(*this); }
    void VisitExchange(VQLExchangeQuery& query) override { query.GetInput()->Accept(*this); }
    void VisitRestrict(VQLRestrictQuery& query) override {
        m_names.clear();
        for (const auto& name : query.GetIdentifiers()) Append(name);
    }
    void VisitProject(VQLProjectQuery& query) override {
        query.GetInput()->Accept(*this);
        Append(query.GetBindings());
    }
    void VisitAggregate(VQLAggregateQuery& query) override {
        m_names.clear();
        Append(query.GetGroupBys());
        Append(query.GetMeasures());
    }
    void VisitOrder(VQLOrderQuery& query) override {
        query.GetInput()->Accept(*this);
        for (const auto& order : query.GetOrders()) {
            if (!order.output.empty()) Append(order.output);
        }
    }
    void VisitTop(VQLTopQuery& query) override { query.GetInput()->Accept(*this); }
    void VisitJoin(VQLJoinQuery& query) override {
        query.GetLeft()->Accept(*this);
        Append(query.GetImports());
    }
    void VisitIndexJoin(VQLIndexJoinQuery& query) override {
        query.GetLeft()->Accept(*this);
        Append(query.GetImports());
    }
    void VisitAppend(VQLAppendQuery& query) override {
        query.GetLeft()->Accept(*this);
        std::erase_if(m_names, [&query](const auto& name) { return !query.GetColumnSpace()->HasColumn(name); });
    }
    void VisitPivot(VQLPivotQuery& query) override {
        query.GetInput()->Accept(*this);
        std::erase_if(m_names, [&query](const auto& name) { return !query.GetColumnSpace()->HasColumn(name); });
        Append(query.GetTags().first);
        for (const auto& [name, members] : query.GetGroups()) Append(name);
    }

    // The catalog numbers its columns; columns without a number follow in the order of their names.
    void VisitLeaf(const VQLQuery& query) {
        std::vector<std::pair<unsigned long long, VQLIdentifier>> columns;
        for (const auto& column : query.GetColumnSpace()->GetColumns()) {
            const bool numbered = column->HasProperty(usrpropkey::ordinal);
            columns.emplace_back(numbered ? column->GetSizeProperty(usrpropkey::ordinal) : ~0ULL, column->GetName());
        }
        std::stable_sort(columns.begin(), columns.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        m_names.clear();
        for (const auto& [ordinal, name] : columns) m_names.push_back(name);
    }

    void Append(const VQLIdentifier& name) {
        if (std::find(m_names.begin(), m_names.end(), name) == m_names.end()) m_names.push_back(name);
    }
    void Append(const VQLBindings& bindings) {
        for (const auto& [name, expression] : bindings) Append(name);
    }

    Names m_names;
};

}  // namespace

std::vector<VQLIdentifier> VQLFindOutputOrder(const RefCntPtr<VQLQuery>& query) {
    return OutputOrderFinder().Find(query);
}

}  // namespace qve
