#include "server/ipc/IPC_AsynchronousHandler.h"

#include <chrono>

namespace qve {

void IPC_AsynchronousHandler::Notify() {
    std::lock_guard lock(m_mutex);
    ++m_count;
    m_notified.notify_one();
}

bool IPC_AsynchronousHandler::WaitForNotification(int milliseconds) {
    std::unique_lock lock(m_mutex);
    const auto notified = [this] { return m_count != 0; };
    if (milliseconds < 0) {
        m_notified.wait(lock, notified);
    } else if (!m_notified.wait_for(lock, std::chrono::milliseconds(milliseconds), notified)) {
        return false;
    }
    --m_count;
    return true;
}

}  // namespace qve
