#pragma once

#include <string>

#include "algebra/Namespace.h"

namespace qve {

/// A namespace that passes everything on to another one.
class DelegatedNamespace : public Namespace {
public:
    explicit DelegatedNamespace(RefCntPtr<Namespace> target);

    /// Visits the target: a delegating namespace is not seen in a plan.
    void Accept(OperatorVisitor& visitor) override;
    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;

protected:
    const RefCntPtr<Namespace> m_target;
};

}  // namespace qve
