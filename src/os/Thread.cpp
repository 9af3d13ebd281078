#include "os/Thread.h"

#include <memory>
#include <mutex>
#include <vector>

#include "metrics/Context.h"

namespace qve {

namespace {

using Callbacks = std::vector<std::function<void()>>;

thread_local Callbacks* t_exitCallbacks = nullptr;

struct EveryExit {
    std::mutex mutex;
    Callbacks callbacks;
};

// Never destroyed: threads that nobody joins may end while the process does.
EveryExit& every_exit() {
    static EveryExit* const instance = std::make_unique<EveryExit>().release();
    return *instance;
}

void run_exit_callbacks(Callbacks& own) {
    std::unique_lock lock(every_exit().mutex);
    const Callbacks shared = every_exit().callbacks;
    lock.unlock();
    for (const auto& callback : shared) callback();
    // A callback may register another one.
    while (!own.empty()) {
        const auto callback = std::move(own.back());
        own.pop_back();
        callback();
    }
}

void run_thread(RefCntPtr<Runnable> body, Metrics::UniqueMetricsContext context) {
    context.Open("Thread");
    Callbacks own;
    t_exitCallbacks = &own;
    body->Run();
    body.reset();
    run_exit_callbacks(own);
    t_exitCallbacks = nullptr;
}

}  // namespace

Thread::Thread(RefCntPtr<Runnable> body) : m_thread(run_thread, std::move(body), Metrics::UniqueMetricsContext()) {}

Thread::~Thread() {
    if (m_thread.joinable()) m_thread.detach();
}

void Thread::join() {
    m_thread.join();
}

void Thread::AtExit(std::function<void()> callback) {
    if (t_exitCallbacks) t_exitCallbacks->push_back(std::move(callback));
}

void Thread::AtEveryExit(std::function<void()> callback) {
    std::lock_guard lock(every_exit().mutex);
    every_exit().callbacks.push_back(std::move(callback));
}

}  // namespace qve
