#pragma once

#include <functional>
#include <mutex>
#include <thread>

namespace qve::cli {

/// Ctrl-C: while a statement runs it is cancelled; between statements the program is asked to stop. One object for the
/// program, on its first thread.
class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// Sends Ctrl-C to `cancel`, on a thread of its own, for the life of the object.
    class Running {
    public:
        Running(Interrupt& interrupt, std::function<void()> cancel);
        ~Running();
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

    private:
        Interrupt& m_interrupt;
    };

    /// Keeps Ctrl-C away from threads that are started during its life: it is for the first one.
    class Shield {
    public:
        Shield();
        ~Shield();
        Shield(const Shield&) = delete;
        Shield& operator=(const Shield&) = delete;
    };

    /// Whether Ctrl-C came while nothing ran, since the last call.
    static bool TakeRequest();

private:
    void Watch();

    int m_ends[2] = {-1, -1};
    std::mutex m_mutex;
    std::function<void()> m_cancel;
    std::thread m_thread;
};

}  // namespace qve::cli
