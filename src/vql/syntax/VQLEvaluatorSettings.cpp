#include "vql/syntax/VQLEvaluatorSettings.h"

#include <limits>
#include <mutex>

namespace qve {

std::atomic<unsigned> VQLEvaluatorSettings::s_maxQueryTokenCount{std::numeric_limits<unsigned>::max()};
std::atomic<unsigned> VQLEvaluatorSettings::s_maxConcurrency{0};
std::atomic<unsigned> VQLEvaluatorSettings::s_defaultDegreeOfParallelism{4};
std::atomic<unsigned> VQLEvaluatorSettings::s_minimumDegreeOfParallelism{2};
std::atomic<bool> VQLEvaluatorSettings::s_useFullParallelism{true};
std::atomic<bool> VQLEvaluatorSettings::s_useSharedHashing{true};
std::atomic<bool> VQLEvaluatorSettings::s_useParallelHashing{false};
std::atomic<bool> VQLEvaluatorSettings::s_useMemoryBudgeting{true};
std::atomic<bool> VQLEvaluatorSettings::s_useMergeGrouping{false};
std::atomic<bool> VQLEvaluatorSettings::s_bDefaultOrderPreservingExchange{false};
std::atomic<bool> VQLEvaluatorSettings::s_bDefaultOrderedAggregates{true};
std::atomic<bool> VQLEvaluatorSettings::s_bDefaultEncodings{true};
std::atomic<bool> VQLEvaluatorSettings::s_bDefaultDetailedLogging{false};
std::atomic<bool> VQLEvaluatorSettings::s_bDefaultDescribeExecution{false};
std::atomic<bool> VQLEvaluatorSettings::s_bOptimizationLogging{false};
std::atomic<bool> VQLEvaluatorSettings::s_bOptimizationPropertiesLogging{false};
std::atomic<bool> VQLEvaluatorSettings::s_bTruncateOptimizationLog{false};
std::atomic<bool> VQLEvaluatorSettings::s_bUseLogicalParallelizer{false};

namespace {

/// Settings that are more than one word.
struct TextSettings {
    std::mutex mutex;
    std::vector<std::wstring> remoteServers;
    std::string optimizationLogPath = "vql_query_stages.vqloptlog";
};

TextSettings& Texts() {
    static TextSettings settings;
    return settings;
}

}  // namespace

void VQLEvaluatorSettings::SetMaxQueryTokenCount(unsigned count) {
    s_maxQueryTokenCount = count ? count : std::numeric_limits<unsigned>::max();
}

std::vector<std::wstring> VQLEvaluatorSettings::GetRemoteServerDescs() {
    std::lock_guard lock(Texts().mutex);
    return Texts().remoteServers;
}

void VQLEvaluatorSettings::SetRemoteServerDescs(std::vector<std::wstring> descriptions) {
    std::lock_guard lock(Texts().mutex);
    Texts().remoteServers = std::move(descriptions);
}

std::string VQLEvaluatorSettings::GetOptimizationLogPath() {
    std::lock_guard lock(Texts().mutex);
    return Texts().optimizationLogPath;
}

void VQLEvaluatorSettings::SetOptimizationLogPath(std::string path) {
    std::lock_guard lock(Texts().mutex);
    Texts().optimizationLogPath = std::move(path);
}

}  // namespace qve
