#include "types/compaccel.h"

#include <algorithm>

#include "types/usrheap.h"
#include "types/usrtype.h"

namespace qve {
namespace {

constexpr unsigned sample_distance = 16;

}  // namespace

void compaccel::build(const usrheap& heap) {
    m_samples.clear();
    m_count = 0;
    m_last = absent;
    const unsigned long long end = heap.next();
    if (heap.prefix_width() == 0) {
        m_count = end;
        if (end) m_last = end - 1;
        return;
    }
    for (unsigned long long token = heap.first(); token < end; token = heap.after(token)) {
        if (m_count++ % sample_distance == 0) m_samples.push_back(token);
        m_last = token;
    }
}

unsigned long long compaccel::lookup(const usrheap& heap, const usratom& atom) const {
    usratom entry(m_type);
    const auto order = [&](unsigned long long token) {
        heap.get(token, entry);
        return m_type->compare(entry, atom);
    };
    const unsigned long long end = heap.next();
    if (heap.prefix_width() == 0) {
        unsigned long long from = 0;
        unsigned long long to = m_count;
        while (from < to) {
            const unsigned long long middle = from + (to - from) / 2;
            const int found = order(middle);
            if (found == 0 && m_distinct) return middle;
            if (found < 0) {
                from = middle + 1;
            } else {
                to = middle;
            }
        }
        return from < m_count ? from : end;
    }
    // The last sample below the value begins the stretch to walk.
    const auto above = std::partition_point(m_samples.begin(), m_samples.end(),
                                            [&](unsigned long long token) { return order(token) < 0; });
    unsigned long long token = above == m_samples.begin() ? heap.first() : *std::prev(above);
    while (token < end && order(token) < 0) token = heap.after(token);
    return token;
}

unsigned long long compaccel::find(const usrheap& heap, const usratom& atom) const {
    if (!atom.data() || m_count == 0) return absent;
    const unsigned long long token = lookup(heap, atom);
    if (token >= heap.next()) return absent;
    usratom entry(m_type);
    heap.get(token, entry);
    return m_type->compare(entry, atom) == 0 ? token : absent;
}

}  // namespace qve
