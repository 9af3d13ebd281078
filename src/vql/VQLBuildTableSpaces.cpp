#include "vql/VQLBuildTableSpaces.h"

#include "metrics/Scope.h"
#include "storage/DatabaseFamily.h"
#include "vql/TextVQLTableSpace.h"
#include "vql/VQLQueries.h"

namespace qve {

namespace {

class VQLTableSpacesBuilder : private VQLQueryVisitor {
public:
    VQLTableSpacesBuilder(VQLTableSpaceFamily& family, DatabaseFamily& databases)
        : m_family(family), m_databases(databases) {}
    void operator()(const RefCntPtr<VQLQuery>& query) { query->Accept(*this); }

private:
    void VisitTable(VQLTableQuery& query) override { AddDatabase(query.GetDatabasePath()); }
    void VisitDomain(VQLDomainQuery& query) override { AddDatabase(query.GetDatabasePath()); }
    void VisitIndexTable(VQLIndexTableQuery& query) override { AddDatabase(query.GetDatabasePath()); }
    void VisitText(VQLTextQuery& query) override {
        const std::wstring space = VQLTableSpaceFamily::TextSpacePath(query);
        if (m_family.HasTableSpace(space)) return;
        const RefCntPtr<VQLTableSpace> text =
            MakeRef<TextVQLTableSpace>(m_family.GetDictionary(), m_databases.ResolveDataFilePath(query.GetPath()),
                                       query.GetSchema(), query.GetTextProperties());
        m_family.AddTableSpace(text, space);
    }
    void VisitRemoteQuery(VQLRemoteQuery&) override {}
    void VisitSelect(VQLSelectQuery& query) override { (*this)(query.GetInput()); }
    void VisitProject(VQLProjectQuery& query) override { (*this)(query.GetInput()); }
    void VisitRestrict(VQLRestrictQuery& query) override { (*this)(query.GetInput()); }
    void VisitPivot(VQLPivotQuery& query) override { (*this)(query.GetInput()); }
    void VisitAggregate(VQLAggregateQuery& query) override { (*this)(query.GetInput()); }
    void VisitOrder(VQLOrderQuery& query) override { (*this)(query.GetInput()); }
    void VisitTop(VQLTopQuery& query) override { (*this)(query.GetInput()); }
    void VisitExchange(VQLExchangeQuery& query) override { (*this)(query.GetInput()); }
    void VisitJoin(VQLJoinQuery& query) override {
        (*this)(query.GetLeft());
        (*this)(query.GetRight());
    }
    void VisitIndexJoin(VQLIndexJoinQuery& query) override {
        (*this)(query.GetLeft());
        (*this)(query.GetRight());
    }
    void VisitAppend(VQLAppendQuery& query) override {
        (*this)(query.GetLeft());
        for (const RefCntPtr<VQLQuery>& right : query.GetRightList()) (*this)(right);
    }

    void AddDatabase(const std::wstring& path) {
        if (m_family.HasTableSpace(path)) return;
        const RefCntPtr<Database> database =
            path.empty() ? m_databases.GetDefaultDatabase() : m_databases.AddDatabase(path);
        if (database) m_family.AddTableSpace(database, path);
    }

    VQLTableSpaceFamily& m_family;
    DatabaseFamily& m_databases;
};

}  // namespace

VQLTableSpaceFamily VQLBuildTableSpaces(const RefCntPtr<VQLQuery>& query, DatabaseFamily& databases,
                                        SymbolDictionary& dictionary) {
    Metrics::Scope scope("VQLBuildTableSpaces");
    VQLTableSpaceFamily family(dictionary);
    VQLTableSpacesBuilder(family, databases)(query);
    return family;
}

}  // namespace qve
