#include "algebra/TableSorter.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>

#include "algebra/OperatorProgressCallback.h"
#include "algebra/SortKeys.h"
#include "algebra/WholeColumn.h"
#include "algebra/adopt_cells.h"
#include "algebra/radix_sort.h"
#include "algebra/sort_word.h"
#include "algebra/status.h"
#include "primitives/column_kernels.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"
#include "telemetry/LogScopeTime.h"
#include "vql/syntax/VQLEvaluatorSettings.h"

namespace qve {

namespace {

// Rows that are moved between two looks at the cancelled flag.
constexpr unsigned blockRows = 1u << 16;
// Runs of no more rows are sorted by comparing.
constexpr uint64_t fewRows = 24;

const wchar_t* SenseName(bool descending) {
    return descending ? L"desc" : L"asc";
}

[[noreturn]] void ThrowShort(const Column& column) {
    throw QVE_RangeError(status::TableSorter_Rows, "TableSorter: short column " + narrow(column.GetName()));
}

// Whether the table is sorted by this column before all others.
bool IsPrimarySort(const Column& column, bool descending) {
    const usrprops& properties = column.GetProperties();
    if (properties.text(usrpropkey::ordered) == SenseName(descending)) return true;
    return properties.text(usrpropkey::sort_sense) == SenseName(descending) &&
           properties.has(usrpropkey::sort_position) && column.GetSizeProperty(usrpropkey::sort_position) == 0;
}

}  // namespace

bool TableSorter::s_useRadixSorting = true;

TableSorter::TableSorter(RefCntPtr<Table> table, std::vector<Namespace::SortSpec> specs,
                         RefCntPtr<ProgressCallback> progress)
    : m_table(std::move(table)), m_specs(std::move(specs)), m_progress(std::move(progress)) {
    if (!m_table) throw QVE_InvalidArgument(status::TableSorter_table, "TableSorter::m_table");
}
TableSorter::~TableSorter() = default;

uint64_t TableSorter::GetMergeCount(uint64_t width) {
    return DataStream::s_maxlimit / width;
}

void TableSorter::CheckCancelled() const {
    OperatorProgressCallback::Check(m_progress.get());
}

bool TableSorter::Sort(uint64_t limit) {
    const uint64_t rows = m_table->GetCount();
    m_count = std::min(rows, limit);
    m_permutation.clear();
    if (m_specs.empty() || rows < 2 || m_count == 0 || IsSorted()) return false;
    if (rows > std::numeric_limits<unsigned>::max()) {
        throw QVE_RangeError(status::TableSorter_Rows, "TableSorter: too many rows: " + std::to_string(rows));
    }
    if (RadixSort()) return true;

    const LogScopeTime time("TableSorter::Sort", 1.0, rows);
    const std::vector<Namespace::SortSpec> specs = m_count < rows ? m_specs : GetDecidingSpecs();
    if (VQLEvaluatorSettings::GetDefaultDescribeExecution()) {
        LogEntry() << "SORT by " << specs.size() << " of " << m_specs.size() << " keys, radix";
    }
    SortKeys keys(*m_table, specs, m_progress.get());
    m_permutation.resize(rows);
    if (!keys.HasChunk(0)) {
        // All rows are equal.
        m_permutation.clear();
        return false;
    }
    if (m_count == rows && keys.HasChunk(1)) {
        SortWide(keys);
        return true;
    }
    m_items.resize(rows);
    keys.FillChunk(0, nullptr, rows, m_items.data());
    uint64_t candidates = rows;
    if (m_count < rows) {
        // Only what may come before the limit is sorted at all.
        const uint64_t last = radix_select(rows, m_items.data(), m_count - 1, m_progress.get());
        candidates = 0;
        for (uint64_t block = 0; block < rows; block += blockRows) {
            CheckCancelled();
            for (uint64_t i = block, end = std::min<uint64_t>(rows, block + blockRows); i < end; ++i) {
                m_items[candidates] = m_items[i];
                candidates += m_items[i] >> SortKeys::chunkBits <= last;
            }
        }
    }
    for (uint64_t i = 0; i < candidates; ++i) m_permutation[i] = static_cast<unsigned>(m_items[i]);
    m_permutation.resize(candidates);
    m_scratch.resize(candidates);
    SortRows(keys, 0, candidates, 0);
    m_permutation.resize(m_count);
    ReleaseItems();
    return true;
}

// Rows that carry the beginning of their keys with them: nothing is looked up while they are sorted, so that it matters
// little whether all of them stay in memory.
void TableSorter::SortWide(SortKeys& keys) {
    const uint64_t rows = m_count;
    dense_vector<wide_item> items(rows);
    keys.FillWide(rows, items.data());
    const bool complete = !keys.HasChunk(SortKeys::wideChunks);
    if (complete) keys.Release();
    dense_vector<wide_item> scratch(rows);
    radix_sort(rows, items.data(), scratch.data(), m_progress.get());
    dense_vector<wide_item>().swap(scratch);
    for (uint64_t block = 0; block < rows; block += blockRows) {
        CheckCancelled();
        const uint64_t last = std::min<uint64_t>(rows, block + blockRows);
        for (uint64_t i = block; i < last; ++i) m_permutation[i] = static_cast<unsigned>(items[i].low);
    }
    if (complete) return;
    const auto key = [&items](uint64_t place) { return std::pair(items[place].high, items[place].low >> 32); };
    m_items.resize(rows);
    m_scratch.resize(rows);
    for (uint64_t begin = 0; begin < rows;) {
        uint64_t end = begin + 1;
        while (end < rows && key(end) == key(begin)) ++end;
        SortRows(keys, begin, end, SortKeys::wideChunks);
        begin = end;
    }
    ReleaseItems();
}

void TableSorter::ReleaseItems() {
    // An assignment of nothing would keep the memory.
    dense_vector<uint64_t>().swap(m_items);
    dense_vector<uint64_t>().swap(m_scratch);
}

// Sorts the rows at the places `first` to `last`, which are equal in all chunks before this one.
void TableSorter::SortRows(SortKeys& keys, uint64_t first, uint64_t last, unsigned chunk) {
    if (last - first < 2 || first >= m_count || !keys.HasChunk(chunk)) return;
    if (last - first <= fewRows) return SortFew(keys, first, last);
    keys.FillChunk(chunk, m_permutation.data() + first, last - first, m_items.data() + first);
    radix_sort(last - first, m_items.data() + first, m_scratch.data() + first, m_progress.get());
    for (uint64_t i = first; i < last; ++i) m_permutation[i] = static_cast<unsigned>(m_items[i]);
    if (!keys.HasChunk(chunk + 1)) return;
    SortRuns(keys, first, last, chunk);
}

// Sorts the runs of rows, at the places `first` to `last`, that are equal up to the chunk, which m_items holds. The
// next chunk of short runs is fetched for all of them together, so that their rows are not waited for one by one.
void TableSorter::SortRuns(SortKeys& keys, uint64_t first, uint64_t last, unsigned chunk) {
    const auto value = [this](uint64_t place) { return m_items[place] >> SortKeys::chunkBits; };
    uint64_t* const next = m_scratch.data();
    keys.FillChunk(chunk + 1, m_permutation.data() + first, last - first, next + first);
    const bool more = keys.HasChunk(chunk + 2);
    uint64_t checked = first;
    for (uint64_t begin = first; begin < last;) {
        if (begin - checked > blockRows) {
            CheckCancelled();
            checked = begin;
        }
        uint64_t end = begin + 1;
        while (end < last && value(end) == value(begin)) ++end;
        if (end - begin > fewRows) {
            SortRows(keys, begin, end, chunk + 1);
        } else if (end - begin > 1 && begin < m_count) {
            // An item holds its row too: rows that are equal stay in their order.
            std::sort(next + begin, next + end);
            for (uint64_t i = begin; i < end; ++i) m_permutation[i] = static_cast<unsigned>(next[i]);
            for (uint64_t from = begin; more && from < end;) {
                uint64_t to = from + 1;
                while (to < end && next[to] >> SortKeys::chunkBits == next[from] >> SortKeys::chunkBits) ++to;
                SortFew(keys, from, to);
                from = to;
            }
        }
        begin = end;
    }
}

void TableSorter::SortFew(SortKeys& keys, uint64_t first, uint64_t last) {
    for (uint64_t i = first + 1; i < last; ++i) {
        const unsigned row = m_permutation[i];
        uint64_t place = i;
        for (; place > first && keys.Less(row, m_permutation[place - 1]); --place) {
            m_permutation[place] = m_permutation[place - 1];
        }
        m_permutation[place] = row;
    }
}

// By what the columns say: in the order of all specs, or in that of a first one that leaves nothing to the others.
bool TableSorter::IsSorted() const {
    const RefCntPtr<Column> primary = m_table->DescribeColumn(m_specs.front().name);
    const bool unique = primary->HasProperty(usrpropkey::unique) && primary->HasProperty(usrpropkey::not_null);
    if ((m_specs.size() == 1 || unique) && primary->HasProperty(usrpropkey::not_null) &&
        IsPrimarySort(*primary, m_specs.front().descending)) {
        return true;
    }
    for (size_t i = 0; i < m_specs.size(); ++i) {
        const RefCntPtr<Column> column = m_table->DescribeColumn(m_specs[i].name);
        if (!column->HasProperty(usrpropkey::sort_position) ||
            column->GetSizeProperty(usrpropkey::sort_position) != i ||
            column->GetProperties().text(usrpropkey::sort_sense) != SenseName(m_specs[i].descending)) {
            return false;
        }
    }
    return true;
}

// The specs without those that change nothing: rows that are equal in what comes before keep their order, so a column
// that ascends or descends with the rows as its spec wants it is sorted by itself; and behind one without equal values,
// no further one counts.
std::vector<Namespace::SortSpec> TableSorter::GetDecidingSpecs() const {
    for (size_t i = 0; i < m_specs.size(); ++i) {
        const RefCntPtr<Column> column = m_table->DescribeColumn(m_specs[i].name);
        if (!column->HasProperty(usrpropkey::not_null)) continue;
        const bool unique = column->HasProperty(usrpropkey::unique);
        const bool inOrder =
            i > 0 && column->GetProperties().text(usrpropkey::ordered) == SenseName(m_specs[i].descending);
        if (inOrder && (unique || i + 1 == m_specs.size()))
            return {m_specs.begin(), m_specs.begin() + static_cast<ptrdiff_t>(i)};
        if (unique) return {m_specs.begin(), m_specs.begin() + static_cast<ptrdiff_t>(i) + 1};
    }
    return m_specs;
}

bool TableSorter::IsRadixSortable() const {
    if (!s_useRadixSorting || m_specs.size() != 1 || m_specs.front().descending) return false;
    const RefCntPtr<Column> key = m_table->DescribeColumn(m_specs.front().name);
    return !key->IsCompressed() && key->HasProperty(usrpropkey::unique) && key->HasProperty(usrpropkey::dense) &&
           !IsPrimarySort(*key, false);
}

// The keys are the numbers of the places, from some first one on. That is checked, as only the properties say so.
bool TableSorter::RadixSort() {
    if (!IsRadixSortable()) return false;
    const uint64_t rows = m_table->GetCount();
    const RefCntPtr<Column> key = m_table->GetColumn(m_specs.front().name);
    const WholeColumn cells(*key, m_table->GetStart(), rows, m_progress.get());
    constexpr unsigned empty = ~0u;
    dense_vector<unsigned> places(rows, empty);
    bool permuted = true;
    const bool known = with_atom(key->GetPrimitiveType(usrpropkey::compression), [&](auto tag) {
        using T = typename decltype(tag)::type;
        const T* values = cells.GetInput().values<T>();
        uint64_t low = ~uint64_t{0};
        for (uint64_t row = 0; row < rows; ++row) {
            if (row % blockRows == 0) CheckCancelled();
            low = std::min(low, sort_word(values[row]));
        }
        for (uint64_t row = 0; row < rows && permuted; ++row) {
            if (row % blockRows == 0) CheckCancelled();
            const uint64_t place = sort_word(values[row]) - low;
            permuted = place < rows && places[place] == empty;
            if (permuted) places[place] = static_cast<unsigned>(row);
        }
    });
    if (!known || !permuted) return false;
    places.resize(m_count);
    m_permutation = std::move(places);
    return true;
}

void TableSorter::ReorderColumn(Column& source, Column& target) const {
    adopt_cells(target, source);
    if (source.GetStorageName() == Column::storageVal) {
        source.Seek(0, 1);
        target.Append(1, source.GetInput(), nullptr, false);
        return;
    }
    if (m_permutation.empty()) return CopyColumn(source, target);

    const WholeColumn cells(source, m_table->GetStart(), m_table->GetCount(), m_progress.get());
    const binary_func fetch = map_fetch_ulng_col_type_col(source.GetTokenSize());
    for (uint64_t row = 0; row < m_count; row += blockRows) {
        CheckCancelled();
        const auto rows = static_cast<unsigned>(std::min<uint64_t>(blockRows, m_count - row));
        target.Extend(rows);
        fetch(rows, target.GetOutput(),
              input_column{m_permutation.data() + row, nullptr, sizeof(unsigned), rows, column_flags::not_null},
              cells.GetInput(), nullptr);
    }
    target.Seek(0, 0);
}

void TableSorter::CopyColumn(Column& source, Column& target) const {
    for (uint64_t row = 0; row < m_count;) {
        CheckCancelled();
        const uint64_t wanted = std::min<uint64_t>(blockRows, m_count - row);
        const uint64_t rows = std::min(source.Seek(m_table->GetStart() + row, wanted), wanted);
        if (rows == 0) ThrowShort(source);
        target.Extend(rows);
        std::memcpy(target.GetOutput().data, source.GetInput().data, rows * source.GetTokenSize());
        row += rows;
    }
    target.Seek(0, 0);
}

void TableSorter::UpdateSortProperties(Column& column, const std::vector<Namespace::SortSpec>& specs) {
    for (const usrpropkey key : {usrpropkey::ordered, usrpropkey::sort_position, usrpropkey::sort_sense}) {
        column.ClearProperty(key);
    }
    for (size_t i = 0; i < specs.size(); ++i) {
        if (specs[i].name != column.GetName()) continue;
        column.SetProperty(usrpropkey::sort_position, std::to_wstring(i));
        column.SetProperty(usrpropkey::sort_sense, SenseName(specs[i].descending));
        if (i == 0) column.SetProperty(usrpropkey::ordered, SenseName(specs[i].descending));
        return;
    }
}

}  // namespace qve
