#pragma once

#include <cstdint>
#include <vector>

#include "os/BudgetedMemory.h"
#include "os/SpillFile.h"
#include "system/RefCntPtr.h"
#include "types/input_column.h"

namespace qve {

class Column;
class DataStream;

/// Rows of a flow that are set aside by hash, to be read again one partition after the other: what belongs together is
/// then small enough for the caches, and for the memory budget. Rows lie packed in chunks, which stay in memory while
/// they leave half of the budget to others and go to a temporary file beyond it. Within a partition rows keep their
/// order.
///
/// A partition is read through the very columns of the flow, whose streams are replaced by pages of it meanwhile and
/// put back in the end. One thread.
class SpilledRows {
public:
    static constexpr unsigned partitionBits = 7;
    static constexpr unsigned partitions = 1u << partitionBits;
    /// How often what is in a partition can be split again.
    static constexpr unsigned levels = 32 / partitionBits;

    /// `columns` are the columns of the flow that are to be kept; those with one value for all rows need not be.
    /// `level` says which bits of the hash make the partition.
    SpilledRows(std::vector<RefCntPtr<Column>> columns, unsigned level);
    ~SpilledRows();

    /// Sets `count` rows of the flow's page aside. `hashes` holds unsigned 32-bit numbers by row, or one for all. Each
    /// row goes with its number in `sequence`, which is indexed by row and ascends; null stands for the numbers from
    /// `nextSequence` on, in the order of `rows`.
    void Add(unsigned count, const unsigned* rows, input_column hashes, const uint64_t* sequence,
             uint64_t nextSequence);

    /// Puts the first rows of a partition next.
    void StartPartition(unsigned partition);
    /// Puts the next rows of the partition into the flow's columns, at most `pageSize`, and returns how many; 0 at the
    /// end. Each row is read once.
    unsigned Next(unsigned pageSize);
    /// Of the rows that Next gave.
    const uint64_t* GetSequence() const { return m_sequence.data(); }
    /// Puts the flow's columns back.
    void Finish();

    uint64_t GetCount() const { return m_count; }
    uint64_t GetBytesInFile() const { return m_file.GetSize(); }

private:
    // How the columns were stored when rows were set aside.
    struct Layout {
        std::vector<unsigned> widths;
        std::vector<RefCntPtr<DataStream>> dictionaries;
        std::vector<unsigned> offsets;
        unsigned rowBytes;
        unsigned chunkRows;
    };
    struct Chunk {
        char* memory;       // null when it lies in the file
        uint64_t position;  // in the file
        unsigned rows;
        unsigned layout;
    };
    struct Partition {
        std::vector<Chunk> chunks;
        char* open = nullptr;  // of the last chunk
    };
    struct Streams {
        RefCntPtr<Column> column;
        RefCntPtr<Column> original;
        RefCntPtr<Column> page;
        unsigned char flags;
    };

    void UseLayout();
    void OpenChunk(Partition& partition);
    void CloseChunk(Partition& partition);
    char* TakeChunkMemory();
    void ShowLayout(const Layout& layout);

    const std::vector<RefCntPtr<Column>> m_columns;
    const unsigned m_shift;
    std::vector<Layout> m_layouts;
    std::vector<Partition> m_partitions;
    std::vector<budgeted_vector<char>> m_slabs;
    size_t m_slabUsed = 0;
    std::vector<char*> m_free;  // chunks that may be used again
    SpillFile m_file;
    uint64_t m_count = 0;
    std::vector<char*> m_places;
    std::vector<Streams> m_streams;
    unsigned m_partition = 0;
    size_t m_chunk = 0;
    unsigned m_row = 0;
    std::vector<char> m_read;
    const char* m_rows = nullptr;
    std::vector<uint64_t> m_sequence;
};

}  // namespace qve
