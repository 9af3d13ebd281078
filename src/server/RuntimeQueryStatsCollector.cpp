#include "server/RuntimeQueryStatsCollector.h"

#include <algorithm>
#include <cmath>

namespace qve::Server {

void RuntimeQueryStatsCollector::AddQueryStats(double compile, double execute) {
    std::lock_guard lock(m_mutex);
    ++m_sums.count;
    m_sums.compile += compile;
    m_sums.execute += execute;
    m_sums.compileSquares += compile * compile;
    m_sums.executeSquares += execute * execute;
}

void RuntimeQueryStatsCollector::Reset() {
    std::lock_guard lock(m_mutex);
    m_sums = {};
}

RuntimeQueryStatsCollector::Summary RuntimeQueryStatsCollector::GetSummary() const {
    Sums sums;
    {
        std::lock_guard lock(m_mutex);
        sums = m_sums;
    }
    if (sums.count == 0) return {};
    const auto count = static_cast<double>(sums.count);
    // Rounding may leave a little less than nothing.
    const auto deviation = [count](double sum, double squares) {
        const double mean = sum / count;
        return std::sqrt(std::max(0.0, squares / count - mean * mean));
    };
    return {sums.count, sums.compile / count, deviation(sums.compile, sums.compileSquares), sums.execute / count,
            deviation(sums.execute, sums.executeSquares)};
}

}  // namespace qve::Server
