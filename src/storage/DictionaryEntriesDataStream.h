#pragma once

#include "storage/stream/DelegatedDataStream.h"

namespace qve {

/// The entries of a dictionary of fixed records, to read: all of the stream but the record of the null at its
/// beginning.
class DictionaryEntriesDataStream final : public DelegatedDataStream {
public:
    /// @param record bytes of a record
    DictionaryEntriesDataStream(RefCntPtr<DataStream> dictionary, uint64_t record);

    uint64_t GetSize() const override;
    uint64_t GetCursor() const override;
    uint64_t Seek(uint64_t position, uint64_t minimum) override;
    uint64_t Load(uint64_t position, uint64_t count) const override;
    RefCntPtr<DataStream> Fork(bool readOnly) override;
    bool CanExtend() const override { return false; }

private:
    const uint64_t m_record;
};

}  // namespace qve
