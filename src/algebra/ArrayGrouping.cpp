#include "algebra/ArrayGrouping.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <charconv>
#include <limits>
#include <type_traits>

#include "algebra/Table.h"
#include "algebra/direct_table.h"
#include "storage/Column.h"
#include "system/unicode.h"

namespace qve {

namespace {

// A range up to the floor is always taken, as untouched parts of the table cost nothing; beyond it the table may have
// so many slots for each row that was seen, up to the ceiling (256 MiB).
constexpr uint64_t floorSlots = uint64_t{1} << 23;
constexpr uint64_t slotsPerRow = 16;
constexpr uint64_t denseSlotsPerRow = 8;
// From so many slots on, 256 KiB, ranks are better than the table.
constexpr uint64_t rankedSlots = uint64_t{1} << 16;
constexpr uint64_t ceilingSlots = uint64_t{1} << 26;

// A key of width U to its slot: the distance from the base if that is in range, else one of the two last slots.
template <class U, bool Nulls>
struct RangeSlot {
    U base;
    U slots;
    U null;

    size_t operator()(U key) const {
        const U distance = key - base;
        const U slot = distance < slots ? distance : slots;
        if constexpr (Nulls) return key == null ? slots + 1 : slot;
        return slot;
    }
    [[gnu::target("avx2"), gnu::always_inline]] __m256i eight(const U* keys) const {
        const __m256i key = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(keys));
        const __m256i last = _mm256_set1_epi32(static_cast<int>(slots));
        const __m256i slot = _mm256_min_epu32(_mm256_sub_epi32(key, _mm256_set1_epi32(static_cast<int>(base))), last);
        if constexpr (Nulls) {
            const __m256i isNull = _mm256_cmpeq_epi32(key, _mm256_set1_epi32(static_cast<int>(null)));
            return _mm256_sub_epi32(_mm256_blendv_epi8(slot, last, isNull), isNull);  // the slot behind the last one
        }
        return slot;
    }
};

bool ParseInteger(const std::wstring& text, long long& value) {
    const std::string digits = narrow(text);
    const char* const end = digits.data() + digits.size();
    return std::from_chars(digits.data(), end, value).ptr == end && !digits.empty();
}

template <class U>
constexpr U signBit = U{1} << (sizeof(U) * 8 - 1);

template <class F>
auto WithKeys(const input_column& hashes, F f) {
    return hashes.width == 4 ? f(hashes.values<uint32_t>()) : f(hashes.values<uint64_t>());
}

// Calls f with the keys and the matching RangeSlot.
template <class F>
auto WithSlots(const input_column& hashes, uint64_t base, uint64_t slots, bool isSigned, F f) {
    return WithKeys(hashes, [&](const auto* keys) {
        using U = std::remove_const_t<std::remove_pointer_t<decltype(keys)>>;
        const U null = isSigned ? signBit<U> : static_cast<U>(~U{0});
        if (hashes.flags & column_flags::not_null) {
            return f(keys, RangeSlot<U, false>{static_cast<U>(base), static_cast<U>(slots), null});
        }
        return f(keys, RangeSlot<U, true>{static_cast<U>(base), static_cast<U>(slots), null});
    });
}

}  // namespace

class ArrayGrouping::ColumnContext : public Grouping::Context {
public:
    ColumnContext(const Namespace* rows, const Namespace* groups, const std::wstring& key)
        : Context(rows, groups), m_column(rows->GetColumn(key)) {}
    input_column GetKeys() const { return m_column->GetInput(0); }

private:
    const RefCntPtr<Column> m_column;
};

ArrayGrouping::ArrayGrouping(CompareSemantics semantics, std::wstring key, bool isSigned)
    : ArrayGrouping(semantics, key, key, isSigned) {}
ArrayGrouping::ArrayGrouping(CompareSemantics semantics, std::wstring probeKey, std::wstring buildKey, bool isSigned)
    : Grouping(semantics), m_probeKey(std::move(probeKey)), m_buildKey(std::move(buildKey)), m_signed(isSigned) {
    Reset(0);
}
ArrayGrouping::~ArrayGrouping() = default;

void ArrayGrouping::Reset(unsigned size) {
    Grouping::Reset(size);
    m_table = MakeTable(0);
    m_slots = 0;
    m_base = 0;
    m_rows = 0;
    m_ranks.reset();
}

RefCntPtr<Grouping::Context> ArrayGrouping::MakeContext(const Namespace* rows, const Namespace* groups) const {
    return MakeRef<ColumnContext>(rows, groups, m_probeKey);
}

