#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "algebra/ExpGrouping.h"

namespace qve {

/// A grouping by a key that is the position itself, but for a base value: nothing is stored. For an aggregation over
/// rows in the order of their keys, which are numbered as they change; and for a join whose inner keys stand one after
/// the other without a gap.
class FetchGrouping : public ExpGrouping {
public:
    FetchGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp);
    ~FetchGrouping() override;

    void Reset(unsigned size) override;
    /// Raises QVE_InvalidArgument 40216 for keys of another width than 1, 2, 4 or 8 bytes.
    unsigned Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes, const unsigned* sel,
                   Context* context) override;
    /// The first row of each key that extends the range; the rows are in the order of their keys. Raises 40217 as Probe
    /// raises 40216.
    unsigned FindInserts(unsigned count, unsigned* inserts, unsigned* retries, input_column hashes) override;
    void InsertHash(unsigned hash, unsigned group) override;
    void InsertHashes(unsigned count, const unsigned* rows, input_column hashes, unsigned first) override;
    /// Takes the base from the "min-value" of the inner key, else from its first row. False when a row does not hold
    /// the key of its position: what a column says of itself may be out of date.
    bool HashInner(const RefCntPtr<Table>& inner, const Namespace& keys, const std::vector<std::wstring>& names,
                   unsigned pageSize, const ProgressCallback* progress) override;
    unsigned ProbeHits(unsigned count, unsigned* hits, output_column groups, input_column hashes, const unsigned* sel,
                       Context* context) override;
    GroupingIdType NameId() const override;

    /// The key of a join's inner table: the one column `keys` of `input` when it is unique, ascending and of whole
    /// numbers, so that it may be dense. Null for any other.
    static RefCntPtr<Exp> ResolveHash(const Namespace& input, const std::vector<std::wstring>& keys);
    /// The expression ".PARTITION" that numbers the rows of `input` by its columns `keys`, when rows of equal keys lie
    /// side by side; null when they need not.
    static RefCntPtr<Exp> ResolvePartition(const Namespace& input, const std::vector<std::wstring>& keys);

private:
    uint64_t m_base = 0;   // the key of the first group, in the width of the keys
    unsigned m_limit = 0;  // groups known
};

}  // namespace qve
