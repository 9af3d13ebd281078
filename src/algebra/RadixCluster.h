#pragma once

#include <cstdint>
#include <vector>

#include "types/input_column.h"

namespace qve {

/// Splits the rows of a page by the high bits of a number, so that what is indexed by the number is touched one window
/// at a time. Usually everything fits in one window, and the page passes through untouched.
///
///     for (cluster.Reset(limit, count, numbers, sel, 0, 0); cluster.GetCount() > 0; cluster.Next()) ...
class RadixCluster {
public:
    /// Starts on a page of `count` rows with unsigned 32-bit `numbers`, all below `limit`. A window holds 1 << bits
    /// numbers; with `bits` 0 it is what a stream window holds of the widest atom. `base` is subtracted first.
    void Reset(uint64_t limit, unsigned count, input_column numbers, const unsigned* sel, unsigned bits, unsigned base);
    /// Moves on to the next cluster that has rows.
    void Next();

    /// Rows of the cluster; 0 after the last.
    unsigned GetCount() const { return m_clusterCount; }
    /// The first number of the window.
    uint64_t GetPosition() const { return m_position; }
    /// The length of a window.
    uint64_t GetLength() const { return uint64_t{1} << m_bits; }
    /// The positions of the rows in the page; null for all.
    const unsigned* GetSelection() const { return m_clusterSelection; }
    /// The numbers relative to the window, indexed by position in the page.
    input_column GetNumbers() const { return m_clusterNumbers; }

private:
    void Load();

    unsigned m_bits = 0;
    uint64_t m_position = 0;
    unsigned m_clusterCount = 0;
    const unsigned* m_clusterSelection = nullptr;
    input_column m_clusterNumbers;
    unsigned m_cluster = 0;
    bool m_clustered = false;
    std::vector<unsigned> m_starts;
    std::vector<unsigned> m_places;
    std::vector<unsigned> m_rows;
    std::vector<unsigned> m_adjusted;
};

}  // namespace qve
