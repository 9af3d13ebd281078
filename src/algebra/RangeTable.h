#pragma once

#include <atomic>
#include <cstdint>

#include "algebra/DelegatedTable.h"

namespace qve {

/// Some consecutive rows of a table.
class RangeTable : public DelegatedTable {
public:
    /// At most `count` rows from row `first` on, counted from 0 within `table`; fewer where it ends before.
    RangeTable(RefCntPtr<Table> table, uint64_t first, uint64_t count);

    uint64_t GetStart() const override;
    /// 0 before Build.
    uint64_t GetCount() const override;
    uint64_t Build(unsigned pageSize) override;

    const RefCntPtr<Table>& GetSource() const { return m_delegate; }

protected:
    explicit RangeTable(RefCntPtr<Table> table);
    /// Sets the rows from `first` to `end` of the built table.
    void SetRange(uint64_t first, uint64_t end);
    bool IsBuilt() const { return m_built; }

private:
    uint64_t m_first = 0;
    uint64_t m_most = 0;
    std::atomic<uint64_t> m_count{0};  // progress is asked for by other threads
    bool m_built = false;
};

}  // namespace qve
