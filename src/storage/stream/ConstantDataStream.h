#pragma once

#include "storage/stream/DelegatedDataStream.h"

namespace qve {

/// Repeats the bytes of another stream for ever: any position reads the same bytes. For a column whose rows are equal.
class ConstantDataStream final : public DelegatedDataStream {
public:
    explicit ConstantDataStream(RefCntPtr<DataStream> delegate);

    uint64_t Seek(uint64_t position, uint64_t minimum) override;
    RefCntPtr<DataStream> Fork(bool readOnly) override;
    bool CanExtend() const override { return false; }
    void Extend(uint64_t count) override;
    void Resize(uint64_t size) override;
    void Append(DataStream& from) override;
    void Append(const void* bytes, uint64_t count) override;
};

}  // namespace qve
