#include "algebra/SharedJoinGrouping.h"

#include <atomic>

#include "algebra/Join.h"
#include "algebra/LeafTable.h"
#include "storage/Column.h"

namespace qve {

/// What the joins share. Written under the mutex by the first of them; those that come later have held it since.
struct SharedJoinGrouping::Inner {
    std::mutex mutex;
    RefCntPtr<Grouping> delegate;
    RefCntPtr<Table> keyCells;
    unsigned char* matched = nullptr;  // by inner row
    std::atomic<unsigned> workers = 1;
    std::atomic<unsigned> finished = 0;
};

namespace {

// The same columns for the use of another thread.
RefCntPtr<Table> ForkTable(const Table& table) {
    ColumnMap columns;
    for (const std::wstring& name : table.GetColumnNames()) columns[name] = table.GetColumn(name)->Fork(true);
    return MakeRef<LeafTable>(L".KEYS", std::move(columns));
}

}  // namespace

SharedJoinGrouping::SharedJoinGrouping(Join* join, CompareSemantics semantics)
    : Grouping(semantics), m_join(join), m_inner(std::make_shared<Inner>()) {}
SharedJoinGrouping::SharedJoinGrouping(Join* join, SharedJoinGrouping& other, CompareSemantics semantics)
    : Grouping(semantics), m_join(join), m_inner(other.m_inner) {}
SharedJoinGrouping::~SharedJoinGrouping() = default;

void SharedJoinGrouping::SetWorkerCount(unsigned count) {
    m_inner->workers = count;
}

bool SharedJoinGrouping::IsShared() const {
    return m_inner->workers > 1;
}

std::unique_lock<std::mutex> SharedJoinGrouping::LockInner() {
    return std::unique_lock(m_inner->mutex);
}

void SharedJoinGrouping::BudgetInner(const RefCntPtr<Table>&, unsigned pageSize) {
    if (!m_inner->delegate) {
        Join::LoadedGrouping loaded = m_join->LoadGrouping(pageSize);
        m_inner->keyCells = loaded.keys;
        m_inner->delegate = std::move(loaded.grouping);
        m_own = m_inner->delegate;
    } else {
        m_own = m_join->MakeGrouping(m_inner->delegate->NameId(), 0);
    }
    // Contexts read the keys of the groups; those of a table that is not read by row need no columns of their own.
    const bool compares = Join::ComparesCells(m_inner->delegate->NameId());
    m_keyCells = compares && IsShared() ? ForkTable(*m_inner->keyCells) : m_inner->keyCells;
}

void SharedJoinGrouping::CreateInnerMatched(unsigned long long rows) {
    if (m_inner->delegate->GetInnerMatched()) return;
    m_inner->delegate->CreateInnerMatched(rows);
    if (rows == 0) return;
    const RefCntPtr<Column> matched = m_inner->delegate->GetInnerMatched();
    matched->Seek(0, rows);
    m_inner->matched = matched->GetOutput().values<unsigned char>();
}

RefCntPtr<Column> SharedJoinGrouping::GetInnerMatched() {
    return m_inner->delegate->GetInnerMatched();
}

void SharedJoinGrouping::MarkInnerMatched(unsigned long long base, unsigned limit, unsigned count, input_column rows,
                                          input_column selection) {
    const unsigned* row = rows.values<unsigned>();
    const unsigned* sel = selection.values<unsigned>();
    for (unsigned i = 0; i < count; ++i) {
        const unsigned inner = row[sel ? sel[i] : i];
        if (inner >= limit) continue;
        std::atomic_ref<unsigned char>(m_inner->matched[base + inner]).store(1, std::memory_order_relaxed);
    }
}

bool SharedJoinGrouping::JoinUnmatched() {
    return m_inner->finished.fetch_add(1, std::memory_order_acq_rel) + 1 == m_inner->workers;
}

unsigned SharedJoinGrouping::GetSize() const {
    return m_inner->delegate ? m_inner->delegate->GetSize() : 0;
}

// A column for the use of this join.
RefCntPtr<Column> SharedJoinGrouping::GetLinks() {
    const RefCntPtr<Column> links = m_inner->delegate->GetLinks();
    return links && IsShared() ? links->Fork(true) : links;
}

bool SharedJoinGrouping::HasCollisions() const {
    return m_inner->delegate->HasCollisions();
}

bool SharedJoinGrouping::CanHashInnerConcurrently() const {
    return m_inner->delegate && m_inner->delegate->CanHashInnerConcurrently();
}

RefCntPtr<Grouping::Context> SharedJoinGrouping::MakeContext(const Namespace* rows, const Namespace* groups) const {
    return m_inner->delegate->MakeContext(rows, groups);
}

input_column SharedJoinGrouping::HashProbe(unsigned count, unsigned extent, const unsigned* sel,
                                           Context* context) const {
    return m_own->HashProbe(count, extent, sel, context);
}

unsigned SharedJoinGrouping::Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes,
                                   const unsigned* sel, Context* context) {
    return m_inner->delegate->Probe(count, misses, groups, hashes, sel, context);
}

unsigned SharedJoinGrouping::ProbeHits(unsigned count, unsigned* hits, output_column groups, input_column hashes,
                                       const unsigned* sel, Context* context) {
    return m_inner->delegate->ProbeHits(count, hits, groups, hashes, sel, context);
}

GroupingIdType SharedJoinGrouping::NameId() const {
    return m_own ? m_own->NameId() : GroupingIdType::sharedJoin;
}

}  // namespace qve