RefCntPtr<Grouping::Context> ArrayGrouping::MakeInnerContext(const Namespace* rows, const Namespace* groups) const {
    return MakeRef<ColumnContext>(rows, groups, m_buildKey);
}

input_column ArrayGrouping::HashInsert(unsigned, unsigned, const unsigned*, Context* context) const {
    return static_cast<ColumnContext*>(context)->GetKeys();
}

input_column ArrayGrouping::HashProbe(unsigned count, unsigned extent, const unsigned* sel, Context* context) const {
    return HashInsert(count, extent, sel, context);
}

unsigned ArrayGrouping::Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes,
                              const unsigned* sel, Context*) {
    m_rows += count;
    return WithSlots(hashes, m_base, m_slots, m_signed, [&](const auto* keys, auto slot) {
        return ProbeDirect(count, misses, groups, keys, sel, GetTable(), slot);
    });
}

bool ArrayGrouping::Accepts(unsigned count, const unsigned* rows, input_column hashes) {
    return WithKeys(hashes, [&](const auto* keys) {
        // Values are compared in a form in which unsigned order is theirs: signed ones with the sign bit turned.
        using U = std::remove_const_t<std::remove_pointer_t<decltype(keys)>>;
        const U turn = m_signed ? signBit<U> : U{0};
        const U null = m_signed ? U{0} : static_cast<U>(~U{0});
        const bool mayBeNull = (hashes.flags & column_flags::not_null) == 0;
        U low = std::numeric_limits<U>::max();
        U high = 0;
        bool any = false;
        for (unsigned i = 0; i < count; ++i) {
            const U key = keys[rows[i]] ^ turn;
            if (mayBeNull && key == null) continue;
            low = std::min(low, key);
            high = std::max(high, key);
            any = true;
        }
        if (!any) return true;
        const U first = static_cast<U>(m_base) ^ turn;
        if (m_slots > 0 && low >= first && high - first < m_slots) return true;
        const U oldLow = m_slots > 0 ? first : low;
        const U oldHigh = m_slots > 0 ? static_cast<U>(first + (m_slots - 1)) : high;
        uint64_t newLow = std::min(low, oldLow);
        if (!Grow(oldLow, oldHigh, newLow, std::max(high, oldHigh), std::numeric_limits<U>::max())) return false;
        m_base = static_cast<U>(newLow) ^ turn;
        return true;
    });
}

// A table of which most is not touched is not to be filled up by large pages.
ZeroedMemory ArrayGrouping::MakeTable(uint64_t slots) const {
    return ZeroedMemory((slots + 2) * sizeof(unsigned), slots <= m_rows * denseSlotsPerRow);
}

// Makes the table cover `low` to `high`, and some more on the side on which it grows; `low` becomes where it begins.
bool ArrayGrouping::Grow(uint64_t oldLow, uint64_t oldHigh, uint64_t& low, uint64_t high, uint64_t top) {
    const uint64_t most = std::clamp(m_rows * slotsPerRow, floorSlots, ceilingSlots);
    if (high - low >= most) return false;
    uint64_t spare = most - (high - low + 1);
    if (low < oldLow) {
        const uint64_t below = std::min({m_slots, spare, low});
        low -= below;
        spare -= below;
    }
    if (high > oldHigh) high += std::min({m_slots, spare, top - 1 - std::min(high, top - 1)});

    const uint64_t slots = high - low + 1;
    ZeroedMemory table = MakeTable(slots);
    auto* const entries = static_cast<unsigned*>(table.data());
    std::copy_n(GetTable(), m_slots, entries + (oldLow - low));
    entries[slots + 1] = GetTable()[m_slots + 1];
    m_table = std::move(table);
    m_slots = slots;
    return true;
}

unsigned ArrayGrouping::FindInserts(unsigned count, unsigned* inserts, unsigned* retries, input_column hashes) {
    return WithSlots(hashes, m_base, m_slots, m_signed, [&](const auto* keys, auto slot) {
        return FindInsertsDirect(count, inserts, retries, keys, GetTable(), slot);
    });
}

void ArrayGrouping::InsertHash(unsigned hash, unsigned group) {
    const unsigned row = 0;
    InsertHashes(1, &row, input_column{&hash, nullptr, sizeof(hash), 1, column_flags::not_null}, group);
}

void ArrayGrouping::InsertHashes(unsigned count, const unsigned* rows, input_column hashes, unsigned first) {
    WithSlots(hashes, m_base, m_slots, m_signed,
              [&](const auto* keys, auto slot) { InsertDirect(count, rows, keys, first, GetTable(), slot); });
}

