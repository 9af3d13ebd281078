#pragma once

#include "vql/VQLExpression.h"

namespace qve {

/// Orders expressions by what they compute: literals, identifiers, calls, cases, and within a kind by value, name or
/// arguments. Data types and positions do not count.
class VQLExpressionComparator {
public:
    /// -1, 0 or 1.
    int operator()(const RefCntPtr<VQLExpression>& a, const RefCntPtr<VQLExpression>& b) const;
};

}  // namespace qve
