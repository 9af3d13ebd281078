#pragma once

#include "algebra/Join.h"

namespace qve {

/// A join for the columns of a dimension: as an inner join, an outer row is paired with the first inner row of its key
/// only, so that there are never more rows than the outer flow has. As a left, right or full join it is as any other.
class Lookup : public Join {
public:
    using Join::Join;
    void Accept(OperatorVisitor& visitor) override;

protected:
    bool FollowsLinks() const override { return GetJoinType() != InnerJoin; }
};

}  // namespace qve
