#pragma once

#include "system/RefCntPtr.h"
#include "vql/VQLQuery.h"

namespace qve {

class VQLExpression;

/// What a pass asks of an expression before it moves it: the columns that it reads, and whether it holds an aggregate
/// call.
class OptScalarProperties : public RefCntObject {
public:
    OptScalarProperties(VQLIdentifierSet columns, bool hasAggregate)
        : m_columns(std::move(columns)), m_hasAggregate(hasAggregate) {}
    const VQLIdentifierSet& GetColumns() const { return m_columns; }
    bool HasAggregate() const { return m_hasAggregate; }

private:
    VQLIdentifierSet m_columns;
    bool m_hasAggregate;
};

/// The expression must be checked: an aggregate call is told by its expression type.
RefCntPtr<OptScalarProperties> OptDeriveScalarProperties(const RefCntPtr<VQLExpression>& expression);

}  // namespace qve
