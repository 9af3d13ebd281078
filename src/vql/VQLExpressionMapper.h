#pragma once

#include <map>

#include "vql/VQLExpressionCloner.h"
#include "vql/VQLExpressions.h"

namespace qve {

/// Copies expressions with columns replaced by expressions; columns that are not in the map stay.
class VQLExpressionMapper : public VQLExpressionCloner {
public:
    using Map = std::map<VQLIdentifier, RefCntPtr<VQLExpression>>;

    /// `expressions` must outlive the mapper. What stands in it is copied, not mapped again.
    VQLExpressionMapper(SymbolDictionary& dictionary, const Map& expressions)
        : VQLExpressionCloner(dictionary), m_expressions(expressions) {}

    RefCntPtr<VQLExpression> VisitIdentifier(const VQLIdentifierExpression& expression) override {
        const auto found = m_expressions.find(expression.GetIdentifier());
        if (found == m_expressions.end()) return VQLExpressionCloner::VisitIdentifier(expression);
        return VQLExpressionCloner(GetDictionary())(found->second);
    }

private:
    const Map& m_expressions;
};

}  // namespace qve
