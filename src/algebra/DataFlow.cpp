#include "algebra/DataFlow.h"

#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

DataFlow::DataFlow(RefCntPtr<DataFlow> source, const ColumnNames& names) : m_source(std::move(source)) {
    m_columns.reserve(names.size());
    for (const std::wstring& name : names) m_columns.emplace_hint(m_columns.end(), name, nullptr);
}

DataFlow::~DataFlow() = default;

ColumnNames DataFlow::GetColumnNames() const {
    ColumnNames names;
    names.reserve(m_columns.size());
    for (const auto& entry : m_columns) names.insert(names.end(), entry.first);
    return names;
}

bool DataFlow::HasColumn(const std::wstring& name) const {
    return m_columns.contains(name);
}

RefCntPtr<Column> DataFlow::GetColumn(const std::wstring& name) const {
    const auto found = m_columns.find(name);
    if (found == m_columns.end()) {
        throw QVE_OutOfRange(status::DataFlow_GetColumn, "DataFlow::GetColumn: " + narrow(name));
    }
    if (!found->second) found->second = LoadColumn(name);
    return found->second;
}

unsigned DataFlow::GetColumnCount() const {
    return static_cast<unsigned>(m_columns.size());
}

RefCntPtr<Column> DataFlow::DescribeColumn(const std::wstring& name) const {
    const auto found = m_columns.find(name);
    if (found == m_columns.end()) {
        throw QVE_OutOfRange(status::DataFlow_DescribeColumn, "DataFlow::DescribeColumn: " + narrow(name));
    }
    if (found->second) return found->second;
    RefCntPtr<Column>& description = m_descriptions[name];
    if (!description) description = LookupColumn(name);
    return description;
}

unsigned DataFlow::GetExtent() const {
    return m_extent;
}

const unsigned* DataFlow::GetSelection() const {
    return m_selection;
}

unsigned DataFlow::GetSelectionCount() const {
    return m_selectionCount;
}

uint64_t DataFlow::GetCursor() const {
    return m_source ? m_source->GetCursor() : 0;
}

void DataFlow::ResetCursor() {
    if (!m_source) throw QVE_OutOfRange(status::DataFlow_ResetCursor, "DataFlow::ResetCursor");
    m_source->ResetCursor();
}

uint64_t DataFlow::GetPreviousCursor() const {
    return m_source ? m_source->GetPreviousCursor() : 0;
}

unsigned DataFlow::Next(unsigned pageSize) {
    if (!m_source) return SetPage(0);
    m_extent = m_source->Next(pageSize);
    m_selection = m_source->GetSelection();
    m_selectionCount = m_source->GetSelectionCount();
    return m_extent;
}

RefCntPtr<Column> DataFlow::LoadColumn(const std::wstring& name) const {
    if (!m_source) throw QVE_OutOfRange(status::DataFlow_LoadColumn, "DataFlow::LoadColumn");
    return m_source->GetColumn(name);
}

RefCntPtr<Column> DataFlow::LookupColumn(const std::wstring& name) const {
    if (!m_source) throw QVE_OutOfRange(status::DataFlow_LookupColumn, "DataFlow::LookupColumn");
    return m_source->DescribeColumn(name);
}

}  // namespace qve
