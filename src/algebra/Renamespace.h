#pragma once

#include "algebra/DelegatedNamespace.h"

namespace qve {

/// Another namespace under other column names.
class Renamespace : public DelegatedNamespace {
public:
    /// Old name to new name.
    using Renames = boost::container::flat_map<std::wstring, std::wstring>;

    /// Columns that `renames` does not name keep theirs.
    Renamespace(RefCntPtr<Namespace> target, const Renames& renames);

    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    /// Raises 40386 for a name that is not one of GetColumnNames().
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    /// Raises 40385 likewise.
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;

private:
    Renames m_originals;  // by the name that is shown
};

}  // namespace qve
