#include "algebra/IndexJoin.h"

#include <algorithm>
#include <optional>

#include "algebra/OperatorVisitor.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/usratom.h"
#include "types/usrtype.h"

namespace qve {

namespace {

// A whole number of any width that is not below 0.
std::optional<uint64_t> NumberAt(const Column& column, unsigned row) {
    usratom value;
    column.GetType()->get(column.GetInput(), column.GetStorageName() == Column::storageVal ? 0 : row, value);
    const auto number = static_cast<long long>(value);
    return value.isnull() || number < 0 ? std::nullopt : std::optional<uint64_t>(number);
}

}  // namespace

IndexJoin::IndexJoin(RefCntPtr<Table> table, RefCntPtr<DataFlow> ranges, Join::NamePairs imports, std::wstring start,
                     std::wstring count)
    : DataFlow(std::move(ranges), Join::OutputNames(*table, imports)),
      m_table(std::move(table)),
      m_imports(std::move(imports)),
      m_start(std::move(start)),
      m_count(std::move(count)) {}

IndexJoin::~IndexJoin() = default;

void IndexJoin::Accept(OperatorVisitor& visitor) {
    visitor.VisitIndexJoin(*this);
}

RefCntPtr<Column> IndexJoin::LoadColumn(const std::wstring& name) const {
    if (const std::wstring* from = Join::InnerName(m_imports, name)) {
        return m_shown.AddOuter(m_source->GetColumn(*from), &name);
    }
    m_tableColumns.push_back(m_table->GetColumn(name));
    return m_tableColumns.back();
}

RefCntPtr<Column> IndexJoin::LookupColumn(const std::wstring& name) const {
    const std::wstring* from = Join::InnerName(m_imports, name);
    if (from) return MakeRef<Column>(m_shown.DescribeInner(*m_source->DescribeColumn(*from), name));
    return MakeRef<Column>(m_shown.DescribeOuter(*m_table->DescribeColumn(name)));
}

uint64_t IndexJoin::GetCursor() const {
    return m_cursor.load(std::memory_order_relaxed);
}

uint64_t IndexJoin::GetPreviousCursor() const {
    return m_previousCursor;
}

void IndexJoin::ResetCursor() {
    DataFlow::ResetCursor();
    m_place = m_places = 0;
    m_left = 0;
    m_cursor.store(0, std::memory_order_relaxed);
    m_previousCursor = 0;
}

// The next page of ranges.
bool IndexJoin::NextIndex(unsigned pageSize) {
    do {
        if (m_source->Next(pageSize) == 0) return false;
        m_places = m_source->GetSelectionCount();
    } while (m_places == 0);
    m_place = 0;
    return true;
}

// The next range of the page that has rows. False at the end of the page.
bool IndexJoin::NextRange() {
    const unsigned* selection = m_source->GetSelection();
    for (; m_left == 0 && m_place < m_places; ++m_place) {
        m_rangeRow = selection ? selection[m_place] : m_place;
        const std::optional<uint64_t> start = NumberAt(*m_starts, m_rangeRow);
        m_row = start.value_or(0);
        m_left = start ? NumberAt(*m_counts, m_rangeRow).value_or(0) : 0;
        if (m_left > m_table->GetCount() || m_row > m_table->GetCount() - m_left) {
            throw QVE_RangeError(status::IndexJoin_NextRange, "IndexJoin::NextRange: no rows " + std::to_string(m_row) +
                                                                  " to " + std::to_string(m_row + m_left));
        }
    }
    return m_left > 0;
}

unsigned IndexJoin::Next(unsigned pageSize) {
    SetPage(0);
    if (pageSize == 0) return 0;
    if (!m_bound) {
        for (const auto& entry : m_columns) GetColumn(entry.first);
        m_starts = m_source->GetColumn(m_start);
        m_counts = m_source->GetColumn(m_count);
        m_table->Build(pageSize);
        m_bound = true;
    }
    m_previousCursor = GetCursor();
    while (!NextRange()) {
        if (!NextIndex(pageSize)) return 0;
    }
    // As many rows as lie together, from one range or several, and can be had at once.
    const uint64_t first = m_row;
    m_rangeRows.clear();
    while (m_rangeRows.size() < pageSize && m_row == first + m_rangeRows.size()) {
        const uint64_t rows = std::min<uint64_t>(m_left, pageSize - m_rangeRows.size());
        m_rangeRows.insert(m_rangeRows.end(), rows, m_rangeRow);
        m_row += rows;
        m_left -= rows;
        if (!NextRange()) break;
    }
    const auto count = static_cast<unsigned>(m_rangeRows.size());
    for (const RefCntPtr<Column>& column : m_tableColumns) {
        if (column->Seek(m_table->GetStart() + first, count) < count) {
            throw QVE_RangeError(status::IndexJoin_Next, "IndexJoin::Next: short column " + narrow(column->GetName()));
        }
    }
    m_shown.PickOuter(count, m_rangeRows.data());
    m_cursor.store(m_previousCursor + count, std::memory_order_relaxed);
    return SetPage(count);
}

}  // namespace qve
