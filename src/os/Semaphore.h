#pragma once

#include <memory>

namespace qve {

/// A counting semaphore that begins at 0. Both operations from any thread.
class Semaphore {
public:
    virtual ~Semaphore() = default;
    /// Waits until the count is above 0, and takes one.
    virtual void Acquire() = 0;
    /// Adds one and wakes a waiter.
    virtual void Release() = 0;

    static std::unique_ptr<Semaphore> Construct();
};

}  // namespace qve
