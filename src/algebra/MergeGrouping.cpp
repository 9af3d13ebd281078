#include "algebra/MergeGrouping.h"

#include <algorithm>

#include "algebra/ColumnExp.h"
#include "algebra/OperatorProgressCallback.h"
#include "algebra/Scan.h"
#include "algebra/status.h"
#include "algebra/without_nulls.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

// Keys as numbers whose unsigned order is that of the sorted rows, nulls first: signed ones with the sign bit turned,
// unsigned ones, whose null is the greatest number, plus 1.
template <class U, bool Signed>
struct Rank {
    uint64_t operator()(U key) const {
        return Signed ? static_cast<U>(key ^ static_cast<U>(U{1} << (sizeof(U) * 8 - 1))) : static_cast<U>(key + 1);
    }
};

// Calls f with the keys of a page and their Rank.
template <class F>
auto WithRanks(const input_column& page, bool isSigned, F f) {
    const auto call = [&](const auto* keys) {
        using U = std::remove_const_t<std::remove_pointer_t<decltype(keys)>>;
        return isSigned ? f(keys, Rank<U, true>()) : f(keys, Rank<U, false>());
    };
    switch (page.width) {
        case 1:
            return call(page.values<uint8_t>());
        case 2:
            return call(page.values<uint16_t>());
        case 4:
            return call(page.values<uint32_t>());
        default:
            return call(page.values<uint64_t>());
    }
}

bool IsSigned(const Column& column) {
    return column.GetDataType() == DataType::integer;
}

// Whether the order of a column's cells as numbers is that of its values.
bool HasRanks(const Column& column) {
    if (column.IsCompressed() || column.GetStorageName() != Column::storageCol) return false;
    switch (column.GetDataType()) {
        case DataType::integer:
        case DataType::index:
        case DataType::date:
            return true;
        default:
            return false;
    }
}

// The sense in which rows are sorted by a column alone or first of all.
std::optional<bool> SenseOf(const Namespace& rows, const std::wstring& name) {
    for (const Namespace::SortSpec& spec : MergeGrouping::BuildOrderedSpecs(rows)) {
        if (spec.name == name) return spec.descending;
    }
    const RefCntPtr<Column> column = rows.DescribeColumn(name);
    const bool leads =
        column->HasProperty(usrpropkey::sort_position) && column->GetSizeProperty(usrpropkey::sort_position) == 0;
    if (!leads) return std::nullopt;
    const std::vector<Namespace::SortSpec> specs = Namespace::BuildSortSpecs(rows);
    return specs.front().descending;
}

}  // namespace

/// Where the outer flow stands in the inner keys.
class MergeGrouping::MergeContext : public ExpGrouping::ExpContext {
public:
    MergeContext(const Namespace* rows, const Namespace* groups, const Conditions& conditions)
        : ExpContext(rows, groups) {
        if (conditions.empty()) {
            throw QVE_InvalidArgument(status::MergeContext_Missing,
                                      "MergeGrouping::MergeContext::MergeContext: Missing condition");
        }
        if (conditions.size() > 1) {
            throw QVE_InvalidArgument(status::MergeContext_Many,
                                      "MergeGrouping::MergeContext::MergeContext: Too many conditions");
        }
        const std::wstring& name = conditions.front().first->GetName();
        m_signed = IsSigned(*rows->DescribeColumn(name));
    }

    unsigned Probe(const budgeted_vector<uint64_t>& keys, const budgeted_vector<unsigned>& firsts, unsigned count,
                   unsigned* misses, unsigned* groups, const input_column& page, const unsigned* sel) {
        return WithRanks(page, m_signed, [&](const auto* cells, auto rank) {
            unsigned missed = 0;
            size_t at = m_cursor;
            for (unsigned i = 0; i < count; ++i) {
                const unsigned row = sel ? sel[i] : i;
                const uint64_t key = rank(cells[row]);
                at = Advance(keys, at, key);
                const bool found = at < keys.size() && keys[at] == key;
                groups[row] = found ? firsts[at] : noGroup;
                misses[missed] = row;
                missed += !found;
            }
            m_cursor = at;
            return missed;
        });
    }

private:
    // The place of the first key that is not below `key`, looked for from `at` on in steps that double: near by, when
    // the rows come in order.
    static size_t Advance(const budgeted_vector<uint64_t>& keys, size_t at, uint64_t key) {
        const size_t size = keys.size();
        if (at < size && keys[at] < key) {
            size_t step = 1;
            while (at + step < size && keys[at + step] < key) {
                at += step;
                step *= 2;
            }
            return std::lower_bound(keys.begin() + at + 1, keys.begin() + std::min(at + step + 1, size), key) -
                   keys.begin();
        }
        if (at == 0 || keys[at - 1] < key) return at;
        size_t step = 1;
        while (step < at && keys[at - step] >= key) step *= 2;
        const size_t low = step < at ? at - step : 0;
        return std::lower_bound(keys.begin() + low, keys.begin() + at, key) - keys.begin();
    }

