#pragma once

#include <mutex>
#include <vector>

#include "algebra/ProgressCallbackImpl.h"
#include "system/RefCntPtr.h"

namespace qve {

/// The steps of a pipeline as one: progress is the sum over the children, a cancel goes to all of them.
class PipelineProgressCallback : public ProgressCallbackImpl {
public:
    /// A child that is added after a cancel is cancelled at once.
    void AddChild(RefCntPtr<ProgressCallback> child);

    /// The sum over the children and what SetProgress put here; a bound that one of them does not know is not known.
    void GetProgress(uint64_t& first, uint64_t& last, uint64_t& done, uint64_t& total) const override;
    void SetCancelled() override;

private:
    mutable std::mutex m_mutex;
    std::vector<RefCntPtr<ProgressCallback>> m_children;
};

}  // namespace qve
