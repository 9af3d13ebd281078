#pragma once

#include "algebra/ProgressCallbackImpl.h"
#include "system/RefCntPtr.h"

namespace qve {

/// One step of a larger job: reports as its share of the parent's work, and is cancelled when the parent is.
class BridgeProgressCallback : public ProgressCallbackImpl {
public:
    /// The step covers the units of the parent's work from `begin` to `end`. `parent` may be null.
    BridgeProgressCallback(RefCntPtr<ProgressCallback> parent, uint64_t begin, uint64_t end);

    void SetProgress(uint64_t first, uint64_t last, uint64_t done, uint64_t total) override;
    bool IsCancelled() const override;

private:
    const RefCntPtr<ProgressCallback> m_parent;
    const uint64_t m_begin;
    const uint64_t m_end;
};

}  // namespace qve
