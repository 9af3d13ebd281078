#include "algebra/ConcurrentHashGrouping.h"

#include <tbb/blocked_range.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <atomic>
#include <mutex>

#include "algebra/HashContext.h"
#include "algebra/HashGrouping.h"
#include "algebra/LeafTable.h"
#include "algebra/OperatorProgressCallback.h"
#include "algebra/PerfectHashGrouping.h"
#include "algebra/without_nulls.h"
#include "os/BudgetedMemory.h"
#include "storage/Column.h"
#include "types/cas_hash.h"

namespace qve {

namespace {

// What one task takes.
constexpr uint64_t taskRows = uint64_t{1} << 16;
constexpr size_t taskBuckets = size_t{1} << 13;

// Key columns that a thread has for itself.
ColumnMap ForkColumns(const Namespace& keys, const std::vector<std::wstring>& names) {
    ColumnMap columns;
    for (const std::wstring& name : names) columns[name] = keys.GetColumn(name)->Fork(true);
    return columns;
}

// The pages of a range of rows.
class RowRange : public DataFlow {
public:
    explicit RowRange(RefCntPtr<LeafTable> table)
        : DataFlow(nullptr, table->GetColumnNames()), m_table(std::move(table)) {
        for (const auto& entry : m_columns) GetColumn(entry.first);
    }
    void Accept(OperatorVisitor&) override {}
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override { return m_table->GetColumn(name); }
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override { return m_table->DescribeColumn(name); }

    void SetRange(uint64_t begin, uint64_t end) {
        m_next = begin;
        m_end = end;
    }
    /// The number of the first row of the page.
    uint64_t GetRow() const { return m_row; }
    unsigned Next(unsigned pageSize) override {
        m_row = m_next;
        uint64_t extent = std::min<uint64_t>(pageSize, m_end - m_next);
        if (extent == 0) return SetPage(0);
        for (const auto& entry : m_columns) extent = std::min(extent, entry.second->Seek(m_row, extent));
        m_next += extent;
        return SetPage(static_cast<unsigned>(extent));
    }

private:
    const RefCntPtr<LeafTable> m_table;
    uint64_t m_row = 0;
    uint64_t m_next = 0;
    uint64_t m_end = 0;
};

}  // namespace

/// What one thread has to hash inner rows: columns, expression and pages of its own.
class ConcurrentHashGrouping::ChildContext {
public:
    ChildContext(const ConcurrentHashGrouping& grouping, const Namespace& keys)
        : m_names(grouping.GetBuildKeys()),
          m_range(MakeRef<RowRange>(MakeRef<LeafTable>(L".KEYS", ForkColumns(keys, m_names)))),
          m_flow(grouping.GetSemantics() == CompareSemantics::nullsDiffer ? without_nulls(m_range, m_names)
                                                                          : RefCntPtr<DataFlow>(m_range)),
          m_hash(grouping.ResolveBuild(*m_flow)),
          m_context(MakeRef<ExpContext>(m_flow.get(), nullptr)) {}

    /// Calls insert(hash, row) for each row of the range that can match.
    template <class Insert>
    void HashRows(uint64_t begin, uint64_t end, unsigned pageSize, Insert insert) {
        m_range->SetRange(begin, end);
        while (const unsigned extent = m_flow->Next(pageSize)) {
            const unsigned count = m_flow->GetSelectionCount();
            if (count == 0) continue;
            const unsigned* sel = m_flow->GetSelection();
            const unsigned* hashes = m_context->Evaluate(*m_hash, count, extent, sel).values<unsigned>();
            const auto base = static_cast<unsigned>(m_range->GetRow());
            for (unsigned i = 0; i < count; ++i) {
                const unsigned row = sel ? sel[i] : i;
                insert(hashes[row], base + row);
            }
        }
    }

private:
    const std::vector<std::wstring> m_names;
    const RefCntPtr<RowRange> m_range;
    const RefCntPtr<DataFlow> m_flow;
    const RefCntPtr<Exp> m_hash;
    const RefCntPtr<ExpContext> m_context;
};

/// What one thread has to find the rows of a bucket that have one key.
class ConcurrentHashGrouping::Buckets {
public:
    /// `numbers` and `differs` have a place for each row; threads write to those of their own rows.
    Buckets(const ConcurrentHashGrouping& grouping, const Namespace& keys, unsigned rows, unsigned* numbers,
            unsigned char* differs)
        : m_rows(rows), m_numbers(numbers), m_differs(differs) {
        if (!grouping.ComparesKeys()) return;
        const wchar_t* operation = L"check";
        for (const auto& [name, column] : ForkColumns(keys, grouping.GetBuildKeys())) {
            column->Seek(0, rows);
            m_keys.push_back({column, ResolveUserCheck(operation, *column, *column)});
            operation = L"recheck";
        }
    }

