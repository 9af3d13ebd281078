#pragma once

#include "vql/VQLQuery.h"

namespace qve {

/// The input's rows, made by several producers at once.
class VQLExchangeQuery : public VQLUnaryQuery {
public:
    VQLExchangeQuery(VQLPosition position, RefCntPtr<VQLQuery> input, unsigned producerCount);
    void Accept(VQLQueryVisitor& visitor) override;
    unsigned GetProducerCount() const { return m_producerCount; }

private:
    unsigned m_producerCount;
};

}  // namespace qve
