#pragma once

#include "vql/VQLExpression.h"
#include "vql/VQLQuery.h"

namespace qve {

/// The rows of the input for which a predicate is true.
class VQLSelectQuery : public VQLUnaryQuery {
public:
    VQLSelectQuery(VQLPosition position, RefCntPtr<VQLQuery> input, RefCntPtr<VQLExpression> predicate);
    void Accept(VQLQueryVisitor& visitor) override;
    const RefCntPtr<VQLExpression>& GetPredicate() const { return m_predicate; }

private:
    RefCntPtr<VQLExpression> m_predicate;
};

}  // namespace qve
