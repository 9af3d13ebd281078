#pragma once

#include <condition_variable>
#include <mutex>

namespace qve {

/// Where a thread sleeps until the network thread has news. Notifications are counted: none is lost.
class IPC_AsynchronousHandler {
public:
    /// From any thread.
    void Notify();
    /// Takes one notification, waiting up to `milliseconds` for it; negative: without end. False: none came.
    bool WaitForNotification(int milliseconds);

private:
    std::mutex m_mutex;
    std::condition_variable m_notified;
    unsigned long long m_count = 0;
};

}  // namespace qve
