#include "storage/IntegerStatistics.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "system/CPU.h"

namespace qve {

namespace {

// What a stretch of values contributes; `values[-1]` is the value before it.
template <class T>
struct Extremes {
    T minimum = std::numeric_limits<T>::max();
    T maximum = std::numeric_limits<T>::min();
    T minimumValue = std::numeric_limits<T>::max();  // nulls left out
    T maximumValue = std::numeric_limits<T>::min();
    T minimumDifference = std::numeric_limits<T>::max();
    T maximumDifference = std::numeric_limits<T>::min();
    T fell = 0;  // all ones once a value was below the one before
    T rose = 0;
    T null = 0;
    std::make_unsigned_t<T> changes = 0;  // how often a value was not the one before; wraps in the narrow types
};

template <class T>
[[gnu::always_inline]] inline Extremes<T> find_extremes(const T* values, unsigned count, T null) {
    using U = std::make_unsigned_t<T>;
    Extremes<T> e;
    for (unsigned i = 0; i < count; ++i) {
        const T value = values[i];
        const T before = values[static_cast<int>(i) - 1];
        const T difference = static_cast<T>(static_cast<U>(value) - static_cast<U>(before));
        const T valueOrMost = value == null ? std::numeric_limits<T>::max() : value;
        const T valueOrLeast = value == null ? std::numeric_limits<T>::min() : value;
        e.minimum = value < e.minimum ? value : e.minimum;
        e.maximum = value > e.maximum ? value : e.maximum;
        e.minimumValue = valueOrMost < e.minimumValue ? valueOrMost : e.minimumValue;
        e.maximumValue = valueOrLeast > e.maximumValue ? valueOrLeast : e.maximumValue;
        e.minimumDifference = difference < e.minimumDifference ? difference : e.minimumDifference;
        e.maximumDifference = difference > e.maximumDifference ? difference : e.maximumDifference;
        e.fell |= static_cast<T>(-(value < before));
        e.rose |= static_cast<T>(-(value > before));
        e.null |= static_cast<T>(-(value == null));
        e.changes = static_cast<U>(e.changes + (value != before));
    }
    return e;
}

// The same loop with wider registers, and comparisons of 64 bits that the base set lacks.
template <class T>
[[gnu::target("avx2")]] Extremes<T> find_extremes_avx2(const T* values, unsigned count, T null) {
    return find_extremes(values, count, null);
}

template <class T>
Extremes<T> find_extremes_plain(const T* values, unsigned count, T null) {
    return find_extremes(values, count, null);
}

template <class T>
Extremes<T> find_best(const T* values, unsigned count, T null) {
    static const auto function =
        CPU::IsVectFeatureEnabled() && __builtin_cpu_supports("avx2") ? find_extremes_avx2<T> : find_extremes_plain<T>;
    return function(values, count, null);
}

// Values that are looked at together: as many changes as fit the narrowest counter.
constexpr unsigned chunk = 255;
constexpr unsigned shortRun = 256;  // a longer one takes more than one record of the narrowest run field

}  // namespace

template <class T>
IntegerStatistics<T>::IntegerStatistics(bool countDistinct, T null)
    : m_null(null), m_minimumValue(std::numeric_limits<T>::max()), m_maximumValue(std::numeric_limits<T>::min()) {
    if (!countDistinct) m_encoder.GiveUp();
}

template <class T>
void IntegerStatistics<T>::Update(const char* cells, uint64_t count) {
    T values[chunk + 1];  // the value before, and a chunk: aligned, and still in the nearest cache for the second pass
    while (count > 0) {
        const unsigned n = static_cast<unsigned>(std::min<uint64_t>(count, chunk));
        std::memcpy(values + 1, cells, n * sizeof(T));
        if (m_count == 0) {
            m_first = m_minimum = m_maximum = m_last = values[1];
            m_minimumDifference = std::numeric_limits<T>::max();
            m_maximumDifference = std::numeric_limits<T>::min();
            m_hasNull = values[1] == m_null;
            if (!m_hasNull) m_minimumValue = m_maximumValue = values[1];
            m_encoder.Add(values[1]);
            m_count = m_runLength = 1;
            UpdateChunk(values + 2, n - 1);
        } else {
            values[0] = m_last;
            UpdateChunk(values + 1, n);
        }
        cells += n * sizeof(T);
        count -= n;
    }
}

template <class T>
void IntegerStatistics<T>::UpdateChunk(const T* values, unsigned count) {
    if (count == 0) return;
    const Extremes<T> e = find_best(values, count, m_null);
    m_minimum = std::min(m_minimum, e.minimum);
    m_maximum = std::max(m_maximum, e.maximum);
    m_minimumValue = std::min(m_minimumValue, e.minimumValue);
    m_maximumValue = std::max(m_maximumValue, e.maximumValue);
    m_minimumDifference = std::min(m_minimumDifference, e.minimumDifference);
    m_maximumDifference = std::max(m_maximumDifference, e.maximumDifference);
    m_hasNull |= e.null != 0;
    m_fell |= e.fell != 0;
    m_rose |= e.rose != 0;
    m_stayed |= e.changes < count;
    UpdateRuns(values, count, e.changes);
    if (m_encoder.IsComplete() && e.changes > 0) UpdateDistinct(values, count);
    m_last = values[count - 1];
    m_count += count;
}

template <class T>
void IntegerStatistics<T>::UpdateRuns(const T* values, unsigned count, unsigned changes) {
    if (m_runLength + (count - changes) <= shortRun) {
        // No run that ends here can be a long one, so that counting them is enough.
        m_shortRuns += changes;
        unsigned tail = 0;
        while (tail < count && values[count - 1 - tail] == values[static_cast<int>(count - 1 - tail) - 1]) ++tail;
        m_runLength = tail < count ? tail + 1 : m_runLength + count;
        return;
    }
    for (unsigned i = 0; i < count; ++i) {
        if (values[i] == values[static_cast<int>(i) - 1]) {
            ++m_runLength;
        } else {
            EndRun();
            m_runLength = 1;
        }
    }
}

template <class T>
void IntegerStatistics<T>::UpdateDistinct(const T* values, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        if (values[i] == values[static_cast<int>(i) - 1]) continue;
        if (m_encoder.Add(values[i]) == IntegerEncoder::noToken) return m_encoder.GiveUp();
    }
}

template <class T>
void IntegerStatistics<T>::EndRun() {
    if (m_runLength <= shortRun) {
        ++m_shortRuns;
        return;
    }
    m_longRuns[0] += ((m_runLength - 1) >> 8) + 1;
    m_longRuns[1] += ((m_runLength - 1) >> 16) + 1;
    m_longRuns[2] += ((m_runLength - 1) >> 32) + 1;
    m_longRuns[3] += 1;
}

template <class T>
uint64_t IntegerStatistics<T>::GetRuns(unsigned log) const {
    if (m_count == 0) return 0;
    const uint64_t open = log == 3 ? 1 : ((m_runLength - 1) >> (8u << log)) + 1;
    return m_shortRuns + m_longRuns[log] + open;
}

template class IntegerStatistics<char>;
template class IntegerStatistics<short>;
template class IntegerStatistics<int>;
template class IntegerStatistics<long long>;

}  // namespace qve
