#pragma once

#include "vql/VQLExpression.h"
#include "vql/VQLQuery.h"

namespace qve {

/// The input with columns added; one with the name of an input column takes its place.
class VQLProjectQuery : public VQLUnaryQuery {
public:
    VQLProjectQuery(VQLPosition position, RefCntPtr<VQLQuery> input, VQLBindings bindings);
    void Accept(VQLQueryVisitor& visitor) override;
    const VQLBindings& GetBindings() const { return m_bindings; }

private:
    VQLBindings m_bindings;
};

}  // namespace qve
