#include "algebra/FetchGrouping.h"

#include <algorithm>
#include <type_traits>

#include "algebra/ColumnExp.h"
#include "algebra/OperatorProgressCallback.h"
#include "algebra/PartitionExp.h"
#include "algebra/Scan.h"
#include "algebra/status.h"
#include "primitives/is_uniform.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

// The group of each row whose key lies within the range, else noGroup; the rows that are Known or not are listed.
template <bool Known, class T>
unsigned fetch_lookup(unsigned count, unsigned* list, unsigned* groups, const T* keys, const unsigned* sel, T base,
                      unsigned limit) {
    unsigned listed = 0;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned row = sel ? sel[i] : i;
        const T distance = keys[row] - base;
        const bool known = distance < limit;
        groups[row] = known ? static_cast<unsigned>(distance) : Grouping::noGroup;
        list[listed] = row;
        listed += known == Known;
    }
    return listed;
}

// Equal keys lie side by side.
template <class T>
unsigned fetch_insert(unsigned count, unsigned* inserts, unsigned* retries, const T* keys) {
    unsigned inserted = 0;
    unsigned retried = 0;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned row = retries[i];
        const bool next = inserted == 0 || keys[row] != keys[inserts[inserted - 1]];
        if (next) {
            inserts[inserted++] = row;
        } else {
            retries[retried++] = row;
        }
    }
    return inserted;
}

template <class F>
auto WithKeys(const input_column& hashes, int status, const char* text, F f) {
    switch (hashes.width) {
        case 1:
            return f(hashes.values<uint8_t>());
        case 2:
            return f(hashes.values<uint16_t>());
        case 4:
            return f(hashes.values<uint32_t>());
        case 8:
            return f(hashes.values<uint64_t>());
        default:
            throw QVE_InvalidArgument(status, text);
    }
}

bool IsWholeNumber(const Column& column) {
    switch (column.GetDataType()) {
        case DataType::integer:
        case DataType::index:
        case DataType::date:
            return !column.IsCompressed() && column.GetStorageName() == Column::storageCol;
        default:
            return false;
    }
}

// How many of the rows, the first of which is `row` of the table, hold `base` + their row number. The null of the type
// ends them: no position has it.
template <class T>
unsigned CountDense(unsigned count, const T* keys, T base, uint64_t row, T null) {
    unsigned dense = 0;
    while (dense < count && keys[dense] == static_cast<T>(base + (row + dense)) && keys[dense] != null) ++dense;
    return dense;
}

}  // namespace

FetchGrouping::FetchGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp)
    : ExpGrouping(semantics, std::move(probeExp), std::move(buildExp)) {}
FetchGrouping::~FetchGrouping() = default;

void FetchGrouping::Reset(unsigned size) {
    Grouping::Reset(size);
    m_base = 0;
    m_limit = 0;
}

unsigned FetchGrouping::Probe(unsigned count, unsigned* misses, output_column out, input_column hashes,
                              const unsigned* sel, Context*) {
    return WithKeys(hashes, status::FetchGrouping_Probe, "FetchGrouping::Probe", [&](const auto* keys) {
        using T = std::remove_const_t<std::remove_pointer_t<decltype(keys)>>;
        const T base = static_cast<T>(m_base);
        auto* groups = out.values<unsigned>();
        if (!sel && count > 0 && static_cast<T>(keys[0] - base) < m_limit && is_uniform(count, keys, sizeof(T))) {
            groups[0] = static_cast<T>(keys[0] - base);
            *out.flags |= column_flags::constant;
            return 0u;
        }
        return fetch_lookup<false>(count, misses, groups, keys, sel, base, m_limit);
    });
}

unsigned FetchGrouping::FindInserts(unsigned count, unsigned* inserts, unsigned* retries, input_column hashes) {
    return WithKeys(hashes, status::FetchGrouping_FindInserts, "FetchGrouping::FindInserts",
                    [&](const auto* keys) { return fetch_insert(count, inserts, retries, keys); });
}

void FetchGrouping::InsertHash(unsigned, unsigned group) {
    m_limit = std::max(m_limit, group + 1);
}

