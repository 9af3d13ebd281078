#pragma once

namespace qve {

/// A stop watch. Not shared between threads.
class Timer {
public:
    explicit Timer(bool start = false);

    /// Goes on counting; nothing when it runs already.
    void Start();
    /// Keeps what was counted.
    void Stop();
    /// Back to zero; a running timer runs on from there.
    void Reset();
    /// Takes the running time into the sum.
    void Update();
    double ElapsedSec() const;
    double ElapsedMsec() const { return ElapsedSec() * 1000.0; }

    /// Seconds since the process started to use timers.
    static double GetApplicationElapsedSecs();

private:
    bool m_running = false;
    double m_accumulated = 0;
    double m_start = 0;
};

}  // namespace qve
