#include "algebra/RadixCluster.h"

#include <bit>

#include "storage/stream/DataStream.h"

namespace qve {

namespace {

// What a stream window holds of 8-byte values, the widest atoms.
unsigned WindowBits() {
    return static_cast<unsigned>(std::bit_width(DataStream::s_maxlimit.load())) - 3;
}

}  // namespace

void RadixCluster::Reset(uint64_t limit, unsigned count, input_column numbers, const unsigned* sel, unsigned bits,
                         unsigned base) {
    m_bits = bits ? bits : WindowBits();
    m_position = 0;
    m_clustered = false;
    if (limit - base <= GetLength() && base == 0) {
        m_clusterCount = count;
        m_clusterSelection = sel;
        m_clusterNumbers = numbers;
        return;
    }

    m_clustered = true;
    const auto clusters = static_cast<size_t>(((limit - base - 1) >> m_bits) + 1);
    const unsigned mask = static_cast<unsigned>(GetLength() - 1);
    const unsigned* number = numbers.values<unsigned>();
    // A constant page has its one number in the first place only.
    const bool constant = (numbers.flags & column_flags::constant) != 0;
    const auto row = [&](unsigned i) { return sel ? sel[i] : i; };
    const auto value = [&](unsigned i) { return number[constant ? 0 : row(i)] - base; };

    m_starts.assign(clusters + 1, 0);
    for (unsigned i = 0; i < count; ++i) ++m_starts[(value(i) >> m_bits) + 1];
    for (size_t c = 0; c < clusters; ++c) m_starts[c + 1] += m_starts[c];
    m_places.assign(m_starts.begin(), m_starts.end() - 1);
    m_rows.resize(count);
    const unsigned extent = count == 0 ? 0 : row(count - 1) + 1;
    if (m_adjusted.size() < extent) m_adjusted.resize(extent);
    for (unsigned i = 0; i < count; ++i) {
        m_rows[m_places[value(i) >> m_bits]++] = row(i);
        m_adjusted[row(i)] = value(i) & mask;
    }
    if (constant && extent > 0) m_adjusted[0] = value(0) & mask;
    m_clusterNumbers = input_column{m_adjusted.data(), nullptr, sizeof(unsigned),
                                    static_cast<unsigned>(m_adjusted.size()), numbers.flags};
    m_cluster = 0;
    Load();
}

void RadixCluster::Next() {
    if (!m_clustered) {
        m_clusterCount = 0;
        return;
    }
    ++m_cluster;
    Load();
}

void RadixCluster::Load() {
    while (m_cluster + 1 < m_starts.size() && m_starts[m_cluster] == m_starts[m_cluster + 1]) ++m_cluster;
    if (m_cluster + 1 >= m_starts.size()) {
        m_clusterCount = 0;
        return;
    }
    m_position = uint64_t{m_cluster} << m_bits;
    m_clusterCount = m_starts[m_cluster + 1] - m_starts[m_cluster];
    m_clusterSelection = m_rows.data() + m_starts[m_cluster];
}

}  // namespace qve
