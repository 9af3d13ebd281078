#pragma once

#include "storage/EncodingFactory.h"
#include "storage/IntegerStatistics.h"

namespace qve {

/// The factory of a column of signed integers of sizeof(T) bytes; T is char, short, int or long long.
template <class T>
class IntegerEncodingFactory final : public EncodingFactory {
public:
    IntegerEncodingFactory(uint64_t mask, unsigned block);

    void UpdateBuffer(uint64_t bytes, const void* data) override;
    RefCntPtr<DataStream> ChooseEncoding() const override;
    void ExtractMetadata(const RefCntPtr<Column>& column) override;
    bool MinimiseIntegerType(const RefCntPtr<Column>& column) const override;

    const IntegerStatistics<T>& GetStatistics() const { return m_statistics; }

protected:
    uint64_t GetRowCount() const override { return m_statistics.GetCount(); }

private:
    bool Allows(uint64_t encoding) const { return (GetMask() & encoding) != 0 && m_statistics.GetCount() != 0; }

    IntegerStatistics<T> m_statistics;
};

extern template class IntegerEncodingFactory<char>;
extern template class IntegerEncodingFactory<short>;
extern template class IntegerEncodingFactory<int>;
extern template class IntegerEncodingFactory<long long>;

}  // namespace qve
