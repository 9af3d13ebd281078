#pragma once

#include "storage/stream/DelegatedDataStream.h"

namespace qve {

/// Another stream, which cannot be changed through this one.
class ReadOnlyDataStream final : public DelegatedDataStream {
public:
    explicit ReadOnlyDataStream(RefCntPtr<DataStream> delegate);

    char* GetOutput(uint64_t offset) override;
    RefCntPtr<DataStream> Fork(bool readOnly) override;
    bool CanExtend() const override { return false; }
    void Extend(uint64_t count) override;
    void Resize(uint64_t size) override;
    void Append(DataStream& from) override;
    /// Throws std::invalid_argument unless `count` is 0.
    void Append(const void* bytes, uint64_t count) override;
};

}  // namespace qve
