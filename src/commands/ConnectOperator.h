#pragma once

#include "commands/Statement.h"

namespace qve {

/// Says that the session has another database: it has it by then. No visitor has a slot for it.
class ConnectOperator : public Statement {
public:
    void Accept(OperatorVisitor&) override {}
    RefCntPtr<Namespace> Execute(unsigned) override { return nullptr; }
};

}  // namespace qve
