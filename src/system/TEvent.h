#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace qve {

/// A flag that threads wait for. Manual reset: once set it lets everyone through until Reset.
class TEvent {
public:
    void Set() {
        std::lock_guard lock(m_mutex);
        m_set = true;
        m_changed.notify_all();
    }
    void Reset() {
        std::lock_guard lock(m_mutex);
        m_set = false;
    }
    bool IsSet() const {
        std::lock_guard lock(m_mutex);
        return m_set;
    }
    void Wait() const {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_set; });
    }
    /// False when `timeout` passed first.
    bool WaitFor(std::chrono::milliseconds timeout) const {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, timeout, [this] { return m_set; });
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    bool m_set = false;
};

}  // namespace qve
