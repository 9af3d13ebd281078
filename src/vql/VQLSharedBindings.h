#pragma once

#include "vql/VQLExpression.h"

namespace qve {

class VQLIdentifierFactory;

/// Bindings to which expressions are added under fresh names, equal ones once.
class VQLSharedBindings {
public:
    /// `factory` must outlive the bindings.
    explicit VQLSharedBindings(VQLIdentifierFactory& factory) : m_factory(factory) {}

    /// The name of an equal expression; else that of `expression` itself, which is `wanted` unless that is empty.
    VQLIdentifier NameOf(const RefCntPtr<VQLExpression>& expression, const VQLIdentifier& wanted = {});

    const VQLBindings& Get() const { return m_bindings; }

private:
    VQLIdentifierFactory& m_factory;
    VQLBindings m_bindings;
};

}  // namespace qve
