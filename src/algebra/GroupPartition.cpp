#include "algebra/GroupPartition.h"

namespace qve {

namespace {

// The page is cut into this many parts, which are counted and scattered side by side: a counter that was just raised is
// not ready to be raised again at once.
constexpr unsigned streams = 4;

struct Counters {
    unsigned of[streams][GroupPartition::maxGroups] = {};
};

template <class Row>
void Split(unsigned groupCount, unsigned count, const unsigned* group, Row row, unsigned* starts, unsigned* counts,
           unsigned* out) {
    const unsigned part = count / streams;
    Counters counters;
    for (unsigned i = 0; i < part; ++i) {
        for (unsigned s = 0; s < streams; ++s) ++counters.of[s][group[row(s * part + i)]];
    }
    for (unsigned i = streams * part; i < count; ++i) ++counters.of[streams - 1][group[row(i)]];

    unsigned next = 0;
    for (unsigned g = 0; g < groupCount; ++g) {
        starts[g] = next;
        for (unsigned s = 0; s < streams; ++s) {
            const unsigned rows = counters.of[s][g];
            counters.of[s][g] = next;
            next += rows;
        }
        counts[g] = next - starts[g];
    }

    for (unsigned i = 0; i < part; ++i) {
        for (unsigned s = 0; s < streams; ++s) {
            const unsigned r = row(s * part + i);
            out[counters.of[s][group[r]]++] = r;
        }
    }
    for (unsigned i = streams * part; i < count; ++i) {
        const unsigned r = row(i);
        out[counters.of[streams - 1][group[r]]++] = r;
    }
}

}  // namespace

void GroupPartition::Reset(unsigned groupCount, unsigned count, input_column groups, const unsigned* sel) {
    const unsigned stride = count + split_slack;
    if (m_rows.size() < groupCount * stride) m_rows.resize(groupCount * stride);
    const unsigned* group = groups.values<unsigned>();
    if (split_by_group(groupCount, count, group, sel, stride, m_rows.data(), m_counts)) {
        for (unsigned g = 0; g < groupCount; ++g) m_starts[g] = g * stride;
        return;
    }
    if (sel) {
        Split(
            groupCount, count, group, [sel](unsigned i) { return sel[i]; }, m_starts, m_counts, m_rows.data());
    } else {
        Split(
            groupCount, count, group, [](unsigned i) { return i; }, m_starts, m_counts, m_rows.data());
    }
}

input_column GroupPartition::GetNumbers(unsigned group) const {
    static constexpr unsigned numbers[maxGroups] = {0, 1, 2, 3, 4, 5, 6, 7};
    return input_column{&numbers[group], nullptr, sizeof(unsigned), 1, column_flags::not_null | column_flags::constant};
}

}  // namespace qve
