#include "algebra/Scan.h"

#include <algorithm>

#include "algebra/OperatorVisitor.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

/// A scanned column and what its last seek made available, in rows.
struct Scan::Seeker : RefCntObject {
    explicit Seeker(RefCntPtr<Column> scanned) : column(std::move(scanned)) {}

    RefCntPtr<Column> column;
    uint64_t limit = 0;
};

Scan::Scan(RefCntPtr<Table> table, const ColumnNames& names) : DataFlow(nullptr, names), m_table(std::move(table)) {}

Scan::Scan(RefCntPtr<Table> table) : DataFlow(nullptr, table->GetColumnNames()), m_table(std::move(table)) {}

Scan::~Scan() = default;

void Scan::Accept(OperatorVisitor& visitor) {
    visitor.VisitScan(*this);
}

uint64_t Scan::GetCursor() const {
    return m_cursor.load(std::memory_order_relaxed);
}

void Scan::ResetCursor() {
    m_cursor.store(0, std::memory_order_relaxed);
    m_previousCursor.store(0, std::memory_order_relaxed);
}

uint64_t Scan::GetPreviousCursor() const {
    return m_previousCursor.load(std::memory_order_relaxed);
}

void Scan::SetCancelled() {
    m_cancelled.store(true, std::memory_order_relaxed);
}

RefCntPtr<Column> Scan::LoadColumn(const std::wstring& name) const {
    return m_table->GetColumn(name);
}

RefCntPtr<Column> Scan::LookupColumn(const std::wstring& name) const {
    return m_table->DescribeColumn(name);
}

void Scan::Start(unsigned pageSize) {
    for (const auto& entry : m_columns) GetColumn(entry.first);
    const uint64_t rows = m_table->Build(pageSize);
    for (const auto& [name, column] : m_columns) {
        const uint64_t count = column->GetCount();
        if (m_table->GetStart() + rows > count) {
            throw QVE_RangeError(status::Scan_Next, "Scan::Next: Mismatched row counts: Table has " +
                                                        std::to_string(rows) + " rows: Column: [" + narrow(name) +
                                                        "] has " + std::to_string(count) + " rows");
        }
        if (column->HasProperty(usrpropkey::encoding)) ++m_encodedCount;
        m_seekers.push_back(MakeRef<Seeker>(column));
    }
    m_started = true;
    ResetCursor();
}

unsigned Scan::Next(unsigned pageSize) {
    const uint64_t cursor = GetCursor();
    m_previousCursor.store(cursor, std::memory_order_relaxed);
    SetPage(0);
    if (pageSize == 0) return 0;
    if (!m_started) Start(pageSize);

    const uint64_t count = std::min<uint64_t>(pageSize, m_table->GetCount() - cursor);
    uint64_t extent = count;
    const uint64_t row = m_table->GetStart() + cursor;
    for (const RefCntPtr<Seeker>& seeker : m_seekers) {
        seeker->limit = seeker->column->Seek(row, count);
        extent = std::min(extent, seeker->limit);
    }
    if (m_cancelled.load(std::memory_order_relaxed)) throw CancelledException();
    m_cursor.store(cursor + extent, std::memory_order_relaxed);
    return SetPage(static_cast<unsigned>(extent));
}

}  // namespace qve
