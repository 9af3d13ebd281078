#pragma once

#include <atomic>
#include <mutex>

#include "system/ProgressCallback.h"
#include "system/RefCntPtr.h"

namespace qve {

/// Passes everything on to a delegate, if there is one. A cancel that comes while there is none is kept for the next.
class DelegatedProgressCallback : public ProgressCallback {
public:
    DelegatedProgressCallback() = default;
    explicit DelegatedProgressCallback(RefCntPtr<ProgressCallback> delegate);

    void SetProgress(uint64_t first, uint64_t last, uint64_t done, uint64_t total) override;
    /// All 0 without a delegate.
    void GetProgress(uint64_t& first, uint64_t& last, uint64_t& done, uint64_t& total) const override;
    void SetCancelled() override;
    bool IsCancelled() const override;

    RefCntPtr<ProgressCallback> GetDelegate() const;
    /// Returns the delegate of before.
    RefCntPtr<ProgressCallback> SetDelegate(RefCntPtr<ProgressCallback> delegate);

    /// Puts another delegate in place for a scope.
    class RestoreDelegate {
    public:
        RestoreDelegate(DelegatedProgressCallback& callback, RefCntPtr<ProgressCallback> delegate);
        ~RestoreDelegate();
        RestoreDelegate(const RestoreDelegate&) = delete;
        RestoreDelegate& operator=(const RestoreDelegate&) = delete;

    private:
        DelegatedProgressCallback& m_callback;
        RefCntPtr<ProgressCallback> m_previous;
    };

private:
    mutable std::mutex m_mutex;
    RefCntPtr<ProgressCallback> m_delegate;
    std::atomic<bool> m_cancelled{false};
};

}  // namespace qve
