#pragma once

#include <functional>
#include <thread>

#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"
#include "system/Runnable.h"

namespace qve {

/// A thread that runs a Runnable in a metrics context of its own. Starts at construction. An exception that leaves the
/// Runnable ends the process. When the last reference goes, a thread that was not joined runs on by itself.
class Thread : public RefCntObject {
public:
    explicit Thread(RefCntPtr<Runnable> body);
    ~Thread() override;
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    using id = std::thread::id;
    /// The thread's id while it is joinable, else that of no thread.
    id get_id() const noexcept { return m_thread.get_id(); }
    bool joinable() const noexcept { return m_thread.joinable(); }
    /// Waits for its end, the exit callbacks included. Once at most; only from another thread.
    void join();

    /// Runs `callback` when the calling thread ends, after those of AtEveryExit and in the reverse order of
    /// registration. Only on a thread that is a Thread; elsewhere it is dropped.
    static void AtExit(std::function<void()> callback);
    /// Runs `callback` at the end of every Thread, as layers above need it to let go of what they keep for each
    /// thread. Called while the program starts; the callbacks run in the order of registration. Must not throw.
    static void AtEveryExit(std::function<void()> callback);

private:
    std::thread m_thread;
};

}  // namespace qve
