#include "algebra/IndexTable.h"

#include <cstring>

#include "algebra/OperatorVisitor.h"
#include "algebra/adopt_cells.h"
#include "algebra/status.h"
#include "primitives/primitive.h"
#include "storage/Column.h"
#include "storage/RunLengthDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

namespace {

// What the catalog says of the rows of a column and does not hold of its runs.
constexpr usrpropkey invalidated[] = {usrpropkey::encoding,   usrpropkey::dense,         usrpropkey::unique,
                                      usrpropkey::sum_value,  usrpropkey::sum2_value,    usrpropkey::count_value,
                                      usrpropkey::sort_sense, usrpropkey::sort_position, usrpropkey::generated_by};

// Runs that are gathered before they are written.
constexpr size_t blockRuns = 4096;

void Write(Column& column, const void* cells, unsigned count) {
    column.Extend(count);
    std::memcpy(column.GetOutput().data, cells, size_t{count} * column.GetTokenSize());
}

}  // namespace

IndexTable::IndexTable(RefCntPtr<Table> table, std::wstring name)
    : m_table(std::move(table)),
      m_name(std::move(name)),
      m_columns{{m_name, nullptr}, {m_name + Column::nameStart, nullptr}, {m_name + Column::nameCount, nullptr}} {}

IndexTable::~IndexTable() = default;

void IndexTable::Accept(OperatorVisitor& visitor) {
    visitor.VisitIndexTable(*this);
}

ColumnNames IndexTable::GetColumnNames() const {
    ColumnNames names;
    for (const auto& entry : m_columns) names.insert(names.end(), entry.first);
    return names;
}

bool IndexTable::HasColumn(const std::wstring& name) const {
    return m_columns.contains(name);
}

RefCntPtr<Column> IndexTable::LookupColumn(const std::wstring& name) const {
    if (name == m_name) {
        usrprops properties = m_table->DescribeColumn(m_name)->GetProperties();
        for (const usrpropkey key : invalidated) properties.erase(key);
        return MakeRef<Column>(std::move(properties));
    }
    usrprops properties = primitive::primitive_props(L"bigint");
    properties.set(usrpropkey::name, name);
    properties.set(usrpropkey::not_null, true);
    return MakeRef<Column>(std::move(properties));
}

RefCntPtr<Column> IndexTable::GetColumn(const std::wstring& name) const {
    const auto found = m_columns.find(name);
    if (found == m_columns.end()) {
        throw QVE_OutOfRange(status::IndexTable_GetColumn, "IndexTable::GetColumn: " + narrow(name));
    }
    if (!found->second) found->second = LookupColumn(name);
    return found->second;
}

unsigned IndexTable::GetColumnCount() const {
    return static_cast<unsigned>(m_columns.size());
}

RefCntPtr<Column> IndexTable::DescribeColumn(const std::wstring& name) const {
    const auto found = m_columns.find(name);
    if (found == m_columns.end()) {
        throw QVE_OutOfRange(status::IndexTable_DescribeColumn, "IndexTable::DescribeColumn: " + narrow(name));
    }
    return found->second ? found->second : LookupColumn(name);
}

uint64_t IndexTable::GetStart() const {
    return 0;
}

uint64_t IndexTable::GetCount() const {
    return m_count;
}

uint64_t IndexTable::Build(unsigned pageSize) {
    if (m_built) return m_count;
    m_table->Build(pageSize);
    BuildIndex();
    m_built = true;
    return m_count;
}

// The runs of the table's rows; the table may be a part of what its columns hold. A run that the encoder had to end, as
// it was too long for its field, goes on in the next one.
void IndexTable::BuildIndex() {
    const RefCntPtr<Column> indexed = m_table->GetColumn(m_name);
    const RefCntPtr<Column> values = GetColumn(m_name);
    const RefCntPtr<Column> starts = GetColumn(m_name + Column::nameStart);
    const RefCntPtr<Column> counts = GetColumn(m_name + Column::nameCount);
    for (const RefCntPtr<Column>& column : {values, starts, counts}) adopt_cells(*column, *indexed);
    const uint64_t first = m_table->GetStart();
    const uint64_t end = first + m_table->GetCount();
    if (first == end) return;
    const auto stream = DynamicPtrCast<RunLengthDataStream>(indexed->GetData());
    if (!stream) {
        throw QVE_RuntimeError(status::IndexTable_BuildIndex,
                               "IndexTable::BuildIndex: Column not indexed: " + narrow(m_name));
    }

    const unsigned width = values->GetTokenSize();
    std::vector<char> cells;
    std::vector<long long> from;
    std::vector<long long> rows;
    const auto flush = [&] {
        const auto runs = static_cast<unsigned>(from.size());
        if (runs == 0) return;
        Write(*values, cells.data(), runs);
        Write(*starts, from.data(), runs);
        Write(*counts, rows.data(), runs);
        m_count += runs;
        cells.clear();
        from.clear();
        rows.clear();
    };
    int64_t last = 0;
    for (auto run = stream->ReadUntil(first); run.count > 0 && run.row < end; run = stream->ReadNextRun()) {
        const uint64_t count = std::min(run.row + run.count, end) - run.row;
        if (!from.empty() && run.value == last) {
            rows.back() += static_cast<long long>(count);
            continue;
        }
        if (from.size() == blockRuns) flush();
        cells.insert(cells.end(), reinterpret_cast<const char*>(&run.value),
                     reinterpret_cast<const char*>(&run.value) + width);
        from.push_back(static_cast<long long>(run.row - first));
        rows.push_back(static_cast<long long>(count));
        last = run.value;
    }
    flush();
    for (const RefCntPtr<Column>& column : {values, starts, counts}) column->Seek(0, 0);
}

}  // namespace qve
