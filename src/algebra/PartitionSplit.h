#pragma once

#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/KeyChanges.h"
#include "types/usratom.h"

namespace qve {

/// Reads a flow in which equal values of a column lie side by side, one partition of equal values after the other: at
/// the end of each it seems to end, until Restart opens the next. Pages are those of the source, with a selection.
class PartitionSplit : public DataFlow {
public:
    /// Raises QVE_InvalidArgument 40344 when `source` is null, and 40345 when it has no such column or one whose cells
    /// cannot be compared.
    PartitionSplit(RefCntPtr<DataFlow> source, std::wstring column);
    ~PartitionSplit() override;

    void Accept(OperatorVisitor& visitor) override;
    void ResetCursor() override;
    /// The next rows of the partition; 0 at its end, and ever after.
    unsigned Next(unsigned pageSize) override;

    /// Opens the next partition, or leaves what is left of this one out. False when there is none.
    bool Restart(unsigned pageSize);
    /// Whether the partition is at its end, and another one is known to follow: LookupPartition gives its value.
    bool HasNext() const { return m_atEnd && !m_exhausted; }
    /// The value of the first row that Next has not given. The atom is valid until the next call.
    const usratom& LookupPartition() const;

    const std::wstring& GetColumnName() const { return m_column; }

private:
    bool NextPage(unsigned pageSize);
    unsigned SeekPartition(unsigned from) const;

    const std::wstring m_column;
    RefCntPtr<Column> m_key;
    KeyChanges m_changes;
    bool m_changing = false;  // the column is not one value for all rows
    const unsigned char* m_marks = nullptr;
    std::vector<unsigned> m_rows;  // the selected rows of the source's page
    unsigned m_position = 0;       // of the first that was not given
    bool m_begun = false;          // the partition's first row was seen
    bool m_atEnd = false;          // the next row begins another partition
    bool m_exhausted = false;
    mutable usratom m_value;
};

}  // namespace qve
