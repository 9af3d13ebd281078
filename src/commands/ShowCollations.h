#pragma once

#include "commands/Statement.h"

namespace qve {

/// Lists the collations: table "COLLATIONS" with "COLLATIONS_NAME", sorted.
class ShowCollations : public Statement {
public:
    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;
};

}  // namespace qve
