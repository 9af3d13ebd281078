#include "server/Insert.h"

#include <algorithm>

#include "algebra/FlowTable.h"
#include "algebra/Scan.h"
#include "server/Datatype.h"
#include "server/column_properties.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/status.h"
#include "storage/Database.h"
#include "system/QuillonException.h"

namespace qve::Server {

namespace {

// Messages on their way to the thread: enough that neither side waits for the other for long.
constexpr std::ptrdiff_t queueLength = 4;

InsertRows FindTable(const std::wstring& table, const std::wstring& schema, const RefCntPtr<Database>& database) {
    if (!database->HasSchema(schema)) throw QVE_RangeError(status::Insert_schema, "Server::Insert: No such schema.");
    const std::vector<std::wstring> tables = database->GetTableNames(schema);
    if (std::find(tables.begin(), tables.end(), table) == tables.end()) {
        throw QVE_RangeError(status::Insert_table, "Server::Insert: No such table.");
    }
    return {database, schema, table};
}

}  // namespace

/// Turns the messages of the queue into columns.
class Insert::build_runnable : public Runnable {
public:
    build_runnable(RefCntPtr<FlowTable> table, unsigned blockSize, BinaryScan::Queue& queue)
        : m_table(std::move(table)), m_blockSize(blockSize), m_queue(queue) {}

    void Run() override {
        try {
            m_table->Build(m_blockSize);
        } catch (...) {
            {
                std::lock_guard lock(m_mutex);
                m_failure = std::current_exception();
            }
            // Nobody reads any more. There is one who sends, and who may be past the look at the failure: there is room
            // for that message now, and the next one is told.
            RefCntPtr<BinaryScan::Block> block;
            while (m_queue.try_pop(block)) block.reset();
        }
    }
    std::exception_ptr GetFailure() const {
        std::lock_guard lock(m_mutex);
        return m_failure;
    }

private:
    const RefCntPtr<FlowTable> m_table;
    const unsigned m_blockSize;
    BinaryScan::Queue& m_queue;
    mutable std::mutex m_mutex;
    std::exception_ptr m_failure;
};

class Insert::build_thread {
public:
    build_thread(RefCntPtr<FlowTable> table, unsigned blockSize, BinaryScan::Queue& queue)
        : m_body(MakeRef<build_runnable>(std::move(table), blockSize, queue)), m_thread(MakeRef<Thread>(m_body)) {}

    void wait() {
        if (m_thread->joinable()) m_thread->join();
    }
    void try_rethrow() const {
        if (const std::exception_ptr failure = m_body->GetFailure()) std::rethrow_exception(failure);
    }

private:
    const RefCntPtr<build_runnable> m_body;
    const RefCntPtr<Thread> m_thread;
};

Insert::Insert(const std::vector<std::wstring>& columns, const std::wstring& table, const std::wstring& schema,
               RefCntPtr<Database> database, unsigned blockSize)
    : m_rows(FindTable(table, schema, database)),
      m_columns(m_rows.DescribeColumns(columns)),
      m_blockSize(blockSize),
      m_scan(MakeRef<BinaryScan>(m_columns, m_queue)),
      m_received(MakeRef<FlowTable>(m_scan, 0)) {
    m_queue.set_capacity(queueLength);
    m_thread = std::make_unique<build_thread>(m_received, blockSize, m_queue);
}

Insert::~Insert() {
    Rollback();
}

QVE_PropertyList Insert::GetColumnProperties(std::uint32_t index) const {
    if (index >= m_columns.size()) {
        throw QVE_RangeError(status::Insert_column, "Server::Insert::GetColumnProperties: Bad column number");
    }
    const std::wstring* name = m_columns[index].get(usrpropkey::name);
    if (!name) {
        throw QVE_RangeError(status::Insert_column, "Server::Insert::GetColumnProperties: Column has no name");
    }
    return ExportColumnProperties(*name, GetDatatype(m_columns[index]), m_columns[index]);
}

void Insert::InitMessage(QVE_Message& message, std::uint32_t count, std::uint64_t guid) {
    QVE_OutputIterator out(message);
    out.WriteCommand(QVE_Command::InsertPutValues);
    out.WriteGuid(guid);
    out.WriteU32(count);
}

void Insert::RequireOpen() const {
    if (!m_thread) throw QVE_RuntimeError(status::Insert_committed, "insert already committed or rolled back");
}

void Insert::PushMessage(QVE_Message& message) {
    RequireOpen();
    m_thread->try_rethrow();
    ++m_totalCalls;
    m_totalBytes += message.size();
    auto block = MakeRef<BinaryScan::Block>();
    block->message.swap(message);
    m_queue.push(std::move(block));
}

void Insert::Commit() {
    RequireOpen();
    m_queue.push(nullptr);
    m_thread->wait();
    const std::unique_ptr<build_thread> ended = std::move(m_thread);
    ended->try_rethrow();
    m_rows.Execute(MakeRef<Scan>(m_received), m_blockSize, nullptr);
}

void Insert::Rollback() noexcept {
    if (!m_thread) return;
    m_scan->SetCancelled();
    m_thread->wait();
    m_thread.reset();
}

std::uint64_t Insert::GetRows() const {
    return m_received->GetCount();
}

}  // namespace qve::Server
