#pragma once

#include <functional>
#include <thread>

namespace qve {

/// Turns SIGTERM and SIGINT into calls: a thread of its own waits for them, as a signal handler could do next to
/// nothing. The signals must be blocked in every thread: Block, before there is a second one.
class StopSignals {
public:
    /// Blocks the signals in the calling thread and those that it starts; until then their default holds. Also ignores
    /// SIGPIPE: a peer that leaves is an error of the write.
    static void Block();

    explicit StopSignals(std::function<void()> onStop);
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

private:
    void Wait(const std::function<void()>& onStop) const;

    int m_end = -1;  // of an event descriptor that the destructor raises
    std::thread m_thread;
};

}  // namespace qve
