#pragma once

#include "vql/VQLExpression.h"

namespace qve {

/// The value of the first branch whose predicate holds, else the last value.
class VQLCaseExpression : public VQLExpression {
public:
    /// `arguments`: predicate, value, predicate, value, ..., last value. Throws VQLException "invalid number of case
    /// arguments" unless their count is odd and at least 3.
    VQLCaseExpression(VQLPosition position, VQLExpressions arguments);
    void Accept(VQLExpressionVisitor& visitor) override;

    const VQLExpressions& GetArguments() const { return m_arguments; }
    const VQLExpressions& GetPredicates() const { return m_predicates; }
    /// One for each predicate, and the last value.
    const VQLExpressions& GetThens() const { return m_thens; }

private:
    VQLExpressions m_arguments;
    VQLExpressions m_predicates;
    VQLExpressions m_thens;
};

}  // namespace qve
