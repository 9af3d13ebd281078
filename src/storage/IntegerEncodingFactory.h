#pragma once

#include "storage/EncodingFactory.h"
#include "storage/IntegerStatistics.h"

namespace qve {

class usrtype;

/// What the cells of a column mean, beside the numbers that they are encoded as.
enum class CellMeaning {
    integer,  // signed numbers, the least of which is null
    moment,   // dates, times and durations: numbers too, with a null of their own
    real,     // bit patterns, whose order says nothing
    token,    // entries of a dictionary; all ones is null
};

/// The factory of a column with cells of sizeof(T) bytes, taken as signed integers; T is char, short, int or long long.
template <class T>
class IntegerEncodingFactory final : public EncodingFactory {
public:
    IntegerEncodingFactory(uint64_t mask, unsigned block, CellMeaning meaning = CellMeaning::integer,
                           T null = IntegerStatistics<T>::Lowest);

    void UpdateBuffer(uint64_t bytes, const void* data) override;
    RefCntPtr<DataStream> ChooseEncoding() const override;
    void ExtractMetadata(const RefCntPtr<Column>& column) override;
    bool MinimiseIntegerType(const RefCntPtr<Column>& column) const override;
    bool MinimiseTokenWidth(const RefCntPtr<Column>& column) const override;

    const IntegerStatistics<T>& GetStatistics() const { return m_statistics; }

protected:
    uint64_t GetRowCount() const override { return m_statistics.GetCount(); }

private:
    bool Allows(uint64_t encoding) const { return (GetMask() & encoding) != 0 && m_statistics.GetCount() != 0; }

    /// The cells of `stream` in `width` bytes, which they all fit; encoded in place where the encoding allows that.
    RefCntPtr<DataStream> Narrow(RefCntPtr<DataStream> stream, const usrtype* type, unsigned width) const;

    const CellMeaning m_meaning;
    IntegerStatistics<T> m_statistics;
};

extern template class IntegerEncodingFactory<char>;
extern template class IntegerEncodingFactory<short>;
extern template class IntegerEncodingFactory<int>;
extern template class IntegerEncodingFactory<long long>;

}  // namespace qve
