#pragma once

#include <memory>
#include <string>
#include <vector>

#include "algebra/ExpGrouping.h"

namespace qve {

template <class K, class V>
class cuckoo_hash;

/// A grouping by keys that fit into 32 bits together: the packed key is its own hash, so that different keys never have
/// the same, and nothing is compared.
class PerfectHashGrouping : public ExpGrouping {
public:
    /// `estimate` is the expected number of groups; it only sizes the table.
    PerfectHashGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp,
                        unsigned estimate);
    ~PerfectHashGrouping() override;

    void Reset(unsigned size) override;
    unsigned Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes, const unsigned* sel,
                   Context* context) override;
    void InsertHash(unsigned hash, unsigned group) override;
    void SetPoll(std::function<void()> poll) override;
    GroupingIdType NameId() const override;

    /// Makes the groups 0 to `count` - 1 known, whose keys, of one column of 4 bytes, are stored in `keys`.
    void AdoptGroups(Column& keys, unsigned count);

    /// The expression "PerfectHashCast" that gives the columns `keys` of `input` as one number of 32 bits. Null when
    /// they do not fit, or when their cells do not stand for their values.
    static RefCntPtr<Exp> ResolveHash(const Namespace& input, const std::vector<std::wstring>& keys);

private:
    std::unique_ptr<cuckoo_hash<unsigned, unsigned>> m_table;
};

}  // namespace qve
