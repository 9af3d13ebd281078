#pragma once

#include <tbb/concurrent_queue.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "server/protocol/QVE_Message.h"
#include "server/protocol/QVE_Value.h"
#include "types/usrprops.h"

namespace qve {

/// The rows that a client sends in messages of values, row after row. A block may end inside a row, which the next one
/// continues. A value that its column cannot take is null and counted; it never ends the scan.
class BinaryScan : public DataFlow {
public:
    /// A message that begins with the body of InsertPutValues: command, guid, count, values.
    struct Block : RefCntObject {
        QVE_Message message;
    };
    /// A null block is the end of the input.
    using Queue = tbb::concurrent_bounded_queue<RefCntPtr<Block>>;

    /// `columns` says of each column, in the order of the wire, at least `name` and the type. `queue` must outlive the
    /// scan. Throws QVE_InvalidArgument (status::BinaryScan_MakeInserter).
    BinaryScan(const std::vector<usrprops>& columns, Queue& queue);
    ~BinaryScan() override;

    void Accept(OperatorVisitor& visitor) override;
    uint64_t GetCursor() const override { return m_cursor.load(std::memory_order_relaxed); }
    uint64_t GetPreviousCursor() const override { return m_previousCursor; }
    /// The rows have been read once and for all: does nothing but at the beginning, else as DataFlow.
    void ResetCursor() override;
    /// Waits for blocks until the page is full or the input ends. Throws QVE_RuntimeError 40034 when it ends inside a
    /// row, 70004 to 70007 for a message that makes no sense, CancelledException after SetCancelled.
    unsigned Next(unsigned pageSize) override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

    /// Ends the scan with CancelledException at the Next that runs or comes. Any thread may call it.
    void SetCancelled();
    /// Values so far that their columns could not take. Between pages only.
    uint64_t GetErrors() const;

    /// Throws QVE_RuntimeError 70007 when `bytes` cannot hold so many values.
    static void CheckCount(uint64_t count, uint64_t bytes);

private:
    class Inserter;
    template <class T>
    class BuiltinInserter;
    class VarCharInserter;
    struct Partitioner;

    static std::unique_ptr<Inserter> MakeInserter(const usrprops& properties);
    const Inserter* Find(const std::wstring& name) const;
    /// Makes the next block with values the present one, or notes the end of the input.
    void NextBlock();

    Queue& m_queue;
    std::vector<std::unique_ptr<Inserter>> m_inserters;
    RefCntPtr<Block> m_block;
    std::vector<QVE_Value> m_values;  // of the block
    size_t m_position = 0;            // of the next value in the block
    size_t m_column = 0;              // that it belongs to
    bool m_ended = false;
    std::atomic<bool> m_cancelled{false};
    std::atomic<uint64_t> m_cursor{0};
    uint64_t m_previousCursor = 0;
    std::unique_ptr<Partitioner> m_partitioner;
};

}  // namespace qve
