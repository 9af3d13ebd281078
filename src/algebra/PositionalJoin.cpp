#include "algebra/PositionalJoin.h"

#include "algebra/OperatorVisitor.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

PositionalJoin::PositionalJoin(RefCntPtr<Table> first, RefCntPtr<Table> second)
    : m_first(std::move(first)), m_second(std::move(second)) {
    if (!m_first && !m_second) {
        throw QVE_InvalidArgument(status::PositionalJoin_Inputs, "PositionalJoin::PositionalJoin: Both inputs null");
    }
}

PositionalJoin::~PositionalJoin() = default;

void PositionalJoin::Accept(OperatorVisitor& visitor) {
    visitor.VisitPositionalJoin(*this);
}

ColumnNames PositionalJoin::GetColumnNames() const {
    ColumnNames names = Leading().GetColumnNames();
    if (m_first && m_second) {
        for (const std::wstring& name : m_second->GetColumnNames()) names.insert(name);
    }
    return names;
}

bool PositionalJoin::HasColumn(const std::wstring& name) const {
    return (m_first && m_first->HasColumn(name)) || (m_second && m_second->HasColumn(name));
}

const Table& PositionalJoin::Owner(const std::wstring& name) const {
    if (m_first && m_first->HasColumn(name)) return *m_first;
    if (m_second && m_second->HasColumn(name)) return *m_second;
    throw QVE_OutOfRange(status::PositionalJoin_GetColumn, "PositionalJoin::GetColumn: " + narrow(name));
}

RefCntPtr<Column> PositionalJoin::GetColumn(const std::wstring& name) const {
    return Owner(name).GetColumn(name);
}

unsigned PositionalJoin::GetColumnCount() const {
    return static_cast<unsigned>(GetColumnNames().size());
}

RefCntPtr<Column> PositionalJoin::DescribeColumn(const std::wstring& name) const {
    return Owner(name).DescribeColumn(name);
}

uint64_t PositionalJoin::GetStart() const {
    return Leading().GetStart();
}

uint64_t PositionalJoin::GetCount() const {
    return Leading().GetCount();
}

uint64_t PositionalJoin::Build(unsigned pageSize) {
    if (m_first) m_first->Build(pageSize);
    if (m_second) m_second->Build(pageSize);
    if (m_first && m_second &&
        (m_first->GetCount() != m_second->GetCount() || m_first->GetStart() != m_second->GetStart())) {
        throw QVE_LogicError(status::PositionalJoin_Build, "PositionalJoin::Build");
    }
    return GetCount();
}

}  // namespace qve
