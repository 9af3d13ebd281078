#include "algebra/LeafTable.h"

#include <algorithm>
#include <vector>

#include "algebra/OperatorVisitor.h"
#include "algebra/status.h"
#include "primitives/primitive.h"
#include "storage/Column.h"
#include "storage/Database.h"
#include "storage/DatabaseSchema.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

namespace {

ColumnMap Unloaded(const auto& names) {
    ColumnMap columns;
    columns.reserve(names.size());
    for (const std::wstring& name : names) columns.emplace(name, nullptr);
    return columns;
}

}  // namespace

LeafTable::LeafTable(DatabaseSchema& schema, std::wstring name, const ColumnNames& names)
    : m_database(schema.GetDatabase()), m_schema(&schema), m_name(std::move(name)), m_columns(Unloaded(names)) {}

LeafTable::LeafTable(DatabaseSchema& schema, std::wstring name)
    : m_database(schema.GetDatabase()),
      m_schema(&schema),
      m_name(std::move(name)),
      m_columns(Unloaded(schema.GetColumnNames(m_name))) {}

LeafTable::LeafTable(std::wstring name, ColumnMap columns)
    : m_schema(nullptr), m_name(std::move(name)), m_columns(std::move(columns)) {}

LeafTable::~LeafTable() = default;

void LeafTable::Accept(OperatorVisitor& visitor) {
    visitor.VisitLeafTable(*this);
}

ColumnNames LeafTable::GetColumnNames() const {
    ColumnNames names;
    names.reserve(m_columns.size());
    for (const auto& entry : m_columns) names.insert(names.end(), entry.first);
    return names;
}

bool LeafTable::HasColumn(const std::wstring& name) const {
    return name == Column::nameRank || m_columns.contains(name);
}

RefCntPtr<Column> LeafTable::GetColumn(const std::wstring& name) const {
    if (name == Column::nameRank) {
        if (!m_rank) {
            auto rank = MakeRef<Column>(RankProperies(), MakeRef<TempFileDataStream>());
            rank->Mark(CountRows(), m_start);
            m_rank = std::move(rank);
        }
        return m_rank;
    }
    const auto found = m_columns.find(name);
    if (found == m_columns.end()) throw QVE_OutOfRange(status::LeafTable_GetColumn, "LeafTable::GetColumn");
    if (!found->second) found->second = m_schema->LoadColumn(m_name, name);
    return found->second;
}

unsigned LeafTable::GetColumnCount() const {
    return static_cast<unsigned>(m_columns.size());
}

RefCntPtr<Column> LeafTable::DescribeColumn(const std::wstring& name) const {
    if (name == Column::nameRank) return MakeRef<Column>(RankProperies());
    const auto found = m_columns.find(name);
    if (found == m_columns.end()) throw QVE_OutOfRange(status::LeafTable_DescribeColumn, "LeafTable::DescribeColumn");
    if (found->second) return found->second;
    return MakeRef<Column>(m_schema->DescribeColumn(m_name, name));
}

uint64_t LeafTable::GetStart() const {
    return m_start;
}

uint64_t LeafTable::GetCount() const {
    const uint64_t count = m_count.load(std::memory_order_relaxed);
    return count == unset ? 0 : count;
}

uint64_t LeafTable::CountRows() const {
    if (m_count.load(std::memory_order_relaxed) == unset) {
        uint64_t count = 0;
        const auto first = std::find_if(m_columns.begin(), m_columns.end(),
                                        [](const auto& entry) { return entry.first != Column::nameRank; });
        if (first != m_columns.end()) {
            count = GetColumn(first->first)->GetCount() - m_start;
        } else if (m_schema) {  // rows may be wanted without any column, to be counted
            const std::vector<std::wstring> names = m_schema->GetColumnNames(m_name);
            if (!names.empty()) count = m_schema->LoadColumn(m_name, names.front())->GetCount() - m_start;
        }
        m_count.store(count, std::memory_order_relaxed);
    }
    return m_count.load(std::memory_order_relaxed);
}

// A column may be longer than the one that was counted, which then was cut.
uint64_t LeafTable::Build(unsigned) {
    const uint64_t count = CountRows();
    for (const auto& [name, column] : m_columns) {
        if (!column || !column->GetData() || column->GetCount() <= m_start + count) continue;
        throw QVE_RangeError(status::LeafTable_Build, "LeafTable::Build: Mismatched row counts: Table has " +
                                                          std::to_string(count) + " rows: Column: [" + narrow(name) +
                                                          "] has " + std::to_string(column->GetCount() - m_start) +
                                                          " rows");
    }
    return count;
}

usrprops LeafTable::RankProperies() {
    usrprops properties = primitive::primitive_props(L"oid");
    properties.set(usrpropkey::name, Column::nameRank);
    properties.set(usrpropkey::min_value, 0);
    properties.set(usrpropkey::dense, 0);
    properties.set(usrpropkey::unique, true);
    properties.set(usrpropkey::primary_key, true);
    properties.set(usrpropkey::ordered, L"asc");
    properties.set(usrpropkey::not_null, true);
    properties.set(usrpropkey::generated_by, L"affine");
    return properties;
}

}  // namespace qve