    /// Leaves the first row of each key in the bucket, and chains the others behind it. Returns whether there were
    /// others, and sets `collides` when there were several keys of one hash.
    bool Sort(HashTable& table, size_t bucket, unsigned* links, bool& collides) {
        m_chain.clear();
        table.collect(bucket, m_chain);
        if (m_chain.size() < 2) return false;
        std::sort(m_chain.begin(), m_chain.end(), [&table](unsigned a, unsigned b) {
            return std::pair(table.key_of(a), a) < std::pair(table.key_of(b), b);
        });
        m_heads.clear();
        for (auto first = m_chain.begin(); first != m_chain.end();) {
            const unsigned hash = table.key_of(*first);
            const auto last =
                std::find_if(first, m_chain.end(), [&](unsigned row) { return table.key_of(row) != hash; });
            m_left.assign(first, last);
            for (unsigned keys = 0; !m_left.empty(); ++keys) {
                collides |= keys > 0;
                TakeKey(links);
            }
            first = last;
        }
        const bool linked = m_heads.size() < m_chain.size();
        table.assign(bucket, m_heads);
        return linked;
    }

private:
    struct Key {
        RefCntPtr<Column> column;
        ternary_func differs;
    };

    // Takes the rows that have the key of the first one off the list, and links them.
    void TakeKey(unsigned* links) {
        const unsigned head = m_left.front();
        m_heads.push_back(head);
        const auto count = static_cast<unsigned>(m_left.size() - 1);
        const unsigned* rows = m_left.data() + 1;
        if (count > 0 && !m_keys.empty()) Compare(head, count, rows);
        unsigned tail = head;
        unsigned kept = 0;
        for (unsigned i = 0; i < count; ++i) {
            const unsigned row = rows[i];
            if (!m_keys.empty() && m_differs[row] & 1) {
                m_left[kept++] = row;
            } else {
                links[tail] = row;
                tail = row;
            }
        }
        m_left.resize(kept);
    }

    void Compare(unsigned head, unsigned count, const unsigned* rows) {
        for (unsigned i = 0; i < count; ++i) m_numbers[rows[i]] = head;
        unsigned char flags = 0;
        const output_column out{m_differs, nullptr, 1, m_rows, &flags};
        const input_column numbers{m_numbers, nullptr, sizeof(unsigned), m_rows, column_flags::not_null};
        for (const Key& key : m_keys) {
            const input_column cells = key.column->GetInput();
            key.differs(count, out, cells, cells, numbers, rows);
        }
    }

    const unsigned m_rows;
    unsigned* const m_numbers;
    unsigned char* const m_differs;
    std::vector<Key> m_keys;
    std::vector<unsigned> m_chain;
    std::vector<unsigned> m_left;
    std::vector<unsigned> m_heads;
};

ConcurrentHashGrouping::ConcurrentHashGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp,
                                               RefCntPtr<Exp> buildExp, std::vector<std::wstring> probeKeys,
                                               std::vector<std::wstring> buildKeys, bool tokens)
    : ExpGrouping(semantics, std::move(probeExp), std::move(buildExp)),
      m_probeKeys(std::move(probeKeys)),
      m_buildKeys(std::move(buildKeys)),
      m_tokens(tokens),
      m_table(std::make_unique<HashTable>(0)) {}
ConcurrentHashGrouping::~ConcurrentHashGrouping() = default;

bool ConcurrentHashGrouping::HasCollisions() const {
    return m_collisions;
}

bool ConcurrentHashGrouping::CanHashInnerConcurrently() const {
    return true;
}

void ConcurrentHashGrouping::Reset(unsigned size) {
    Grouping::Reset(size);
    m_table = std::make_unique<HashTable>(size);
    m_collisions = false;
}

RefCntPtr<Grouping::Context> ConcurrentHashGrouping::MakeContext(const Namespace* rows, const Namespace* groups) const {
    return MakeRef<HashContext>(rows, groups, m_probeKeys, m_buildKeys, GetSize());
}

RefCntPtr<Exp> ConcurrentHashGrouping::ResolveBuild(const Namespace& rows) const {
    return HashGrouping::ResolveHash(rows, m_buildKeys, m_tokens);
}

