#pragma once

#include "algebra/DataFlow.h"

namespace qve {

/// The page that a source stands on, without pulling it: for evaluating something over a page whose data somebody else
/// has already fetched.
class NoFlow : public DataFlow {
public:
    explicit NoFlow(RefCntPtr<DataFlow> source);

    /// A NoFlow is no operator of a plan: visits the source.
    void Accept(OperatorVisitor& visitor) override;
    /// Takes over the selection of the source and reports `pageSize` as the extent.
    unsigned Next(unsigned pageSize) override;
};

}  // namespace qve
