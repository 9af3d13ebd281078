#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "algebra/DataFlow.h"

namespace qve {

class PageGatherer;

/// Gathers the selected rows of sparse pages in full ones, so that the operators above work on dense pages. A page ends
/// early where a column of the source takes another dictionary or wider tokens.
class Compact : public DataFlow {
public:
    /// Raises QVE_InvalidArgument 40057 when `source` is null.
    explicit Compact(RefCntPtr<DataFlow> source);
    ~Compact() override;

    void Accept(OperatorVisitor& visitor) override;
    /// Where the source stood at the first row of the page.
    uint64_t GetCursor() const override;
    uint64_t GetPreviousCursor() const override;
    void ResetCursor() override;
    unsigned Next(unsigned pageSize) override;
    /// Raises 40058.
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

private:
    bool NextSource(unsigned pageSize);

    std::vector<RefCntPtr<PageGatherer>> m_gatherers;
    unsigned m_filled = 0;                 // rows in the page
    std::atomic<uint64_t> m_outCursor{0};  // progress is asked for by other threads
    std::atomic<uint64_t> m_previousCursor{0};
    unsigned m_sourcePos = 0;     // among the selected rows of the source's page
    unsigned m_sourceExtent = 0;  // selected rows of the source's page
    bool m_sourceExhausted = false;
};

}  // namespace qve
