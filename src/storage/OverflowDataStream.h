#pragma once

#include "storage/RunLengthDataStream.h"

namespace qve {

/// Watches a run-length stream while it is written: once it takes more than a ratio of the plain size, it does not pay
/// and Append throws QVE_OverflowError 40293. The cells of that Append are in the stream then.
class OverflowDataStream final : public DelegatedDataStream {
public:
    OverflowDataStream(RefCntPtr<RunLengthDataStream> delegate, double ratio);

    void Append(DataStream& from) override { AppendWindows(from); }
    void Append(const void* bytes, uint64_t count) override;
    /// What it watches: the stream to keep once all is written.
    const RefCntPtr<RunLengthDataStream>& GetWatched() const { return m_watched; }

private:
    RefCntPtr<RunLengthDataStream> m_watched;
    double m_ratio;
};

}  // namespace qve