bool ArrayGrouping::HashInner(const RefCntPtr<Table>& inner, const Namespace& keys,
                              const std::vector<std::wstring>& names, unsigned pageSize,
                              const ProgressCallback* progress) {
    m_rows = inner->Build(pageSize);
    Reserve(*inner->DescribeColumn(names.front()));
    if (!Grouping::HashInner(inner, keys, names, pageSize, progress)) return false;
    UseRanks();
    return true;
}

// Small tables stay in the cache as they are.
void ArrayGrouping::UseRanks() {
    if (m_slots < rankedSlots || GetLinks() || GetTable()[m_slots + 1] != 0) return;
    m_ranks.emplace(GetTable(), m_slots);
    if (m_ranks->IsEmpty()) {
        m_ranks.reset();
    } else {
        m_table = ZeroedMemory();
    }
}

// What the column says may be wrong by now, but what lies outside is taken when it comes.
void ArrayGrouping::Reserve(const Column& keys) {
    const std::wstring* low = keys.GetProperties().get(usrpropkey::min_value);
    const std::wstring* high = keys.GetProperties().get(usrpropkey::max_value);
    if (!low || !high || keys.GetDataType() != DataType::integer) return;
    long long first = 0;
    long long last = 0;
    if (!ParseInteger(*low, first) || !ParseInteger(*high, last) || first > last) return;
    const uint64_t range = static_cast<uint64_t>(last) - static_cast<uint64_t>(first);
    if (range >= std::clamp(m_rows * slotsPerRow, floorSlots, ceilingSlots)) return;
    m_table = MakeTable(range + 1);
    m_slots = range + 1;
    m_base = static_cast<uint64_t>(first);
}

void ArrayGrouping::InsertInner(unsigned count, const unsigned* rows, input_column hashes, unsigned base) {
    WithSlots(hashes, m_base, m_slots, m_signed,
              [&](const auto* keys, auto slot) { InsertRowsDirect(count, rows, keys, base, GetTable(), slot); });
}

unsigned ArrayGrouping::ProbeHits(unsigned count, unsigned* hits, output_column groups, input_column hashes,
                                  const unsigned* sel, Context*) {
    return WithSlots(hashes, m_base, m_slots, m_signed, [&](const auto* keys, auto slot) {
        if (m_ranks) {
            const auto place = [slot, none = m_slots](auto key) { return std::min<uint64_t>(slot(key), none); };
            return m_ranks->ProbeHits(count, hits, groups.values<unsigned>(), keys, sel, place);
        }
        return ProbeHitsDirect(count, hits, groups.values<unsigned>(), keys, sel, GetTable(), slot);
    });
}

GroupingIdType ArrayGrouping::NameId() const {
    return GroupingIdType::array;
}

namespace {

// Whether the values of a column are numbers that a table can be indexed by, and whether they have a sign.
struct KeyKind {
    bool direct = false;
    bool isSigned = false;
};

KeyKind KindOf(const Column& column) {
    if (column.GetStorageName() != Column::storageCol || column.GetTokenSize() < 4) return {};
    if (column.IsCompressed()) return {column.HasProperty(usrpropkey::distinct), false};
    switch (column.GetDataType()) {
        case DataType::integer:
        case DataType::duration:
            return {true, true};
        case DataType::index:
        case DataType::date:
        case DataType::datetime:
            return {true, false};
        default:
            return {};
    }
}

}  // namespace

RefCntPtr<Grouping> ArrayGrouping::Resolve(const Namespace& input, const std::wstring& key,
                                           CompareSemantics semantics) {
    const KeyKind kind = KindOf(*input.DescribeColumn(key));
    return kind.direct ? MakeRef<ArrayGrouping>(semantics, key, kind.isSigned) : nullptr;
}

RefCntPtr<Grouping> ArrayGrouping::ResolveJoin(const Namespace& outer, const std::wstring& probeKey,
                                               const Namespace& inner, const std::wstring& buildKey,
                                               CompareSemantics semantics) {
    const RefCntPtr<Column> outerKey = outer.DescribeColumn(probeKey);
    const RefCntPtr<Column> innerKey = inner.DescribeColumn(buildKey);
    const KeyKind kind = KindOf(*innerKey);
    if (!kind.direct || innerKey->IsCompressed() || outerKey->GetType() != innerKey->GetType()) return nullptr;
    return MakeRef<ArrayGrouping>(semantics, probeKey, buildKey, kind.isSigned);
}

}  // namespace qve
