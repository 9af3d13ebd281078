#pragma once

#include "vql/VQLExpression.h"
#include "vql/VQLQuery.h"

namespace qve {

/// The left table's rows that lie in the runs that the right side names by start and count.
class VQLIndexJoinQuery : public VQLQuery {
public:
    VQLIndexJoinQuery(VQLPosition position, RefCntPtr<VQLQuery> left, RefCntPtr<VQLQuery> right, VQLBindings imports,
                      VQLIdentifier startColumnName, VQLIdentifier countColumnName);
    void Accept(VQLQueryVisitor& visitor) override;
    const RefCntPtr<VQLQuery>& GetLeft() const { return m_left; }
    const RefCntPtr<VQLQuery>& GetRight() const { return m_right; }
    const VQLBindings& GetImports() const { return m_imports; }
    const VQLIdentifier& GetStartColumnName() const { return m_startColumnName; }
    const VQLIdentifier& GetCountColumnName() const { return m_countColumnName; }

private:
    RefCntPtr<VQLQuery> m_left;
    RefCntPtr<VQLQuery> m_right;
    VQLBindings m_imports;
    VQLIdentifier m_startColumnName;
    VQLIdentifier m_countColumnName;
};

}  // namespace qve
