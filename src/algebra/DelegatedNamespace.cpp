#include "algebra/DelegatedNamespace.h"

#include "storage/Column.h"

namespace qve {

DelegatedNamespace::DelegatedNamespace(RefCntPtr<Namespace> target) : m_target(std::move(target)) {}

void DelegatedNamespace::Accept(OperatorVisitor& visitor) {
    m_target->Accept(visitor);
}

ColumnNames DelegatedNamespace::GetColumnNames() const {
    return m_target->GetColumnNames();
}

bool DelegatedNamespace::HasColumn(const std::wstring& name) const {
    return m_target->HasColumn(name);
}

RefCntPtr<Column> DelegatedNamespace::GetColumn(const std::wstring& name) const {
    return m_target->GetColumn(name);
}

unsigned DelegatedNamespace::GetColumnCount() const {
    return m_target->GetColumnCount();
}

RefCntPtr<Column> DelegatedNamespace::DescribeColumn(const std::wstring& name) const {
    return m_target->DescribeColumn(name);
}

}  // namespace qve
