#pragma once

#include "algebra/DataFlow.h"

namespace qve {

/// Shows only some columns of its source.
class Restrict : public DataFlow {
public:
    Restrict(RefCntPtr<DataFlow> source, const ColumnNames& names);

    void Accept(OperatorVisitor& visitor) override;
    /// The source's own column, so that nothing is copied.
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;
};

}  // namespace qve
