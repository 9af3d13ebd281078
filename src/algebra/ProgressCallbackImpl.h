#pragma once

#include <atomic>

#include "system/ProgressCallback.h"

namespace qve {

/// Keeps the counters and the cancelled flag.
class ProgressCallbackImpl : public ProgressCallback {
public:
    void SetProgress(uint64_t first, uint64_t last, uint64_t done, uint64_t total) override;
    void GetProgress(uint64_t& first, uint64_t& last, uint64_t& done, uint64_t& total) const override;
    void SetCancelled() override;
    bool IsCancelled() const override;

private:
    std::atomic<uint64_t> m_first{0};
    std::atomic<uint64_t> m_last{0};
    std::atomic<uint64_t> m_done{0};
    std::atomic<uint64_t> m_total{0};
    std::atomic<bool> m_cancelled{false};
};

}  // namespace qve
