#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/Exp.h"

namespace qve {

class PageGatherer;

/// Sorts the rows of a flow by the remainder of a number, so that a page holds rows of one cluster only, and what is
/// indexed by the number is touched a part at a time. The rows of a cluster keep their order. Rows that wait for their
/// page to fill are limited in number.
class ClusteringFlow : public DataFlow {
public:
    /// `number` is an expression over `source` with an integer result; a row is in the cluster that is its value modulo
    /// `clusters`, a null in the first. At most about `limit` rows wait. Raises QVE_InvalidArgument 40145 when `source`
    /// is null, and 40146 when `number` is null or there is no cluster.
    ClusteringFlow(RefCntPtr<DataFlow> source, RefCntPtr<Exp> number, unsigned clusters, unsigned long long limit);
    ~ClusteringFlow() override;

    /// How many rows may wait for each cluster where nothing else is said.
    static constexpr unsigned long long rowsOfCluster = 4096;

    void Accept(OperatorVisitor& visitor) override;
    /// Where the source stood at the first row of the page.
    uint64_t GetCursor() const override;
    uint64_t GetPreviousCursor() const override;
    /// Raises QVE_OutOfRange 40147 when the source cannot be rewound.
    void ResetCursor() override;
    /// The next page of the cluster that has the most rows waiting.
    unsigned Next(unsigned pageSize) override;
    /// Raises 40148.
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

    const RefCntPtr<Exp>& GetNumber() const { return m_number; }
    unsigned GetClusterCount() const { return static_cast<unsigned>(m_queues.size()); }
    unsigned long long GetLimit() const { return m_limit; }
    /// The cluster that the rows of the present page are in.
    unsigned GetCluster() const { return m_cluster; }

private:
    /// Rows of a cluster: one gatherer for each column.
    struct Page {
        std::vector<RefCntPtr<PageGatherer>> columns;
        unsigned rows = 0;
        uint64_t cursor = 0;
        bool closed = false;  // its rows and the next ones have different dictionaries
    };
    struct Queue {
        std::deque<Page> pages;
        uint64_t rows = 0;
    };

    bool NextBlock(unsigned pageSize);
    void DistributeTuples(unsigned pageSize);
    void Add(Queue& queue, const unsigned* rows, unsigned count, unsigned pageSize);
    Page& OpenPage(Queue& queue, unsigned pageSize);
    Page TakePage();
    unsigned ShowPage(unsigned pageSize);
    bool HasReadyQueue() const { return m_full > 0 || m_waiting >= m_limit; }

    const RefCntPtr<Exp> m_number;
    const RefCntPtr<Exp> m_remainder;
    const unsigned long long m_limit;
    std::vector<Queue> m_queues;
    std::vector<Page> m_free;
    Page m_shown;
    unsigned m_shownFrom = 0;  // rows of it that were given
    unsigned m_cluster = 0;
    unsigned m_full = 0;  // pages that take no more rows
    uint64_t m_waiting = 0;
    bool m_bound = false;
    bool m_exhausted = false;
    std::vector<unsigned> m_starts;
    std::vector<unsigned> m_rows;
    std::atomic<uint64_t> m_cursor{0};  // progress is asked for by other threads
    std::atomic<uint64_t> m_previousCursor{0};
};

}  // namespace qve