unsigned ConcurrentHashGrouping::Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes,
                                       const unsigned* sel, Context* context) {
    return static_cast<HashContext*>(context)->Probe(*m_table, GetSize(), count, misses, groups.values<unsigned>(),
                                                     hashes, sel);
}

void ConcurrentHashGrouping::InsertHash(unsigned hash, unsigned group) {
    m_table->insert(hash, group);
}

bool ConcurrentHashGrouping::HashInner(const RefCntPtr<Table>& inner, const Namespace& keys,
                                       const std::vector<std::wstring>&, unsigned pageSize,
                                       const ProgressCallback* progress) {
    const uint64_t rows = BuildInner(*inner, pageSize);
    Reset(static_cast<unsigned>(rows));
    SetSize(static_cast<unsigned>(rows));
    if (rows == 0) return true;
    HashRows(keys, rows, pageSize, progress);
    LinkRows(keys, rows, progress);
    return true;
}

void ConcurrentHashGrouping::HashRows(const Namespace& keys, uint64_t rows, unsigned pageSize,
                                      const ProgressCallback* progress) {
    std::recursive_mutex forking;
    tbb::enumerable_thread_specific<std::unique_ptr<ChildContext>> contexts;
    tbb::parallel_for(tbb::blocked_range<uint64_t>(0, (rows + taskRows - 1) / taskRows), [&](const auto& range) {
        std::unique_ptr<ChildContext>& context = contexts.local();
        if (!context) {
            const std::lock_guard lock(forking);
            context = std::make_unique<ChildContext>(*this, keys);
        }
        for (uint64_t task = range.begin(); task != range.end(); ++task) {
            OperatorProgressCallback::Check(progress);
            context->HashRows(task * taskRows, std::min(rows, (task + 1) * taskRows), pageSize,
                              [this](unsigned hash, unsigned row) { m_table->insert(hash, row); });
        }
    });
}

void ConcurrentHashGrouping::LinkRows(const Namespace& keys, uint64_t rows, const ProgressCallback* progress) {
    MakeLinkColumn(rows);
    m_links->Seek(0, rows);
    unsigned* const links = m_links->GetOutput().values<unsigned>();
    budgeted_vector<unsigned> numbers(ComparesKeys() ? rows : 0);
    budgeted_vector<unsigned char> differs(numbers.size());
    std::atomic<bool> anyLinked = false;
    std::atomic<bool> anyCollides = false;
    std::recursive_mutex forking;
    tbb::enumerable_thread_specific<std::unique_ptr<Buckets>> sorters;
    const tbb::blocked_range<size_t> all(0, m_table->buckets(), taskBuckets);
    tbb::parallel_for(all, [&](const auto& range) {
        OperatorProgressCallback::Check(progress);
        std::unique_ptr<Buckets>& sorter = sorters.local();
        if (!sorter) {
            const std::lock_guard lock(forking);
            sorter =
                std::make_unique<Buckets>(*this, keys, static_cast<unsigned>(rows), numbers.data(), differs.data());
        }
        bool linked = false;
        bool collides = false;
        for (size_t bucket = range.begin(); bucket != range.end(); ++bucket) {
            linked |= sorter->Sort(*m_table, bucket, links, collides);
        }
        if (linked) anyLinked = true;
        if (collides) anyCollides = true;
    });
    if (!anyLinked) m_links.reset();
    m_collisions = anyCollides;
}

GroupingIdType ConcurrentHashGrouping::NameId() const {
    return GroupingIdType::concurrentHash;
}

RefCntPtr<Grouping::Context> PerfectConcurrentHashGrouping::MakeContext(const Namespace* rows,
                                                                        const Namespace* groups) const {
    return ExpGrouping::MakeContext(rows, groups);
}

unsigned PerfectConcurrentHashGrouping::Probe(unsigned count, unsigned* misses, output_column groups,
                                              input_column hashes, const unsigned* sel, Context*) {
    return GetTable().lookup(count, misses, groups.values<unsigned>(), hashes.values<unsigned>(), sel);
}

RefCntPtr<Exp> PerfectConcurrentHashGrouping::ResolveBuild(const Namespace& rows) const {
    return PerfectHashGrouping::ResolveHash(rows, GetBuildKeys());
}

GroupingIdType PerfectConcurrentHashGrouping::NameId() const {
    return GroupingIdType::perfectConcurrentHash;
}

}  // namespace qve
