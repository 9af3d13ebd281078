#pragma once

#include <cstdint>
#include <type_traits>

#include "storage/IntegerEncoder.h"

namespace qve {

/// What one pass over the cells of a column tells, taken as integers. T is char, short, int or long long. Differences
/// are wrapped to T.
template <class T>
class IntegerStatistics {
public:
    static constexpr unsigned runWidths = 4;

    /// The null of the integer types.
    static constexpr T Lowest = static_cast<T>(std::make_unsigned_t<T>{1} << (sizeof(T) * 8 - 1));

    /// @param countDistinct whether distinct values are counted, which is the dear part
    /// @param null the cell that means null
    explicit IntegerStatistics(bool countDistinct, T null = Lowest);

    /// Adds `count` values. `cells` needs no alignment.
    void Update(const char* cells, uint64_t count);

    uint64_t GetCount() const { return m_count; }
    T GetFirst() const { return m_first; }
    T GetLast() const { return m_last; }
    /// Of all values, the null as a number among them. Only with a count above 0.
    T GetMinimum() const { return m_minimum; }
    T GetMaximum() const { return m_maximum; }
    bool HasNull() const { return m_hasNull; }
    /// Whether there is a value that is not null, and the least and the greatest of those.
    bool HasValue() const { return m_minimumValue <= m_maximumValue; }
    T GetMinimumValue() const { return m_minimumValue; }
    T GetMaximumValue() const { return m_maximumValue; }
    /// Of all values less the one before. Only with a count above 1.
    T GetMinimumDifference() const { return m_minimumDifference; }
    T GetMaximumDifference() const { return m_maximumDifference; }
    /// No value is below (above) the one before; nulls count as the number that they are.
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
    void UpdateChunk(const T* values, unsigned count);
    void UpdateRuns(const T* values, unsigned count, unsigned changes);
    void UpdateDistinct(const T* values, unsigned count);
    void EndRun();

    T m_null;
    bool m_hasNull = false;
    uint64_t m_count = 0;
    T m_first = 0;
    T m_last = 0;
    T m_minimum = 0;
    T m_maximum = 0;
    T m_minimumValue;
    T m_maximumValue;
    T m_minimumDifference = 0;
    T m_maximumDifference = 0;
    bool m_fell = false;
    bool m_rose = false;
    bool m_stayed = false;
    uint64_t m_shortRuns = 0;             // finished ones that fit every run field
    uint64_t m_longRuns[runWidths] = {};  // what the finished others take in each
    uint64_t m_runLength = 0;             // of the run that is going on
    IntegerEncoder m_encoder;
};

extern template class IntegerStatistics<char>;
extern template class IntegerStatistics<short>;
extern template class IntegerStatistics<int>;
extern template class IntegerStatistics<long long>;

}  // namespace qve
