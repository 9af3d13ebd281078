#include "storage/DictionaryEntriesDataStream.h"

#include <algorithm>

namespace qve {

DictionaryEntriesDataStream::DictionaryEntriesDataStream(RefCntPtr<DataStream> dictionary, uint64_t record)
    : DelegatedDataStream(std::move(dictionary), "DictionaryEntriesDataStream"), m_record(record) {
    Seek(0, 0);
}

uint64_t DictionaryEntriesDataStream::GetSize() const {
    return GetDelegate()->GetSize() - std::min(GetDelegate()->GetSize(), m_record);
}

uint64_t DictionaryEntriesDataStream::GetCursor() const {
    return GetDelegate()->GetCursor() - std::min(GetDelegate()->GetCursor(), m_record);
}

uint64_t DictionaryEntriesDataStream::Seek(uint64_t position, uint64_t minimum) {
    return GetDelegate()->Seek(std::min(m_record, GetDelegate()->GetSize()) + position, minimum);
}

uint64_t DictionaryEntriesDataStream::Load(uint64_t position, uint64_t count) const {
    return GetDelegate()->Load(m_record + position, count);
}

RefCntPtr<DataStream> DictionaryEntriesDataStream::Fork(bool readOnly) {
    return MakeRef<DictionaryEntriesDataStream>(GetDelegate()->Fork(readOnly), m_record);
}

}  // namespace qve
