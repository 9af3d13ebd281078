#pragma once

#include "commands/Statement.h"

namespace qve {

/// Does nothing: what a client says of itself in a query band is read by those who look at statements.
class QuerybandCommand : public Statement {
public:
    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned) override { return nullptr; }
};

}  // namespace qve
