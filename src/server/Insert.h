#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ingest/BinaryScan.h"
#include "ingest/InsertRows.h"
#include "os/Thread.h"
#include "server/protocol/QVE_InterredValue.h"
#include "server/protocol/QVE_Message.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"

namespace qve {
class Database;
class FlowTable;
}  // namespace qve

namespace qve::Server {

/// Rows that a client sends to a table in messages. A thread turns them into columns while they come; the table gets
/// them at the commit, all or none, and nobody waits for the client until then. One thread at a time.
class Insert : public RefCntObject {
public:
    /// Into the named columns, or all when there are none. Throws QVE_RangeError (status::Insert_schema, Insert_table),
    /// what InsertRows throws.
    Insert(const std::vector<std::wstring>& columns, const std::wstring& table, const std::wstring& schema,
           RefCntPtr<Database> database, unsigned blockSize);
    /// Rolls back what was not committed.
    ~Insert() override;

    std::uint32_t GetColumnCount() const { return static_cast<std::uint32_t>(m_columns.size()); }
    /// Throws QVE_RangeError (status::Insert_column).
    QVE_PropertyList GetColumnProperties(std::uint32_t index) const;

    /// Writes what stands before the values in a message of the queue.
    static void InitMessage(QVE_Message& message, std::uint32_t count, std::uint64_t guid);
    /// Takes the content of a message. Waits while too many are on their way. Throws what the thread failed with, and
    /// QVE_RuntimeError (status::Insert_committed).
    void PushMessage(QVE_Message& message);
    /// Ends the input and adds the rows to the table. Throws what the thread or the adding fails with; the insert is
    /// rolled back then.
    void Commit();
    /// Nothing after a commit.
    void Rollback() noexcept;

    std::uint64_t GetTotalCalls() const { return m_totalCalls; }
    std::uint64_t GetTotalBytes() const { return m_totalBytes; }
    /// Rows, and values that their columns could not take and that became null; after the commit.
    std::uint64_t GetRows() const;
    std::uint64_t GetErrors() const { return m_scan->GetErrors(); }

private:
    class build_runnable;
    class build_thread;

    void RequireOpen() const;

    InsertRows m_rows;
    const std::vector<usrprops> m_columns;
    const unsigned m_blockSize;
    BinaryScan::Queue m_queue;
    const RefCntPtr<BinaryScan> m_scan;
    const RefCntPtr<FlowTable> m_received;
    std::unique_ptr<build_thread> m_thread;  // null when the insert has ended
    std::uint64_t m_totalCalls = 0;
    std::uint64_t m_totalBytes = 0;
};

}  // namespace qve::Server
