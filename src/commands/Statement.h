#pragma once

#include "algebra/Namespace.h"

namespace qve {

/// A statement that changes or lists the catalog: it has no columns and no sources, and does its work in Execute, which
/// returns a table of rows or nothing.
class Statement : public Namespace {
public:
    ColumnNames GetColumnNames() const override;
    /// Raises QVE_OutOfRange (status::Statement_GetColumn): there is none.
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override = 0;
};

}  // namespace qve
