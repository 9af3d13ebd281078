#pragma once

#include "types/collation.h"

namespace qve {

/// The working copy of a collation for this thread, for the length of a loop.
class thread_collation {
public:
    explicit thread_collation(const collation* shared) : m_shared(shared), m_own(shared->allocate()) {}
    ~thread_collation() { m_shared->release(m_own); }
    thread_collation(const thread_collation&) = delete;
    thread_collation& operator=(const thread_collation&) = delete;

    const collation* operator->() const { return m_own; }
    const collation* get() const { return m_own; }

private:
    const collation* m_shared;
    const collation* m_own;
};

}  // namespace qve
