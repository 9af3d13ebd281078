#pragma once

#include <utility>
#include <vector>

#include "vql/VQLExpression.h"
#include "vql/VQLQuery.h"

namespace qve {

enum class VQLJoinType { inner, left, right, full };

/// Pairs of rows of two inputs that agree in all conditions.
class VQLJoinQuery : public VQLQuery {
public:
    /// A left-side and a right-side expression that must be equal.
    using Condition = std::pair<RefCntPtr<VQLExpression>, RefCntPtr<VQLExpression>>;
    using Conditions = std::vector<Condition>;

    /// The output is all of the left's columns and `imports`, which are expressions on the right.
    /// `useEqualTo`: nulls match nothing. `isLookup`: each left row meets just one right row.
    VQLJoinQuery(VQLPosition position, RefCntPtr<VQLQuery> left, RefCntPtr<VQLQuery> right, Conditions conditions,
                 VQLBindings imports, VQLJoinType joinType, bool useEqualTo = true, bool isLookup = false);
    void Accept(VQLQueryVisitor& visitor) override;
    const RefCntPtr<VQLQuery>& GetLeft() const { return m_left; }
    const RefCntPtr<VQLQuery>& GetRight() const { return m_right; }
    const Conditions& GetConditions() const { return m_conditions; }
    const VQLBindings& GetImports() const { return m_imports; }
    VQLJoinType GetJoinType() const { return m_joinType; }
    bool UseEqualToComparison() const { return m_useEqualTo; }
    bool IsLookup() const { return m_isLookup; }

private:
    RefCntPtr<VQLQuery> m_left;
    RefCntPtr<VQLQuery> m_right;
    Conditions m_conditions;
    VQLBindings m_imports;
    VQLJoinType m_joinType;
    bool m_useEqualTo;
    bool m_isLookup;
};

}  // namespace qve