    size_t m_cursor = 0;
    bool m_signed = false;
};

MergeGrouping::MergeGrouping(CompareSemantics semantics, Conditions conditions)
    : ExpGrouping(semantics, conditions.empty() ? nullptr : conditions.front().first,
                  conditions.empty() ? nullptr : conditions.front().second),
      m_conditions(std::move(conditions)) {}
MergeGrouping::~MergeGrouping() = default;

void MergeGrouping::Reset(unsigned size) {
    Grouping::Reset(size);
    m_keys.clear();
    m_rows.clear();
    m_descending = false;
}

RefCntPtr<Grouping::Context> MergeGrouping::MakeContext(const Namespace* rows, const Namespace* groups) const {
    return MakeRef<MergeContext>(rows, groups, m_conditions);
}

unsigned MergeGrouping::Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes,
                              const unsigned* sel, Context* context) {
    return static_cast<MergeContext*>(context)->Probe(m_keys, m_rows, count, misses, groups.values<unsigned>(), hashes,
                                                      sel);
}

bool MergeGrouping::HashInner(const RefCntPtr<Table>& inner, const Namespace&, const std::vector<std::wstring>& names,
                              unsigned pageSize, const ProgressCallback* progress) {
    const uint64_t rows = BuildInner(*inner, pageSize);
    const auto scan = MakeRef<Scan>(inner, ColumnNames(names.begin(), names.end()));
    const RefCntPtr<DataFlow> flow =
        GetSemantics() == CompareSemantics::nullsDiffer ? without_nulls(scan, names) : RefCntPtr<DataFlow>(scan);
    const RefCntPtr<Column> column = flow->GetColumn(names.front());
    const bool isSigned = IsSigned(*column);
    m_descending = SenseOf(*inner, names.front()).value_or(false);
    unsigned* links = nullptr;
    unsigned tail = noGroup;
    while (flow->Next(pageSize) > 0) {
        OperatorProgressCallback::Check(progress);
        const unsigned* sel = flow->GetSelection();
        const auto base = static_cast<unsigned>(scan->GetPreviousCursor());
        const bool ordered = WithRanks(column->GetInput(), isSigned, [&](const auto* cells, auto rank) {
            for (unsigned i = 0; i < flow->GetSelectionCount(); ++i) {
                const unsigned position = sel ? sel[i] : i;
                const unsigned row = base + position;
                const uint64_t key = rank(cells[position]);
                if (!m_keys.empty() && m_keys.back() == key) {
                    if (!links) {
                        MakeLinkColumn(rows);
                        m_links->Seek(0, rows);
                        links = m_links->GetOutput().values<unsigned>();
                    }
                    links[tail] = row;
                } else {
                    if (!m_keys.empty() && (key < m_keys.back()) != m_descending) return false;
                    m_keys.push_back(key);
                    m_rows.push_back(row);
                }
                tail = row;
            }
            return true;
        });
        if (!ordered) return false;
    }
    if (m_descending) {
        std::reverse(m_keys.begin(), m_keys.end());
        std::reverse(m_rows.begin(), m_rows.end());
    }
    SetSize(static_cast<unsigned>(rows));
    return true;
}

GroupingIdType MergeGrouping::NameId() const {
    return GroupingIdType::merge;
}

std::vector<Namespace::SortSpec> MergeGrouping::BuildOrderedSpecs(const Namespace& columns) {
    std::vector<Namespace::SortSpec> specs;
    for (const std::wstring& name : columns.GetColumnNames()) {
        const std::wstring sense(columns.DescribeColumn(name)->GetProperties().text(usrpropkey::ordered));
        if (sense == L"asc" || sense == L"desc") specs.push_back({name, sense == L"desc"});
    }
    return specs;
}

MergeGrouping::Conditions MergeGrouping::ResolveMerge(const Namespace& probe, const Namespace& build,
                                                      const std::vector<std::pair<std::wstring, std::wstring>>& pairs) {
    if (pairs.size() != 1) return {};
    const auto& [outer, inner] = pairs.front();
    const RefCntPtr<Column> probeKey = probe.DescribeColumn(outer);
    const RefCntPtr<Column> buildKey = build.DescribeColumn(inner);
    if (!HasRanks(*probeKey) || !HasRanks(*buildKey) || probeKey->GetType() != buildKey->GetType()) return {};
    const std::optional<bool> sense = SenseOf(probe, outer);
    if (!sense || sense != SenseOf(build, inner)) return {};
    return {{MakeRef<ColumnExp>(probeKey), MakeRef<ColumnExp>(buildKey)}};
}

}  // namespace qve
