#include "algebra/Compact.h"

#include <algorithm>

#include "algebra/OperatorVisitor.h"
#include "algebra/PageGatherer.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

Compact::Compact(RefCntPtr<DataFlow> source) : DataFlow(source, source ? source->GetColumnNames() : ColumnNames()) {
    if (!m_source) throw QVE_InvalidArgument(status::Compact_source, "Compact::m_source");
}

Compact::~Compact() = default;

void Compact::Accept(OperatorVisitor& visitor) {
    visitor.VisitCompact(*this);
}

uint64_t Compact::GetCursor() const {
    return m_outCursor.load(std::memory_order_relaxed);
}

uint64_t Compact::GetPreviousCursor() const {
    return m_previousCursor.load(std::memory_order_relaxed);
}

void Compact::ResetCursor() {
    DataFlow::ResetCursor();
    m_outCursor.store(0, std::memory_order_relaxed);
    m_previousCursor.store(0, std::memory_order_relaxed);
    m_sourcePos = m_sourceExtent = 0;
    m_sourceExhausted = false;
    SetPage(0);
}

RefCntPtr<Column> Compact::LoadColumn(const std::wstring& name) const {
    if (!m_source->HasColumn(name)) {
        throw QVE_OutOfRange(status::Compact_LoadColumn, "Compact::LoadColumn: " + narrow(name));
    }
    const RefCntPtr<Column> source = m_source->GetColumn(name);
    return MakeRef<Column>(PageGatherer::PageProperties(*source), nullptr, source->GetDict());
}

RefCntPtr<Column> Compact::LookupColumn(const std::wstring& name) const {
    return MakeRef<Column>(PageGatherer::PageProperties(*m_source->DescribeColumn(name)));
}

// The next page of the source that has selected rows.
bool Compact::NextSource(unsigned pageSize) {
    m_sourcePos = 0;
    do {
        if (m_source->Next(pageSize) == 0) {
            m_sourceExtent = 0;
            m_sourceExhausted = true;
            return false;
        }
        m_sourceExtent = m_source->GetSelectionCount();
    } while (m_sourceExtent == 0);
    return true;
}

unsigned Compact::Next(unsigned pageSize) {
    m_previousCursor.store(GetCursor(), std::memory_order_relaxed);
    m_filled = 0;
    while (m_filled < pageSize) {
        if (m_sourcePos == m_sourceExtent && (m_sourceExhausted || !NextSource(pageSize))) break;
        if (m_gatherers.empty()) {
            for (const auto& entry : m_columns) {
                m_gatherers.push_back(MakeRef<PageGatherer>(m_source->GetColumn(entry.first), GetColumn(entry.first)));
            }
        }
        if (m_filled == 0) {
            m_outCursor.store(m_source->GetPreviousCursor() + m_sourcePos, std::memory_order_relaxed);
            for (const auto& gatherer : m_gatherers) gatherer->Adopt();
        } else if (!std::all_of(m_gatherers.begin(), m_gatherers.end(), [](const auto& c) { return c->Fits(); })) {
            break;
        }
        const unsigned take = std::min(pageSize - m_filled, m_sourceExtent - m_sourcePos);
        for (const auto& gatherer : m_gatherers) {
            gatherer->Overlay(m_filled, m_sourcePos, take, m_source->GetSelection());
        }
        m_filled += take;
        m_sourcePos += take;
    }
    if (m_filled == 0) m_outCursor.store(m_source->GetCursor(), std::memory_order_relaxed);
    return SetPage(m_filled);
}

}  // namespace qve
