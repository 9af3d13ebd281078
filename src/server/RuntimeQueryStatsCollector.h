#pragma once

#include <mutex>

#include "system/RefCntObject.h"

namespace qve::Server {

/// Running sums of statement timings. Any thread.
class RuntimeQueryStatsCollector : public RefCntObject {
public:
    struct Summary {
        unsigned long long count = 0;
        double averageCompile = 0;  ///< seconds, like the others
        double deviationCompile = 0;
        double averageExecute = 0;
        double deviationExecute = 0;
    };

    /// Adds one execution; both times in seconds.
    void AddQueryStats(double compile, double execute);
    void Reset();
    /// All zero before the first execution.
    Summary GetSummary() const;

private:
    struct Sums {
        unsigned long long count = 0;
        double compile = 0;
        double execute = 0;
        double compileSquares = 0;
        double executeSquares = 0;
    };
    mutable std::mutex m_mutex;
    Sums m_sums;
};

}  // namespace qve::Server
