#pragma once

#include "vql/VQLExpression.h"

namespace qve {

/// The value of a column.
class VQLIdentifierExpression : public VQLExpression {
public:
    VQLIdentifierExpression(VQLPosition position, VQLIdentifier identifier)
        : VQLExpression(position), m_identifier(std::move(identifier)) {}
    void Accept(VQLExpressionVisitor& visitor) override;
    const VQLIdentifier& GetIdentifier() const { return m_identifier; }

private:
    VQLIdentifier m_identifier;
};

}  // namespace qve
