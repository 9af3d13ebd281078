#include "algebra/DelegatedTable.h"

#include "storage/Column.h"

namespace qve {

DelegatedTable::DelegatedTable(RefCntPtr<Table> delegate) : m_delegate(std::move(delegate)) {}

void DelegatedTable::Accept(OperatorVisitor& visitor) {
    m_delegate->Accept(visitor);
}

ColumnNames DelegatedTable::GetColumnNames() const {
    return m_delegate->GetColumnNames();
}

bool DelegatedTable::HasColumn(const std::wstring& name) const {
    return m_delegate->HasColumn(name);
}

RefCntPtr<Column> DelegatedTable::GetColumn(const std::wstring& name) const {
    return m_delegate->GetColumn(name);
}

unsigned DelegatedTable::GetColumnCount() const {
    return m_delegate->GetColumnCount();
}

RefCntPtr<Column> DelegatedTable::DescribeColumn(const std::wstring& name) const {
    return m_delegate->DescribeColumn(name);
}

unsigned long DelegatedTable::GetMemoryBudget() const {
    return m_delegate->GetMemoryBudget();
}

void DelegatedTable::SetMemoryBudget(unsigned long bytes) {
    m_delegate->SetMemoryBudget(bytes);
}

uint64_t DelegatedTable::GetStart() const {
    return m_delegate->GetStart();
}

uint64_t DelegatedTable::GetCount() const {
    return m_delegate->GetCount();
}

uint64_t DelegatedTable::Build(unsigned pageSize) {
    return m_delegate->Build(pageSize);
}

}  // namespace qve
