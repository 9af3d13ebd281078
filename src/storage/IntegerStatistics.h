#pragma once

#include <cstdint>
#include <type_traits>

#include "storage/IntegerEncoder.h"

namespace qve {

/// What one pass over the values of an integer column tells. T is char, short, int or long long; the smallest T is the
/// null. Differences are wrapped to T.
template <class T>
class IntegerStatistics {
public:
    static constexpr unsigned runWidths = 4;

    /// @param countDistinct whether distinct values are counted, which is the dear part
    explicit IntegerStatistics(bool countDistinct);

    /// Adds `count` values. `cells` needs no alignment.
    void Update(const char* cells, uint64_t count);

    uint64_t GetCount() const { return m_count; }
    T GetFirst() const { return m_first; }
    T GetLast() const { return m_last; }
    /// Of all values, the null as a number among them. Only with a count above 0.
    T GetMinimum() const { return m_minimum; }
    T GetMaximum() const { return m_maximum; }
    bool HasNull() const { return m_count != 0 && m_minimum == Null; }
    /// Whether there is a value that is not null, and the least of those.
    bool HasValue() const { return m_count != 0 && m_maximum != Null; }
    T GetMinimumValue() const { return m_minimumValue; }
    /// Of all values less the one before. Only with a count above 1.
    T GetMinimumDifference() const { return m_minimumDifference; }
    T GetMaximumDifference() const { return m_maximumDifference; }
    /// No value is below (above) the one before; nulls count as the least.
    bool IsAscending() const { return !m_fell; }
    bool IsDescending() const { return !m_rose; }
    /// No value equals the one before.
    bool IsStrict() const { return !m_stayed; }
    /// The number of runs if a run field has 1 << `log` bytes.
    uint64_t GetRuns(unsigned log) const;
    /// Whether the distinct values were counted to the end, and how many there are, the null included.
    bool HasDistinct() const { return m_encoder.IsComplete(); }
    unsigned GetDistinct() const { return m_encoder.GetCount(); }

private:
    static constexpr T Null = static_cast<T>(std::make_unsigned_t<T>{1} << (sizeof(T) * 8 - 1));

    void UpdateChunk(const T* values, unsigned count);
    void UpdateRuns(const T* values, unsigned count);
    void EndRun();

    uint64_t m_count = 0;
    T m_first = 0;
    T m_last = 0;
    T m_minimum = 0;
    T m_maximum = 0;
    T m_minimumValue = 0;
    T m_minimumDifference = 0;
    T m_maximumDifference = 0;
    bool m_fell = false;
    bool m_rose = false;
    bool m_stayed = false;
    uint64_t m_runs[runWidths] = {};  // finished ones
    uint64_t m_runLength = 0;         // of the run that is going on
    IntegerEncoder m_encoder;
};

extern template class IntegerStatistics<char>;
extern template class IntegerStatistics<short>;
extern template class IntegerStatistics<int>;
extern template class IntegerStatistics<long long>;

}  // namespace qve
