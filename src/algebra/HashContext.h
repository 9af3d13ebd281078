#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "algebra/ExpGrouping.h"
#include "primitives/primitive_func.h"

namespace qve {

/// The kernel "check" or "recheck" that tells, row by row, whether a key of rows differs from the key of the groups
/// they are thought to be of. Raises 40210 when there is none.
ternary_func ResolveUserCheck(const wchar_t* name, const Column& rows, const Column& groups);

/// What a grouping by a hash that several keys may have keeps for one flow: the key columns of its rows and of the
/// groups, and the kernels that compare them.
class HashContext : public ExpGrouping::ExpContext {
public:
    /// `size` is the number of groups whose keys are there already.
    HashContext(const Namespace* rows, const Namespace* groups, const std::vector<std::wstring>& rowKeys,
                const std::vector<std::wstring>& groupKeys, unsigned size);
    ~HashContext() override;

    /// Looks rows up in a table of the kind of cuckoo_hash, which has `size` groups, and compares the keys of those
    /// that are found. As Grouping::Probe.
    template <class Table>
    unsigned Probe(const Table& table, unsigned size, unsigned count, unsigned* misses, unsigned* groups,
                   input_column hashes, const unsigned* sel) {
        if (m_missing.size() <= count) {
            m_missing.resize(count + 1);
            m_candidates.resize(count + 1);
        }
        const unsigned* hash = hashes.values<unsigned>();
        unsigned missing = table.lookup(count, m_missing.data(), groups, hash, sel);
        const unsigned extent = count == 0 ? 0 : (sel ? sel[count - 1] : count - 1) + 1;
        if (missing < count) {
            const unsigned* hits = sel;
            if (missing > 0) hits = SelectHits(count, groups, sel);
            unsigned different = Check(size, extent, count - missing, hits, groups, hashes.count);
            const unsigned first = missing;
            while (different > 0) {
                const unsigned found = table.collision_lookup(
                    different, m_candidates.data(), m_missing.data() + missing, groups, hash, m_candidates.data());
                for (unsigned i = 0; i < different - found; ++i) groups[m_missing[missing + i]] = Grouping::noGroup;
                missing += different - found;
                different = found == 0 ? 0 : Check(size, extent, found, m_candidates.data(), groups, hashes.count);
            }
            if (missing > first) ListMisses(count, groups, sel);
        }
        std::copy_n(m_missing.begin(), missing, misses);
        return missing;
    }

private:
    struct KeyCheck;

    const unsigned* SelectHits(unsigned count, const unsigned* groups, const unsigned* sel);
    void ListMisses(unsigned count, const unsigned* groups, const unsigned* sel);
    unsigned Check(unsigned size, unsigned extent, unsigned count, const unsigned* rows, unsigned* groups,
                   unsigned available);

    std::vector<KeyCheck> m_checks;
    std::vector<unsigned> m_missing;
    std::vector<unsigned> m_candidates;
    std::vector<unsigned char> m_differs;
};

}  // namespace qve
