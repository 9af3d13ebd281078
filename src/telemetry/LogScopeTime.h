#pragma once

#include <chrono>
#include <cstdint>

namespace qve {

/// Logs how long its scope took, if that was not below a threshold: "LogScopeTime: ", name, number, seconds.
class LogScopeTime {
public:
    /// @param name a literal, or what outlives the scope
    /// @param threshold seconds
    /// @param number reported beside the name, as a count of rows or bytes
    explicit LogScopeTime(const char* name, double threshold = 0, uint64_t number = 0);
    ~LogScopeTime();
    LogScopeTime(const LogScopeTime&) = delete;
    LogScopeTime& operator=(const LogScopeTime&) = delete;

    void SetNumber(uint64_t number) { m_number = number; }

private:
    const char* m_name;
    double m_threshold;
    uint64_t m_number;
    std::chrono::steady_clock::time_point m_start;
};

}  // namespace qve
