#pragma once

#include <memory>
#include <string>
#include <vector>

#include "algebra/ExpGrouping.h"

namespace qve {

template <class K, class V>
class cas_hash;

/// A grouping of a join's inner rows that several threads fill at one time. Where every row is to go is known before:
/// its group is its row number until the rows of each bucket are sorted out, which threads do for different buckets.
/// Only for joins: groups come from HashInner alone, and only ProbeHits and Probe are called afterwards, from any
/// number of threads with a context each.
class ConcurrentHashGrouping : public ExpGrouping {
public:
    /// For outer rows that have the key columns `probeKeys`, and inner ones that have `buildKeys`. `tokens` says how
    /// the expressions hash columns of dictionaries, as HashGrouping::ResolveHash has it.
    ConcurrentHashGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp,
                           std::vector<std::wstring> probeKeys, std::vector<std::wstring> buildKeys,
                           bool tokens = true);
    ~ConcurrentHashGrouping() override;

    bool HasCollisions() const override;
    bool CanHashInnerConcurrently() const override;
    void Reset(unsigned size) override;
    RefCntPtr<Context> MakeContext(const Namespace* rows, const Namespace* groups) const override;
    unsigned Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes, const unsigned* sel,
                   Context* context) override;
    /// Any thread, for a group that no other inserts.
    void InsertHash(unsigned hash, unsigned group) override;
    bool HashInner(const RefCntPtr<Table>& inner, const Namespace& keys, const std::vector<std::wstring>& names,
                   unsigned pageSize, const ProgressCallback* progress) override;
    GroupingIdType NameId() const override;

protected:
    using HashTable = cas_hash<unsigned, unsigned>;

    const HashTable& GetTable() const { return *m_table; }
    /// Whether rows of one hash may have different keys.
    virtual bool ComparesKeys() const { return true; }
    /// The expression for the inner rows, over a namespace of a thread's own.
    virtual RefCntPtr<Exp> ResolveBuild(const Namespace& rows) const;
    const std::vector<std::wstring>& GetBuildKeys() const { return m_buildKeys; }

private:
    class ChildContext;
    class Buckets;

    void HashRows(const Namespace& keys, uint64_t rows, unsigned pageSize, const ProgressCallback* progress);
    void LinkRows(const Namespace& keys, uint64_t rows, const ProgressCallback* progress);

    const std::vector<std::wstring> m_probeKeys;
    const std::vector<std::wstring> m_buildKeys;
    const bool m_tokens;
    std::unique_ptr<HashTable> m_table;
    bool m_collisions = false;
};

/// The same for keys that fit into 32 bits together, which are not compared.
class PerfectConcurrentHashGrouping : public ConcurrentHashGrouping {
public:
    using ConcurrentHashGrouping::ConcurrentHashGrouping;

    RefCntPtr<Context> MakeContext(const Namespace* rows, const Namespace* groups) const override;
    unsigned Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes, const unsigned* sel,
                   Context* context) override;
    GroupingIdType NameId() const override;

protected:
    bool ComparesKeys() const override { return false; }
    RefCntPtr<Exp> ResolveBuild(const Namespace& rows) const override;
};

}  // namespace qve
