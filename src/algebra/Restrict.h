#pragma once

#include "algebra/DataFlow.h"

namespace qve {

/// Shows only some columns of its source.
class Restrict : public DataFlow {
public:
    Restrict(RefCntPtr<DataFlow> source, const ColumnNames& names);

    void Accept(OperatorVisitor& visitor) override;
};

}  // namespace qve
