#pragma once

#include <cstdint>

#include "system/RefCntObject.h"

namespace qve {

/// Where a running operator reports how far it is, and learns that it was cancelled.
/// All operations may be called from any thread.
class ProgressCallback : public RefCntObject {
public:
    /// `first` and `last` bound the rows that will come (all ones: unknown); `done` of `total` units of work are done.
    virtual void SetProgress(uint64_t first, uint64_t last, uint64_t done, uint64_t total) = 0;
    virtual void GetProgress(uint64_t& first, uint64_t& last, uint64_t& done, uint64_t& total) const = 0;
    virtual void SetCancelled() = 0;
    virtual bool IsCancelled() const = 0;
};

}  // namespace qve
