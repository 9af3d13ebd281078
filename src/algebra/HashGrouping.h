#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "algebra/ExpGrouping.h"

namespace qve {

template <class K, class V>
class cuckoo_hash;

/// A grouping by any keys: a 32-bit hash finds a candidate, whose stored keys are then compared column by column.
class HashGrouping : public ExpGrouping {
public:
    /// `keys` are the names of the key columns, of the rows and of the groups alike. `estimate` is the expected number
    /// of groups; it only sizes the table.
    HashGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp,
                 std::vector<std::wstring> keys, unsigned estimate);
    /// For a join, whose outer rows have the key columns `probeKeys`, and whose inner ones `buildKeys`.
    HashGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp,
                 std::vector<std::wstring> probeKeys, std::vector<std::wstring> buildKeys, unsigned estimate);
    ~HashGrouping() override;

    bool HasCollisions() const override;
    void Reset(unsigned size) override;
    RefCntPtr<Context> MakeContext(const Namespace* rows, const Namespace* groups) const override;
    /// The groups' key columns are compared through the namespace of groups given to the context.
    unsigned Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes, const unsigned* sel,
                   Context* context) override;
    void InsertHash(unsigned hash, unsigned group) override;
    void InsertInner(unsigned count, const unsigned* rows, input_column hashes, unsigned base) override;
    void SetPoll(std::function<void()> poll) override;
    GroupingIdType NameId() const override;

    /// Makes the groups 0 to `count` - 1 known, whose keys, of one column, are stored in `keys`.
    void AdoptGroups(Column& keys, unsigned count);

    /// Logs size, load and collisions of the table, when it is large.
    void LogHashtableStatistics(std::string_view text) const;

    /// The chain of "hash" and "rehash" over the columns `keys` of `input`. Null when a key's type has no hash. Where
    /// `tokens`, a column whose tokens are unique is hashed by them; else by value, so that equal values of different
    /// dictionaries have one hash.
    static RefCntPtr<Exp> ResolveHash(const Namespace& input, const std::vector<std::wstring>& keys,
                                      bool tokens = true);

protected:
    RefCntPtr<Context> MakeInnerContext(const Namespace* rows, const Namespace* groups) const override;

private:
    const std::vector<std::wstring> m_probeKeys;
    const std::vector<std::wstring> m_buildKeys;
    std::unique_ptr<cuckoo_hash<unsigned, unsigned>> m_table;
    double m_maximalCollisionRatio = 0;
};

}  // namespace qve
