#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "algebra/Grouping.h"
#include "algebra/KeyRanks.h"
#include "os/ZeroedMemory.h"

namespace qve {

/// A grouping by one integer, date or token whose values lie in a bounded range, gaps and all: a table indexed by the
/// distance from a base value. The range is learnt from the rows; Accepts says no when it grows beyond what an array is
/// good for, and the owner goes on with a hash.
class ArrayGrouping : public Grouping {
public:
    /// By the column `key` of the rows; `isSigned` says how its values are ordered.
    ArrayGrouping(CompareSemantics semantics, std::wstring key, bool isSigned);
    /// For a join, by the column `probeKey` of the outer rows and `buildKey` of the inner ones.
    ArrayGrouping(CompareSemantics semantics, std::wstring probeKey, std::wstring buildKey, bool isSigned);
    ~ArrayGrouping() override;

    void Reset(unsigned size) override;
    RefCntPtr<Context> MakeContext(const Namespace* rows, const Namespace* groups) const override;
    /// The key column itself, of 4 or 8 bytes a row.
    input_column HashInsert(unsigned count, unsigned extent, const unsigned* sel, Context* context) const override;
    input_column HashProbe(unsigned count, unsigned extent, const unsigned* sel, Context* context) const override;
    unsigned Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes, const unsigned* sel,
                   Context* context) override;
    bool Accepts(unsigned count, const unsigned* rows, input_column hashes) override;
    unsigned FindInserts(unsigned count, unsigned* inserts, unsigned* retries, input_column hashes) override;
    /// `hash` is a key; only for keys that fit into 32 bits.
    void InsertHash(unsigned hash, unsigned group) override;
    void InsertHashes(unsigned count, const unsigned* rows, input_column hashes, unsigned first) override;
    /// Makes room for the range that the inner key column tells of. Afterwards only ProbeHits may be called.
    bool HashInner(const RefCntPtr<Table>& inner, const Namespace& keys, const std::vector<std::wstring>& names,
                   unsigned pageSize, const ProgressCallback* progress) override;
    void InsertInner(unsigned count, const unsigned* rows, input_column hashes, unsigned base) override;
    unsigned ProbeHits(unsigned count, unsigned* hits, output_column groups, input_column hashes, const unsigned* sel,
                       Context* context) override;
    GroupingIdType NameId() const override;

    /// The strategy for the column `key` of `input`; null when its kind does not allow it.
    static RefCntPtr<Grouping> Resolve(const Namespace& input, const std::wstring& key, CompareSemantics semantics);
    /// The strategy for a join on two columns whose cells compare with each other; null when their kind does not allow
    /// it.
    static RefCntPtr<Grouping> ResolveJoin(const Namespace& outer, const std::wstring& probeKey, const Namespace& inner,
                                           const std::wstring& buildKey, CompareSemantics semantics);

protected:
    RefCntPtr<Context> MakeInnerContext(const Namespace* rows, const Namespace* groups) const override;

private:
    class ColumnContext;
    ZeroedMemory MakeTable(uint64_t slots) const;
    unsigned* GetTable() { return static_cast<unsigned*>(m_table.data()); }
    void Reserve(const Column& keys);
    void UseRanks();
    bool Grow(uint64_t oldLow, uint64_t oldHigh, uint64_t& low, uint64_t high, uint64_t top);

    const std::wstring m_probeKey;
    const std::wstring m_buildKey;
    const bool m_signed;
    // Slot k holds the group of the key m_base + k, plus 1, and 0 where there is none. Two slots follow: one that stays
    // 0, for keys out of range, and that of the null. The memory is only touched where keys are.
    ZeroedMemory m_table;
    uint64_t m_slots = 0;
    uint64_t m_base = 0;              // of the width of the keys
    uint64_t m_rows = 0;              // seen so far
    std::optional<KeyRanks> m_ranks;  // in place of the table, when the rows of a join's inner table allow it
};

}  // namespace qve
