#pragma once

#include "vql/VQLExpression.h"
#include "vql/VQLQuery.h"

namespace qve {

/// Adds the columns that an expression reads to `inputs`.
void AddInputs(const RefCntPtr<VQLExpression>& expression, VQLIdentifierSet& inputs);
void AddInputs(const VQLBindings& bindings, VQLIdentifierSet& inputs);

}  // namespace qve
