#pragma once

#include <atomic>

namespace qve {

/// Base of all shared objects: an intrusive reference count, starting at 0.
/// Held through RefCntPtr; AddRef and Release may be called from any thread.
class RefCntObject {
public:
    RefCntObject() = default;
    /// A copy is a new object: it starts with a count of its own.
    RefCntObject(const RefCntObject&) noexcept {}
    RefCntObject& operator=(const RefCntObject&) noexcept { return *this; }
    virtual ~RefCntObject() = default;

    void AddRef() const noexcept { m_refCount.fetch_add(1, std::memory_order_relaxed); }
    void Release() const noexcept {
        if (m_refCount.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }
    /// The count at some moment; for assertions and tests.
    unsigned GetRefCount() const noexcept { return m_refCount.load(std::memory_order_relaxed); }

private:
    mutable std::atomic<unsigned> m_refCount{0};
};

}  // namespace qve
