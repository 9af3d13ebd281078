#pragma once

#include <string>
#include <vector>

#include "algebra/ExpGrouping.h"

namespace qve {

/// A grouping by keys that fit into 16 bits together: the key is the index into a direct table of group numbers, so
/// that nothing is hashed and nothing compared.
class RadixGrouping : public ExpGrouping {
public:
    RadixGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp);
    ~RadixGrouping() override;

    void Reset(unsigned size) override;
    unsigned Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes, const unsigned* sel,
                   Context* context) override;
    unsigned FindInserts(unsigned count, unsigned* inserts, unsigned* retries, input_column hashes) override;
    void InsertHash(unsigned hash, unsigned group) override;
    void InsertHashes(unsigned count, const unsigned* rows, input_column hashes, unsigned first) override;
    void InsertInner(unsigned count, const unsigned* rows, input_column hashes, unsigned base) override;
    unsigned ProbeHits(unsigned count, unsigned* hits, output_column groups, input_column hashes, const unsigned* sel,
                       Context* context) override;
    GroupingIdType NameId() const override;

    /// The expression "RadixCast" that gives the columns `keys` of `input` as one number: the column itself where there
    /// is one of 1 or 2 bytes, else its "radixhash" and "radixgrp". Null when the keys do not fit.
    static RefCntPtr<Exp> ResolveHash(const Namespace& input, const std::vector<std::wstring>& keys);

private:
    std::vector<unsigned> m_table;
};

}  // namespace qve
