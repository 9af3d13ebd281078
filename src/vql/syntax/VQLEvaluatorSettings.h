#pragma once

#include <atomic>
#include <string>
#include <vector>

namespace qve {

/// The settings of query evaluation, process-wide. They stand this low because the lexer and the operators read some of
/// them; VQLQueryEvaluator inherits them, and is the name by which the rest of the system calls them.
/// Every getter and setter may be called from any thread; a change holds from the next evaluation on.
struct VQLEvaluatorSettings {
    /// The number of tokens that one text may have. Setting 0 stores 4294967295, which is the default.
    static unsigned GetMaxQueryTokenCount() { return s_maxQueryTokenCount.load(std::memory_order_relaxed); }
    static void SetMaxQueryTokenCount(unsigned count);

    /// Ceiling on the exchanges that run at one time; 0 until set at start-up.
    static unsigned GetMaxConcurrency() { return s_maxConcurrency.load(std::memory_order_relaxed); }
    static void SetMaxConcurrency(unsigned count) { s_maxConcurrency = count; }
    /// Wanted degree of parallelism of a query, 4 by default.
    static unsigned GetDefaultDegreeOfParallelism() {
        return s_defaultDegreeOfParallelism.load(std::memory_order_relaxed);
    }
    static void SetDefaultDegreeOfParallelism(unsigned degree) { s_defaultDegreeOfParallelism = degree; }
    /// Least degree of parallelism, also on a busy server; 2 by default.
    static unsigned GetMinimumDegreeOfParallelism() {
        return s_minimumDegreeOfParallelism.load(std::memory_order_relaxed);
    }
    static void SetMinimumDegreeOfParallelism(unsigned degree) { s_minimumDegreeOfParallelism = degree; }
    /// Whether the full parallelizer is chosen and not the simple one; on by default.
    static bool GetUseFullParallelism() { return s_useFullParallelism.load(std::memory_order_relaxed); }
    static void SetUseFullParallelism(bool on) { s_useFullParallelism = on; }
    /// Connection strings of servers that may take part in queries; none by default.
    static std::vector<std::wstring> GetRemoteServerDescs();
    static void SetRemoteServerDescs(std::vector<std::wstring> descriptions);

    /// Whether one hash table serves all producers of a parallel plan; on by default.
    static bool GetUseSharedHashing() { return s_useSharedHashing.load(std::memory_order_relaxed); }
    static void SetUseSharedHashing(bool on) { s_useSharedHashing = on; }
    /// Whether hash tables are built in parallel; off by default.
    static bool GetUseParallelHashing() { return s_useParallelHashing.load(std::memory_order_relaxed); }
    static void SetUseParallelHashing(bool on) { s_useParallelHashing = on; }
    /// Whether each operator gets a memory budget; on by default.
    static bool GetUseMemoryBudgeting() { return s_useMemoryBudgeting.load(std::memory_order_relaxed); }
    static void SetUseMemoryBudgeting(bool on) { s_useMemoryBudgeting = on; }
    /// Whether aggregates may merge groupings; off by default.
    static bool GetUseMergeGrouping() { return s_useMergeGrouping.load(std::memory_order_relaxed); }
    static void SetUseMergeGrouping(bool on) { s_useMergeGrouping = on; }
    /// Whether the simple parallelizer keeps the order of rows; off by default.
    static bool GetDefaultOrderPreservingExchange() {
        return s_bDefaultOrderPreservingExchange.load(std::memory_order_relaxed);
    }
    static void SetDefaultOrderPreservingExchange(bool on) { s_bDefaultOrderPreservingExchange = on; }
    /// Whether aggregates over sorted input run as ordered ones; on by default.
    static bool GetDefaultOrderedAggregates() { return s_bDefaultOrderedAggregates.load(std::memory_order_relaxed); }
    static void SetDefaultOrderedAggregates(bool on) { s_bDefaultOrderedAggregates = on; }
    /// Whether stored columns are encoded; on by default.
    static bool GetDefaultEncodings() { return s_bDefaultEncodings.load(std::memory_order_relaxed); }
    static void SetDefaultEncodings(bool on) { s_bDefaultEncodings = on; }
    /// Whether queries and plans are logged; off by default.
    static bool GetDefaultDetailedLogging() { return s_bDefaultDetailedLogging.load(std::memory_order_relaxed); }
    static void SetDefaultDetailedLogging(bool on) { s_bDefaultDetailedLogging = on; }
    /// Whether operators describe their execution; off by default.
    static bool GetDefaultDescribeExecution() { return s_bDefaultDescribeExecution.load(std::memory_order_relaxed); }
    static void SetDefaultDescribeExecution(bool on) { s_bDefaultDescribeExecution = on; }

    /// Whether the query is written to the stage log after each pass; off by default.
    static bool GetOptimizationLogging() { return s_bOptimizationLogging.load(std::memory_order_relaxed); }
    static void SetOptimizationLogging(bool on) { s_bOptimizationLogging = on; }
    /// Whether the stage log shows the derived properties of queries; off by default.
    static bool GetOptimizationPropertiesLogging() {
        return s_bOptimizationPropertiesLogging.load(std::memory_order_relaxed);
    }
    static void SetOptimizationPropertiesLogging(bool on) { s_bOptimizationPropertiesLogging = on; }
    /// Whether opening the stage log empties it; off by default.
    static bool GetTruncateOptimizationLog() { return s_bTruncateOptimizationLog.load(std::memory_order_relaxed); }
    static void SetTruncateOptimizationLog(bool on) { s_bTruncateOptimizationLog = on; }
    /// Path of the stage log, "vql_query_stages.vqloptlog" by default.
    static std::string GetOptimizationLogPath();
    static void SetOptimizationLogPath(std::string path);
    /// Whether parallelism is decided on the query tree and not on the operator tree; off by default.
    static bool GetUseLogicalParallelizer() { return s_bUseLogicalParallelizer.load(std::memory_order_relaxed); }
    static void SetUseLogicalParallelizer(bool on) { s_bUseLogicalParallelizer = on; }

private:
    static std::atomic<unsigned> s_maxQueryTokenCount, s_maxConcurrency, s_defaultDegreeOfParallelism,
        s_minimumDegreeOfParallelism;
    static std::atomic<bool> s_useFullParallelism, s_useSharedHashing, s_useParallelHashing, s_useMemoryBudgeting,
        s_useMergeGrouping, s_bDefaultOrderPreservingExchange, s_bDefaultOrderedAggregates, s_bDefaultEncodings,
        s_bDefaultDetailedLogging, s_bDefaultDescribeExecution, s_bOptimizationLogging,
        s_bOptimizationPropertiesLogging, s_bTruncateOptimizationLog, s_bUseLogicalParallelizer;
};

}  // namespace qve
