#pragma once

#include <cstdlib>
#include <memory>
#include <string>

#include "algebra/Grouping.h"

namespace qve {

/// A grouping by one integer, date or token whose values lie in a bounded range, gaps and all: a table indexed by the
/// distance from a base value. The range is learnt from the pages; Accepts says no when it grows beyond what an array
/// is good for, and the owner goes on with a hash.
class ArrayGrouping : public Grouping {
public:
    /// By the column `key` of the rows.
    ArrayGrouping(CompareSemantics semantics, std::wstring key);
    ~ArrayGrouping() override;

    void Reset(unsigned size) override;
    RefCntPtr<Context> MakeContext(const Namespace* rows, const Namespace* groups) const override;
    /// The key column itself: 1, 2, 4 or 8 bytes a row.
    input_column HashInsert(unsigned count, unsigned extent, const unsigned* sel, Context* context) const override;
    input_column HashProbe(unsigned count, unsigned extent, const unsigned* sel, Context* context) const override;
    bool Accepts(unsigned count, input_column hashes, const unsigned* sel) override;
    unsigned Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes, const unsigned* sel,
                   Context* context) override;
    unsigned FindInserts(unsigned count, unsigned* inserts, unsigned* retries, input_column hashes) override;
    void InsertHash(unsigned hash, unsigned group) override;
    void InsertHashes(unsigned count, const unsigned* rows, input_column hashes, unsigned first) override;
    GroupingIdType NameId() const override;

    /// Whether the column `key` of `input` is of a kind that this strategy can group by.
    static bool Resolves(const Namespace& input, const std::wstring& key);

private:
    struct Free {
        void operator()(unsigned* p) const { std::free(p); }
    };
    bool Grow(unsigned long long low, unsigned long long high);

    const std::wstring m_key;
    // Slot of key k is k - m_base in the key's width; its content is a group number plus 1, or 0. The memory is only
    // touched where keys are.
    std::unique_ptr<unsigned[], Free> m_table;
    unsigned long long m_base = 0;
    unsigned long long m_slots = 0;
    unsigned long long m_rows = 0;
    // The null lies outside the range of the others and has a slot of its own.
    unsigned m_nullSlot = 0;
};

}  // namespace qve
