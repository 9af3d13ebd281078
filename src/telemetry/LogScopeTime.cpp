#include "telemetry/LogScopeTime.h"

#include "telemetry/LogEntry.h"

namespace qve {

LogScopeTime::LogScopeTime(const char* name, double threshold, uint64_t number)
    : m_name(name), m_threshold(threshold), m_number(number), m_start(std::chrono::steady_clock::now()) {}

LogScopeTime::~LogScopeTime() {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - m_start;
    if (elapsed.count() >= m_threshold)
        LogEntry() << "LogScopeTime: " << m_name << ", " << m_number << ", " << elapsed.count();
}

}  // namespace qve