void FetchGrouping::InsertHashes(unsigned count, const unsigned*, input_column, unsigned first) {
    if (count > 0) InsertHash(0, first + count - 1);
}

unsigned FetchGrouping::ProbeHits(unsigned count, unsigned* hits, output_column groups, input_column hashes,
                                  const unsigned* sel, Context*) {
    return WithKeys(hashes, status::FetchGrouping_Probe, "FetchGrouping::Probe", [&](const auto* keys) {
        using T = std::remove_const_t<std::remove_pointer_t<decltype(keys)>>;
        return fetch_lookup<true>(count, hits, groups.values<unsigned>(), keys, sel, static_cast<T>(m_base), m_limit);
    });
}

bool FetchGrouping::HashInner(const RefCntPtr<Table>& inner, const Namespace&, const std::vector<std::wstring>& names,
                              unsigned pageSize, const ProgressCallback* progress) {
    const uint64_t rows = BuildInner(*inner, pageSize);
    const auto scan = MakeRef<Scan>(inner, ColumnNames(names.begin(), names.end()));
    const RefCntPtr<Column> column = scan->GetColumn(names.front());
    const bool isSigned = column->GetDataType() == DataType::integer;
    while (const unsigned count = scan->Next(pageSize)) {
        OperatorProgressCallback::Check(progress);
        const uint64_t row = scan->GetPreviousCursor();
        const unsigned dense = WithKeys(
            column->GetInput(), status::FetchGrouping_Probe, "FetchGrouping::HashInner", [&](const auto* keys) {
                using T = std::remove_const_t<std::remove_pointer_t<decltype(keys)>>;
                if (row == 0) m_base = keys[0];
                const T null = isSigned ? static_cast<T>(T{1} << (sizeof(T) * 8 - 1)) : static_cast<T>(~T{0});
                return CountDense(count, keys, static_cast<T>(m_base), row, null);
            });
        if (dense < count) return false;
    }
    m_limit = static_cast<unsigned>(rows);
    SetSize(m_limit);
    return true;
}

GroupingIdType FetchGrouping::NameId() const {
    return GroupingIdType::fetch;
}

RefCntPtr<Exp> FetchGrouping::ResolveHash(const Namespace& input, const std::vector<std::wstring>& keys) {
    if (keys.size() != 1) return nullptr;
    const RefCntPtr<Column> column = input.DescribeColumn(keys.front());
    const bool mayBeDense = IsWholeNumber(*column) && column->HasProperty(usrpropkey::unique) &&
                            column->GetProperties().text(usrpropkey::ordered) == L"asc";
    return mayBeDense ? MakeRef<ColumnExp>(column) : nullptr;
}

RefCntPtr<Exp> FetchGrouping::ResolvePartition(const Namespace& input, const std::vector<std::wstring>& keys) {
    if (keys.empty()) return nullptr;
    // Rows that agree in the first columns of a sort order lie side by side; so do those that agree in columns each of
    // which is in order by itself, and those that agree in both. The input may have lost a column of the sort order, so
    // that what counts is the positions.
    std::vector<uint64_t> positions;
    std::vector<RefCntPtr<Exp>> arguments;
    for (const std::wstring& key : keys) {
        const RefCntPtr<Column> column = input.DescribeColumn(key);
        if (column->HasProperty(usrpropkey::sort_position)) {
            positions.push_back(column->GetSizeProperty(usrpropkey::sort_position));
        } else if (!column->HasProperty(usrpropkey::ordered)) {
            return nullptr;
        }
        arguments.push_back(MakeRef<ColumnExp>(column));
    }
    std::sort(positions.begin(), positions.end());
    for (size_t i = 0; i < positions.size(); ++i) {
        if (positions[i] != i) return nullptr;
    }
    const auto partition = MakeRef<PartitionExp>(PartitionExp::partitionName, std::move(arguments));
    try {
        partition->AllocateColumn(&input);
    } catch (const QVE_InvalidArgument&) {
        return nullptr;  // no kernel for one of the types
    }
    return partition;
}

}  // namespace qve
