#include "algebra/OrdAggr.h"

#include <algorithm>
#include <numeric>

#include "algebra/OperatorVisitor.h"
#include "algebra/group_key_properties.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "telemetry/LogEntry.h"
#include "vql/syntax/VQLEvaluatorSettings.h"

namespace qve {
namespace {

// Rows for each group above which groups are folded one by one, with kernels that keep the accumulator in a register.
constexpr unsigned longRun = 64;

bool IsSingle(const Column& column) {
    return column.GetStorageName() == Column::storageVal;
}

ColumnNames OutputNames(const ColumnNames& keys, const std::vector<RefCntPtr<Exp>>& aggregates) {
    ColumnNames names = keys;
    for (const RefCntPtr<Exp>& aggregate : aggregates) names.insert(aggregate->GetName());
    return names;
}

}  // namespace

OrdAggr::OrdAggr(RefCntPtr<DataFlow> source, ColumnNames keyNames, std::vector<RefCntPtr<Exp>> aggregates)
    : DataFlow(source, OutputNames(keyNames, aggregates)),
      m_keyNames(std::move(keyNames)),
      m_aggregates(std::move(aggregates)) {}
OrdAggr::~OrdAggr() = default;

bool OrdAggr::CanCompare(const Namespace& source, const ColumnNames& keyNames) {
    return std::all_of(keyNames.begin(), keyNames.end(), [&source](const std::wstring& key) {
        const RefCntPtr<Column> column = source.DescribeColumn(key);
        if (column->IsCompressed()) return column->HasProperty(usrpropkey::distinct);
        return column->GetDataType() != DataType::real && column->GetTokenSize() <= 8;
    });
}

void OrdAggr::Accept(OperatorVisitor& visitor) {
    visitor.VisitOrdAggr(*this);
}

Exp* OrdAggr::FindAggregate(const std::wstring& name) const {
    for (const RefCntPtr<Exp>& aggregate : m_aggregates) {
        if (aggregate->GetName() == name) return aggregate.get();
    }
    return nullptr;
}

RefCntPtr<Column> OrdAggr::LoadColumn(const std::wstring& name) const {
    return LookupColumn(name);
}

RefCntPtr<Column> OrdAggr::LookupColumn(const std::wstring& name) const {
    if (Exp* aggregate = FindAggregate(name)) return aggregate->AllocateColumn(m_source.get());
    if (!m_keyNames.contains(name)) throw QVE_OutOfRange(status::OrdAggr_LookupColumn, "OrdAggr::LookupColumn");
    return MakeRef<Column>(group_key_properties(*m_source, m_keyNames, name, true));
}

uint64_t OrdAggr::GetCursor() const {
    return m_blockStart < m_blockCount ? m_source->GetPreviousCursor() + m_blockStart : m_source->GetCursor();
}
uint64_t OrdAggr::GetPreviousCursor() const {
    return m_previousCursor;
}

void OrdAggr::ResetCursor() {
    DataFlow::ResetCursor();
    m_blockStart = m_blockCount = 0;
    m_previousCursor = 0;
    m_changes.Reset();
    m_ended = false;
}

void OrdAggr::Bind() {
    for (const std::wstring& key : m_keyNames) m_keys.emplace_back(m_source->GetColumn(key), GetColumn(key)).Bind();
    for (const RefCntPtr<Exp>& aggregate : m_aggregates) GetColumn(aggregate->GetName());
    LoadCheckers();
    m_bound = true;
    if (VQLEvaluatorSettings::GetDefaultDescribeExecution()) LogEntry() << "AGGR by sorted keys";
}

void OrdAggr::LoadCheckers() {
    for (const CellCopier& key : m_keys) {
        const RefCntPtr<Column>& column = key.GetFrom();
        if (IsSingle(*column)) continue;
        if (!m_changes.AddKey(*column)) {
            throw QVE_InvalidArgument(status::OrdAggr_LoadCheckers, "OrdAggr::LoadCheckers");
        }
        m_checked.push_back(column);
    }
}

const unsigned* OrdAggr::GetBlockRows() const {
    const unsigned* selection = m_source->GetSelection();
    return selection ? selection : m_rowNumbers.data();
}

bool OrdAggr::NextBlock(unsigned pageSize) {
    unsigned extent = 0;
    do {
        extent = m_source->Next(pageSize);
        if (extent == 0) return false;
    } while (m_source->GetSelectionCount() == 0);
    if (m_rowNumbers.size() < extent) {
        m_rowNumbers.resize(extent);
        std::iota(m_rowNumbers.begin(), m_rowNumbers.end(), 0);
        m_groupIds.resize(extent);
    }
    m_blockStart = 0;
    m_blockCount = m_source->GetSelectionCount();
    if (!m_bound) Bind();
    MarkHeads(extent);
    for (const RefCntPtr<Exp>& aggregate : m_aggregates)
        aggregate->Evaluate(m_blockCount, extent, m_source->GetSelection(), m_source.get());
    return true;
}

void OrdAggr::MarkHeads(unsigned extent) {
    m_checkedPages.clear();
    for (const RefCntPtr<Column>& column : m_checked) m_checkedPages.push_back(column->GetInput());
    m_heads = m_changes.Mark(m_blockCount, extent, m_source->GetSelection(), m_checkedPages);
}

unsigned OrdAggr::Next(unsigned pageSize) {
    if (m_ended) return SetPage(0);
    m_previousCursor = GetCursor();
    m_groups = 0;
    if (m_bound) {
        for (const auto& [name, column] : m_columns) column->Resize(0);
    }
    while (m_groups <= pageSize) {
        if (m_blockStart == m_blockCount && !NextBlock(pageSize)) {
            m_ended = true;
            break;
        }
        ConsumeBlock(pageSize);
        if (m_blockStart < m_blockCount) break;  // the page is full and the next row begins a group
    }
    if (m_groups == 0) return SetPage(0);
    for (const auto& [name, column] : m_columns) column->Seek(0, m_groups);
    return SetPage(m_groups);
}

void OrdAggr::ConsumeBlock(unsigned pageSize) {
    const unsigned* rows = GetBlockRows();
    const unsigned begin = m_blockStart;
    const unsigned firstGroup = m_groups;
    m_starts.clear();
    m_startRows.clear();
    unsigned group = m_groups - 1;  // wraps before the first group, which begins with the first row
    unsigned end = begin;
    for (; end < m_blockCount; ++end) {
        const unsigned row = rows[end];
        if (m_heads[row]) {
            if (group + 1 == pageSize) break;
            ++group;
            m_starts.push_back(end);
            m_startRows.push_back(row);
        }
        m_groupIds[row] = group;
    }
    m_groups = group + 1;
    m_blockStart = end;
    if (begin == end) return;
    const auto added = static_cast<unsigned>(m_starts.size());
    if (added > 0) {
        for (CellCopier& key : m_keys) key.Append(added, m_startRows.data());
        for (const RefCntPtr<Exp>& aggregate : m_aggregates) aggregate->GetColumn()->Append(added, false);
    }
    Fold(begin, end, firstGroup);
}

void OrdAggr::Fold(unsigned begin, unsigned end, unsigned firstGroup) {
    const unsigned* rows = GetBlockRows();
    for (const RefCntPtr<Exp>& aggregate : m_aggregates) aggregate->GetColumn()->Seek(0, m_groups);
    if (end - begin < longRun * (m_starts.size() + 1)) {
        const input_column groups{m_groupIds.data(), nullptr, sizeof(unsigned),
                                  static_cast<unsigned>(m_groupIds.size()), column_flags::not_null};
        for (const RefCntPtr<Exp>& aggregate : m_aggregates) aggregate->Aggregate(end - begin, groups, rows + begin);
        return;
    }
    // The rows before the first head belong to the group that was open.
    const bool continues = m_starts.empty() || m_starts[0] != begin;
    unsigned group = continues ? firstGroup - 1 : firstGroup;
    size_t next = continues ? 0 : 1;
    for (unsigned from = begin; from < end; ++group, ++next) {
        const unsigned to = next < m_starts.size() ? m_starts[next] : end;
        const input_column one{&group, nullptr, sizeof(unsigned), 1, column_flags::not_null | column_flags::constant};
        const bool wholePage = from == 0 && to == m_source->GetExtent();
        const unsigned* sel = wholePage ? m_source->GetSelection() : rows + from;
        for (const RefCntPtr<Exp>& aggregate : m_aggregates) aggregate->Aggregate(to - from, one, sel);
        from = to;
    }
}

}  // namespace qve
