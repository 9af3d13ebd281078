#pragma once

#include <vector>

#include "vql/VQLQuery.h"

namespace qve {

/// Some columns of the input.
class VQLRestrictQuery : public VQLUnaryQuery {
public:
    VQLRestrictQuery(VQLPosition position, RefCntPtr<VQLQuery> input, std::vector<VQLIdentifier> identifiers);
    void Accept(VQLQueryVisitor& visitor) override;
    const std::vector<VQLIdentifier>& GetIdentifiers() const { return m_identifiers; }

private:
    std::vector<VQLIdentifier> m_identifiers;
};

}  // namespace qve
