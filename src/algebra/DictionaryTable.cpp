#include "algebra/DictionaryTable.h"

#include <vector>

#include "algebra/OperatorVisitor.h"
#include "algebra/adopt_cells.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

namespace {

// What the catalog says of the rows of a column and does not hold of the entries of its dictionary.
constexpr usrpropkey invalidated[] = {usrpropkey::encoding,     usrpropkey::dense,      usrpropkey::ordered,
                                      usrpropkey::sum_value,    usrpropkey::sum2_value, usrpropkey::count_value,
                                      usrpropkey::median_value, usrpropkey::sort_sense, usrpropkey::sort_position,
                                      usrpropkey::generated_by, usrpropkey::primary_key};

// Tokens that are gathered before they are written.
constexpr size_t blockTokens = 4096;

bool IsArray(const Column& column) {
    return column.GetProperties().text(usrpropkey::compression) == L"array";
}

template <class T>
uint64_t WriteTokens(const usrheap& heap, DataStream& stream) {
    std::vector<T> block;
    uint64_t count = 0;
    const auto flush = [&] {
        stream.Append(block.data(), block.size() * sizeof(T));
        count += block.size();
        block.clear();
    };
    const unsigned long long end = heap.next();
    for (unsigned long long token = heap.first(); token < end; token = heap.after(token)) {
        block.push_back(static_cast<T>(token));
        if (block.size() == blockTokens) flush();
    }
    flush();
    return count;
}

}  // namespace

DictionaryTable::DictionaryTable(RefCntPtr<Table> table, std::wstring name)
    : m_table(std::move(table)), m_name(std::move(name)) {}

DictionaryTable::~DictionaryTable() = default;

void DictionaryTable::Accept(OperatorVisitor& visitor) {
    visitor.VisitDictionaryTable(*this);
}

ColumnNames DictionaryTable::GetColumnNames() const {
    return {m_name};
}

bool DictionaryTable::HasColumn(const std::wstring& name) const {
    return name == m_name;
}

RefCntPtr<Column> DictionaryTable::LookupColumn() const {
    const RefCntPtr<Column> source = m_table->DescribeColumn(m_name);
    usrprops properties;
    if (IsArray(*source)) {
        properties = source->GetType()->properties();
        properties.set(usrpropkey::name, m_name);
    } else {
        properties = source->GetProperties();
        for (const usrpropkey key : invalidated) properties.erase(key);
    }
    properties.set(usrpropkey::unique, true);
    properties.set(usrpropkey::not_null, true);
    return MakeRef<Column>(std::move(properties));
}

RefCntPtr<Column> DictionaryTable::GetColumn(const std::wstring& name) const {
    if (name != m_name) {
        throw QVE_OutOfRange(status::DictionaryTable_GetColumn, "DictionaryTable::GetColumn: " + narrow(name));
    }
    if (!m_column) m_column = LookupColumn();
    return m_column;
}

unsigned DictionaryTable::GetColumnCount() const {
    return 1;
}

RefCntPtr<Column> DictionaryTable::DescribeColumn(const std::wstring& name) const {
    if (name != m_name) {
        throw QVE_OutOfRange(status::DictionaryTable_DescribeColumn,
                             "DictionaryTable::DescribeColumn: " + narrow(name));
    }
    return m_column ? m_column : LookupColumn();
}

uint64_t DictionaryTable::GetStart() const {
    return 0;
}

uint64_t DictionaryTable::GetCount() const {
    return m_count;
}

uint64_t DictionaryTable::Build(unsigned pageSize) {
    if (m_built) return m_count;
    const RefCntPtr<Column> source = m_table->GetColumn(m_name);
    m_table->Build(pageSize);
    if (!source->IsCompressed()) {
        throw QVE_RuntimeError(status::DictionaryTable_Build,
                               "DictionaryTable::BuildTokenColumn: Not compressed.: " + narrow(m_name));
    }
    IsArray(*source) ? BuildArrayValues(*source) : BuildHeapTokens(*source);
    m_built = true;
    return m_count;
}

void DictionaryTable::BuildArrayValues(const Column& source) {
    const RefCntPtr<Column> entries = source.GetDictionaryColumn();
    const RefCntPtr<Column> column = GetColumn(m_name);
    column->SetData(entries->GetData() ? entries->GetData() : MakeRef<TempFileDataStream>());
    m_count = entries->GetCount();
    column->Seek(0, 0);
}

void DictionaryTable::BuildHeapTokens(const Column& source) {
    const RefCntPtr<Column> column = GetColumn(m_name);
    adopt_cells(*column, source);
    if (!source.GetHeap()) return;
    DataStream& stream = *column->GetData();
    switch (column->GetTokenSize()) {
        case 1:
            m_count = WriteTokens<uint8_t>(*source.GetHeap(), stream);
            break;
        case 2:
            m_count = WriteTokens<uint16_t>(*source.GetHeap(), stream);
            break;
        case 4:
            m_count = WriteTokens<uint32_t>(*source.GetHeap(), stream);
            break;
        case 8:
            m_count = WriteTokens<uint64_t>(*source.GetHeap(), stream);
            break;
        default:
            throw QVE_RuntimeError(status::DictionaryTable_BuildHeapTokens,
                                   "DictionaryTable::BuildHeapTokens: Bad token size.");
    }
    column->Seek(0, 0);
}

}  // namespace qve
