#include "os/Timer.h"

#include <chrono>

namespace qve {

namespace {

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

const double s_applicationStart = now();

}  // namespace

Timer::Timer(bool start) {
    if (start) Start();
}

void Timer::Start() {
    if (m_running) return;
    m_start = now();
    m_running = true;
}

void Timer::Stop() {
    Update();
    m_running = false;
}

void Timer::Reset() {
    m_accumulated = 0;
    m_start = now();
}

void Timer::Update() {
    if (!m_running) return;
    const double time = now();
    m_accumulated += time - m_start;
    m_start = time;
}

double Timer::ElapsedSec() const {
    return m_running ? m_accumulated + (now() - m_start) : m_accumulated;
}

double Timer::GetApplicationElapsedSecs() {
    return now() - s_applicationStart;
}

}  // namespace qve
