#include "algebra/Order.h"

#include <algorithm>
#include <set>

#include "algebra/OperatorVisitor.h"
#include "algebra/PermutedDataStream.h"
#include "algebra/ProgressCallbackImpl.h"
#include "algebra/TableSorter.h"
#include "algebra/adopt_cells.h"
#include "algebra/status.h"
#include "primitives/primitive.h"
#include "storage/AffineDataStream.h"
#include "storage/Column.h"
#include "system/CancelScope.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogScopeTime.h"

namespace qve {

Order::Order(RefCntPtr<Table> source, std::vector<SortSpec> specs, std::vector<std::wstring> rankColumns,
             uint64_t limit)
    : m_source(std::move(source)),
      m_specs(std::move(specs)),
      m_rankColumns(std::move(rankColumns)),
      m_limit(limit),
      m_progress(MakeRef<ProgressCallbackImpl>()) {
    if (!m_source) throw QVE_InvalidArgument(status::Order_source, "Order::m_source");
    for (const std::wstring& name : m_source->GetColumnNames()) m_columns.emplace(name, nullptr);
    std::set<std::wstring> ranks;
    for (const std::wstring& rank : m_rankColumns) {
        if (rank.empty()) continue;
        if (!ranks.insert(rank).second) {
            throw QVE_LogicError(status::TableSorter_RankTwice,
                                 "TableSorter::TableSorter: Rank column multiply defined");
        }
        if (!m_columns.emplace(rank, nullptr).second) {
            throw QVE_LogicError(status::TableSorter_RankHides,
                                 "TableSorter::TableSorter: Rank column hides input column");
        }
    }
}
Order::~Order() = default;

void Order::Accept(OperatorVisitor& visitor) {
    visitor.VisitOrder(*this);
}

ColumnNames Order::GetColumnNames() const {
    ColumnNames names;
    for (const auto& [name, column] : m_columns) names.insert(names.end(), name);
    return names;
}

bool Order::HasColumn(const std::wstring& name) const {
    return m_columns.contains(name);
}

bool Order::IsRank(const std::wstring& name) const {
    return std::find(m_rankColumns.begin(), m_rankColumns.end(), name) != m_rankColumns.end();
}

RefCntPtr<Column> Order::GetColumn(const std::wstring& name) const {
    const auto found = m_columns.find(name);
    if (found == m_columns.end()) throw QVE_OutOfRange(status::Order_GetColumn, "Order::GetColumn: " + narrow(name));
    const std::lock_guard lock(m_mutex);
    if (!found->second) {
        const RefCntPtr<Column> column = LoadColumn(name);
        if (m_built) InitColumn(name, *column);
        found->second = column;
    }
    return found->second;
}

unsigned Order::GetColumnCount() const {
    return static_cast<unsigned>(m_columns.size());
}

RefCntPtr<Column> Order::DescribeColumn(const std::wstring& name) const {
    const auto found = m_columns.find(name);
    if (found == m_columns.end()) {
        throw QVE_OutOfRange(status::Order_DescribeColumn, "Order::DescribeColumn: " + narrow(name));
    }
    const std::lock_guard lock(m_mutex);
    if (found->second) return found->second;
    RefCntPtr<Column>& description = m_descriptions[name];
    if (!description) description = LoadColumn(name);
    return description;
}

uint64_t Order::GetStart() const {
    return 0;
}
uint64_t Order::GetCount() const {
    return m_count;
}

// A column with the properties that it has in the new order, and no streams.
RefCntPtr<Column> Order::LoadColumn(const std::wstring& name) const {
    if (IsRank(name)) {
        usrprops properties = primitive::primitive_props(L"bigint");
        properties.set(usrpropkey::name, name);
        properties.set(usrpropkey::not_null, true);
        properties.set(usrpropkey::dense, 0);
        properties.set(usrpropkey::ordered, L"asc");
        properties.set(usrpropkey::unique, true);
        return MakeRef<Column>(std::move(properties));
    }
    usrprops properties = m_source->DescribeColumn(name)->GetProperties();
    properties.erase(usrpropkey::encoding);
    if (m_limit != noLimit) {
        // Not all rows are left.
        for (const usrpropkey key : {usrpropkey::dense, usrpropkey::sum_value, usrpropkey::sum2_value,
                                     usrpropkey::count_value, usrpropkey::median_value}) {
            properties.erase(key);
        }
    }
    properties.set(usrpropkey::name, name);
    const auto column = MakeRef<Column>(std::move(properties));
    TableSorter::UpdateSortProperties(*column, m_specs);
    return column;
}

void Order::InitColumn(const std::wstring& name, Column& column) const {
    if (IsRank(name)) {
        column.SetData(AffineDataStream::MakeRowNumbers(m_count));
        return;
    }
    const RefCntPtr<Column> source = m_source->GetColumn(name);
    if (m_sorter->GetPermutation().empty() || source->GetStorageName() == Column::storageVal) {
        return m_sorter->ReorderColumn(*source, column);
    }
    adopt_cells(column, *source);
    column.SetData(MakeRef<PermutedDataStream>(
        MakeRef<PermutedDataStream::Cells>(source, m_source->GetStart(), m_source->GetCount(), m_sorter, m_progress)));
}

uint64_t Order::Build(unsigned pageSize) {
    if (m_built) return m_count;
    const CancelScope cancel(m_progress.get());
    m_source->Build(pageSize);
    const LogScopeTime time("Order::Build", 1.0);
    m_sorter = MakeRef<TableSorter>(m_source, m_specs, m_progress);
    m_sorter->Sort(m_limit);
    m_count = m_sorter->GetCount();
    const std::lock_guard lock(m_mutex);
    for (const auto& [name, column] : m_columns) {
        if (column) InitColumn(name, *column);
    }
    m_built = true;
    return m_count;
}

}  // namespace qve
