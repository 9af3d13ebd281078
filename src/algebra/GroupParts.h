#pragma once

#include <cstdint>
#include <vector>

#include "system/RefCntPtr.h"

namespace qve {

class Column;
class DataStream;
class ProgressCallback;

/// The groups of an aggregation that is done in parts: the finished parts one behind the other, and in the end all
/// groups in the order in which they were first seen. Works by sequential passes over temporary streams.
class GroupParts {
public:
    /// `columns` are the output columns of the aggregation: they hold the groups of the part at work.
    explicit GroupParts(std::vector<RefCntPtr<Column>> columns);
    ~GroupParts();

    /// Takes the first `groups` rows of the columns, and leaves them empty. `sequence` has for each group the number by
    /// which it is ordered, different from those of all parts; null stands for the numbers from 0 on. Throws
    /// CancelledException when `progress`, which may be null, says so.
    void Add(uint64_t groups, const uint64_t* sequence, const ProgressCallback* progress);
    /// Puts all groups into the columns, by ascending number; the numbers are below `end`. As Add does, asks
    /// `progress`.
    void Merge(uint64_t end, const ProgressCallback* progress);

    /// Groups of all parts so far.
    uint64_t GetCount() const { return m_count; }
    size_t GetPartCount() const { return m_parts.size(); }

private:
    struct Part {
        uint64_t next;  // group among those of all parts
        uint64_t end;
    };

    const std::vector<RefCntPtr<Column>> m_columns;
    std::vector<RefCntPtr<DataStream>> m_cells;
    RefCntPtr<DataStream> m_sequence;
    std::vector<Part> m_parts;
    uint64_t m_count = 0;
};

}  // namespace qve
