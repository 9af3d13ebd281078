#pragma once

#include "vql/VQLOrderQuery.h"

namespace qve {

/// The first rows of the input in order.
class VQLTopQuery : public VQLOrderQuery {
public:
    VQLTopQuery(VQLPosition position, RefCntPtr<VQLQuery> input, Orders orders, int topCount);
    void Accept(VQLQueryVisitor& visitor) override;
    int GetTopCount() const { return m_topCount; }

private:
    int m_topCount;
};

}  // namespace qve
