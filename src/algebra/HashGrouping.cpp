#include "algebra/HashGrouping.h"

#include <algorithm>

#include "algebra/ColumnExp.h"
#include "algebra/HashContext.h"
#include "algebra/HashExp.h"
#include "algebra/status.h"
#include "primitives/primitive_func.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "telemetry/LogEntry.h"
#include "types/cuckoo_hash.h"

namespace qve {

namespace {

// From this many groups on a table is worth a line in the log.
constexpr size_t largeTable = 0x100000;

unary_func ResolveHashKernel(const Column& keys) {
    const primitive::argument_list arguments = {{keys.GetPrimitiveType(usrpropkey::distinct), primitive::storageCol}};
    for (primitive* candidate : primitive::resolve(L"hash", arguments)) {
        if (candidate->klass() == primitive::klassMap) return ResolvePrimitive<unary_func>(candidate);
    }
    throw QVE_InvalidArgument(status::HashGrouping_AdoptGroups, "HashGrouping::AdoptGroups");
}

constexpr unsigned adoptedRows = 1024;

}  // namespace

HashGrouping::HashGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp,
                           std::vector<std::wstring> keys, unsigned estimate)
    : HashGrouping(semantics, std::move(probeExp), std::move(buildExp), keys, keys, estimate) {}
HashGrouping::HashGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp,
                           std::vector<std::wstring> probeKeys, std::vector<std::wstring> buildKeys, unsigned estimate)
    : ExpGrouping(semantics, std::move(probeExp), std::move(buildExp)),
      m_probeKeys(std::move(probeKeys)),
      m_buildKeys(std::move(buildKeys)),
      m_table(std::make_unique<cuckoo_hash<unsigned, unsigned>>(estimate)) {}
HashGrouping::~HashGrouping() = default;

bool HashGrouping::HasCollisions() const {
    return m_table->HasCollisions();
}

void HashGrouping::Reset(unsigned size) {
    Grouping::Reset(size);
    m_table->clear(size);
    m_maximalCollisionRatio = 0;
}

RefCntPtr<Grouping::Context> HashGrouping::MakeContext(const Namespace* rows, const Namespace* groups) const {
    return MakeRef<HashContext>(rows, groups, m_probeKeys, m_buildKeys, GetSize());
}

RefCntPtr<Grouping::Context> HashGrouping::MakeInnerContext(const Namespace* rows, const Namespace* groups) const {
    return MakeRef<HashContext>(rows, groups, m_buildKeys, m_buildKeys, 0);
}

unsigned HashGrouping::Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes,
                             const unsigned* sel, Context* context) {
    return static_cast<HashContext*>(context)->Probe(*m_table, GetSize(), count, misses, groups.values<unsigned>(),
                                                     hashes, sel);
}

void HashGrouping::InsertHash(unsigned hash, unsigned group) {
    m_table->insert(hash, group);
    if (m_table->size() >= largeTable) {
        const double ratio = static_cast<double>(m_table->collisions()) / static_cast<double>(m_table->size());
        m_maximalCollisionRatio = std::max(m_maximalCollisionRatio, ratio);
    }
}

void HashGrouping::InsertInner(unsigned count, const unsigned* rows, input_column hashes, unsigned base) {
    constexpr unsigned ahead = 8;
    const unsigned* const hash = hashes.values<unsigned>();
    if (hashes.flags & column_flags::constant) return Grouping::InsertInner(count, rows, hashes, base);
    for (unsigned i = 0; i < count; ++i) {
        if (i + ahead < count) m_table->prefetch_first(hash[rows[i + ahead]]);
        InsertHash(hash[rows[i]], base + rows[i]);
    }
}

void HashGrouping::AdoptGroups(Column& keys, unsigned count) {
    const unary_func hash = ResolveHashKernel(keys);
    std::vector<unsigned> hashes(adoptedRows);
    unsigned char flags = 0;
    const output_column out{hashes.data(), nullptr, sizeof(unsigned), adoptedRows, &flags};
    for (unsigned first = 0; first < count; first += adoptedRows) {
        const unsigned rows = std::min(adoptedRows, count - first);
        keys.Seek(first, rows);
        hash(rows, out, keys.GetInput(), nullptr);
        for (unsigned i = 0; i < rows; ++i) InsertHash(hashes[i], first + i);
    }
    SetSize(count);
}

void HashGrouping::SetPoll(std::function<void()> poll) {
    m_table->set_poll(std::move(poll));
}

GroupingIdType HashGrouping::NameId() const {
    return GroupingIdType::hash;
}

void HashGrouping::LogHashtableStatistics(std::string_view text) const {
    if (m_table->size() < largeTable) return;
    LogEntry() << text << ": size=" << m_table->size() << " capacity=" << m_table->capacity()
               << " stashes=" << m_table->stashed() << " collisions=" << m_table->collisions()
               << " maximal collision ratio=" << m_maximalCollisionRatio;
}

RefCntPtr<Exp> HashGrouping::ResolveHash(const Namespace& input, const std::vector<std::wstring>& keys, bool tokens) {
    RefCntPtr<HashExp> hash;
    for (const std::wstring& key : keys) {
        const RefCntPtr<Column> column = input.DescribeColumn(key);
        hash = MakeRef<HashExp>(L".HashGrouping", hash ? L"rehash" : L"hash", MakeRef<ColumnExp>(column), tokens, hash);
    }
    if (!hash) return nullptr;
    try {
        hash->AllocateColumn(&input);
    } catch (const QVE_InvalidArgument&) {
        return nullptr;  // no kernel for one of the types
    }
    return hash;
}

}  // namespace qve
