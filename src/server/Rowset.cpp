#include "server/Rowset.h"

#include <algorithm>
#include <utility>

#include "server/column_properties.h"
#include "server/protocol/QVE_ValueArray.h"
#include "server/status.h"
#include "system/QuillonException.h"

namespace qve::Server {
namespace {

/// Values that are rendered together: few enough to stay in cache until they are written.
constexpr unsigned s_valuesPerBatch = 8192;

}  // namespace

Rowset::Rowset(RefCntPtr<DataFlow> plan, unsigned pageSize, std::shared_ptr<const void> keepAlive)
    : m_keepAlive(std::move(keepAlive)), m_plan(std::move(plan)), m_pageSize(pageSize) {
    // The plan knows its columns only once it has begun.
    const bool hasRows = NextPage();
    MappedFile::CheckCuts(m_cuts);
    std::vector<RefCntPtr<Column>> columns;
    std::vector<std::pair<uint64_t, std::wstring>> names;
    for (const std::wstring& name : m_plan->GetColumnNames()) {
        names.emplace_back(m_plan->GetColumn(name)->GetSizeProperty(usrpropkey::ordinal), name);
    }
    std::stable_sort(names.begin(), names.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [ordinal, name] : names) {
        m_formatters.push_back(Formatter::Make(name, m_plan->GetColumn(name)));
        if (hasRows) m_formatters.back()->RefreshInput();
    }
}

Rowset::~Rowset() = default;

const Formatter& Rowset::GetFormatter(unsigned column) const {
    if (column >= m_formatters.size()) throw QVE_RangeError(status::Rowset_GetColumn, "bad column number");
    return *m_formatters[column];
}

const std::wstring& Rowset::GetColumnName(unsigned column) const {
    return GetFormatter(column).GetName();
}

QVE_PropertyList Rowset::GetColumnProperties(unsigned column) const {
    const Formatter& formatter = GetFormatter(column);
    return ExportColumnProperties(formatter.GetName(), formatter.GetDatatype(), formatter.GetColumn().GetProperties());
}

QVE_PropertyList Rowset::GetProperties() const {
    return {};
}

bool Rowset::NextPage() {
    m_row = m_batchStart = m_batchEnd = 0;
    m_selectionCount = 0;
    do {
        if (m_plan->Next(m_pageSize) == 0) return false;
    } while (m_plan->GetSelectionCount() == 0);
    m_selection = m_plan->GetSelection();
    m_selectionCount = m_plan->GetSelectionCount();
    for (const RefCntPtr<Formatter>& formatter : m_formatters) formatter->RefreshInput();
    return true;
}

void Rowset::RenderBatch() {
    const std::size_t columns = m_formatters.size();
    const auto rows = static_cast<unsigned>(std::max<std::size_t>(1, s_valuesPerBatch / columns));
    m_batchStart = m_row;
    m_batchEnd = m_row + std::min(rows, m_selectionCount - m_row);
    const RowBatch batch{m_batchEnd - m_batchStart, m_selection ? m_selection + m_batchStart : nullptr, m_batchStart};
    m_values.resize(batch.count * columns);
    for (std::size_t column = 0; column < columns; ++column) {
        m_formatters[column]->Render(batch, m_values.data() + column, columns);
    }
}

bool Rowset::GetValues(QVE_ValueArray& array) {
    const std::size_t columns = m_formatters.size();
    if (columns == 0) m_selectionCount = 0;  // rows without values cannot be told apart from no rows
    while (HasMoreValues() && array.GetSizeBytes() < s_replySize) {
        if (m_row >= m_batchEnd) RenderBatch();
        const QVE_Value* row = m_values.data() + (m_row - m_batchStart) * columns;
        while (m_row < m_batchEnd && array.GetSizeBytes() < s_replySize) {
            array.WriteValues(columns, row);
            row += columns;
            ++m_row;
        }
        if (m_row == m_selectionCount) NextPage();
    }
    MappedFile::CheckCuts(m_cuts);
    return HasMoreValues();
}

}  // namespace qve::Server
