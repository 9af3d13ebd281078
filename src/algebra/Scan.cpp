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
    bool plain = false;
};

namespace {

constexpr uint64_t memoryPage = 4096;
constexpr uint64_t cacheLine = 64;

// The processor reads ahead by itself, but only within a page of memory, and only once it has seen a few lines of it.
// `rows` rows follow those of the page.
void ReadAhead(const Column& column, uint64_t extent, uint64_t rows) {
    const uint64_t width = column.GetTokenSize();
    const char* const begin = static_cast<const char*>(column.GetInput(static_cast<unsigned>(extent)).data);
    for (uint64_t at = 0; at < rows * width; at += memoryPage) {
        for (uint64_t line = 0; line < 4; ++line) __builtin_prefetch(begin + at + line * cacheLine);
    }
}

}  // namespace

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
        m_seekers.back()->plain = column->GetData() && !column->HasProperty(usrpropkey::encoding);
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
    for (const RefCntPtr<Seeker>& seeker : m_seekers) {
        if (seeker->plain) ReadAhead(*seeker->column, extent, std::min(seeker->limit - extent, extent));
    }
    if (m_cancelled.load(std::memory_order_relaxed)) throw CancelledException();
    m_cursor.store(cursor + extent, std::memory_order_relaxed);
    return SetPage(static_cast<unsigned>(extent));
}

}  // namespace qve
