#include "cli/Session.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include "cli/TextRows.h"
#include "cli/value_text.h"

namespace qve::cli {
namespace {

constexpr uint64_t s_unknown = ~uint64_t{0};
constexpr std::size_t s_transferPiece = std::size_t{4} << 20;  // bytes

/// Between the pieces of a long transfer.
void StopWhenInterrupted() {
    if (Interrupt::TakeRequest()) throw Failure(QVE_CANCELLED, "interrupted");
}

/// The texts of an error, and the handle's end.
std::string TextOf(QVE_ErrorInfo* raw) {
    const ErrorInfoHandle info(raw);
    uint32_t count = 0;
    if (!info || QVE_ErrorInfoGetCount(info.get(), &count) != QVE_OK) return {};
    std::string texts;
    for (uint32_t i = 0; i < count; ++i) {
        QVE_Status status = 0;
        const char* text = nullptr;
        if (QVE_ErrorInfoGetError(info.get(), i, &status, &text) != QVE_OK) continue;
        if (!texts.empty()) texts += "\n";
        texts += text;
    }
    return texts;
}

/// For failures that happen before there is a place that keeps their texts.
void CheckOpened(QVE_Status status) {
    if (status != QVE_OK) throw Failure(status, "out of memory");
}

/// What the import of a column refused, as its properties say.
void ReadRejections(QVE_Properties& properties, ResultColumn& column) {
    uint32_t count = 0;
    QVE_PropertiesGetCount(&properties, &count);
    for (uint32_t i = 0; i < count; ++i) {
        QVE_Value key;
        QVE_Value value;
        uint64_t number = 0;
        if (QVE_PropertiesGetProperty(&properties, i, &key, &value) != QVE_OK || value.size != sizeof number) continue;
        std::memcpy(&number, value.data, sizeof number);
        const std::string name = ValueText(key);
        if (name == "count-errors") column.rejected = number;
        if (name == "first-error") column.firstRejected = number;
    }
}

/// Asks how far a statement is until its end.
class Watcher {
public:
    Watcher(QVE_Statement* statement, const Session::Watch& watch) {
        if (!watch) return;
        const Interrupt::Shield shield;
        m_thread = std::thread([this, statement, &watch] {
            constexpr std::chrono::milliseconds period(100);
            std::unique_lock lock(m_mutex);
            while (!m_wake.wait_for(lock, period, [this] { return m_ended; })) {
                QVE_Progress progress;
                lock.unlock();
                if (QVE_StatementEstimateProgress(statement, &progress) == QVE_OK) watch(progress);
                lock.lock();
            }
        });
    }
    ~Watcher() {
        if (!m_thread.joinable()) return;
        {
            std::lock_guard lock(m_mutex);
            m_ended = true;
        }
        m_wake.notify_one();
        m_thread.join();
    }
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

private:
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_ended = false;
    std::thread m_thread;
};

}  // namespace

Session::Session(const ServerChoice& choice, Interrupt& interrupt) : m_interrupt(interrupt) {
    const Interrupt::Shield shield;
    const char* descriptor = choice.connect.c_str();
    if (choice.connect.empty()) {
        StartServer(choice);
        QVE_ServerProcessGetConnectionDescriptor(m_server.get(), &descriptor);
    }
    QVE_Connection* connection = nullptr;
    CheckOpened(QVE_ConnectionOpen(&connection));
    m_connection.reset(connection);
    Check(QVE_ConnectionConnect(connection, descriptor));
}

void Session::StartServer(const ServerChoice& choice) {
    QVE_ServerProcess* server = nullptr;
    CheckOpened(QVE_ServerProcessOpen(&server));
    m_server.reset(server);
    QVE_ServerProcessOptions options = {};
    options.path = choice.program.c_str();
    options.log = choice.log.c_str();
    const QVE_Status status = QVE_ServerProcessStart(server, &options);
    if (status == QVE_OK) return;
    QVE_ErrorInfo* info = nullptr;
    QVE_ServerProcessGetErrorInfo(server, &info);
    throw Failure(status, TextOf(info));
}

void Session::Check(QVE_Status status) const {
    if (status == QVE_OK) return;
    QVE_ErrorInfo* info = nullptr;
    QVE_GetErrorInfo(m_connection.get(), &info);
    throw Failure(status, TextOf(info));
}

void Session::Upload(std::istream& bytes, uint64_t size, const std::string& path, const Watch& watch) {
    QVE_Upload* raw = nullptr;
    Check(QVE_DatabaseUploadOpen(m_connection.get(), path.c_str(), &raw));
    const UploadHandle upload(raw);
    Check(QVE_UploadSetSize(raw, size));
    std::vector<char> piece(s_transferPiece);
    for (uint64_t sent = 0; sent < size;) {
        StopWhenInterrupted();
        const uint64_t count = std::min<uint64_t>(piece.size(), size - sent);
        if (!bytes.read(piece.data(), static_cast<std::streamsize>(count))) {
            throw std::runtime_error("the file became shorter while it was read");
        }
        Check(QVE_UploadSend(raw, piece.data(), static_cast<uint32_t>(count)));
        sent += count;
        watch({s_unknown, s_unknown, sent, size});
    }
    Check(QVE_UploadCommit(raw));
}

uint64_t Session::Download(const std::string& path, std::ostream& bytes, const Watch& watch) {
    QVE_Download* raw = nullptr;
    Check(QVE_DatabaseDownloadOpen(m_connection.get(), path.c_str(), &raw));
    const DownloadHandle download(raw);
    uint64_t size = 0;
    Check(QVE_DownloadGetSize(raw, &size));
    std::vector<char> piece(s_transferPiece);
    for (uint64_t received = 0; received < size;) {
        StopWhenInterrupted();
        uint32_t count = 0;
        Check(QVE_DownloadRecv(raw, static_cast<uint32_t>(piece.size()), piece.data(), &count));
        bytes.write(piece.data(), count);
        if (!bytes) throw std::runtime_error("cannot write all of the file: is the disk full?");
        received += count;
        watch({s_unknown, s_unknown, received, size});
    }
    return size;
}

bool Session::Run(const std::string& text, ResultWriter& writer) {
    return Run(text, writer, {});
}

void Session::Run(const std::string& text) {
    TextRows unwanted;
    Run(text, unwanted, {});
}

bool Session::Run(const std::string& text, ResultWriter& writer, const Watch& watch) {
    QVE_Statement* raw = nullptr;
    Check(QVE_StatementOpen(m_connection.get(), &raw));
    const StatementHandle statement(raw);
    const Interrupt::Running running(m_interrupt, [raw] { QVE_StatementCancel(raw); });
    Check(QVE_StatementPrepare(raw, text.c_str()));
    QVE_Rowset* rowset = nullptr;
    {
        const Watcher watcher(raw, watch);
        Check(QVE_StatementExecute(raw, &rowset));
    }
    const RowsetHandle result(rowset);
    if (!result) return false;
    Print(*result, writer);
    return true;
}

std::vector<ResultColumn> Session::Describe(QVE_Rowset& rowset) const {
    uint32_t count = 0;
    Check(QVE_RowsetGetColumnCount(&rowset, &count));
    std::vector<ResultColumn> columns(count);
    for (uint32_t i = 0; i < count; ++i) {
        QVE_Properties* raw = nullptr;
        Check(QVE_RowsetGetColumnProperties(&rowset, i, &raw));
        const PropertiesHandle properties(raw);
        QVE_Value key;
        QVE_Value value;
        Check(QVE_PropertiesGetProperty(raw, 0, &key, &value));
        columns[i].name = ValueText(value);
        Check(QVE_PropertiesGetProperty(raw, 1, &key, &value));
        if (value.size == sizeof(columns[i].type)) std::memcpy(&columns[i].type, value.data, value.size);
        ReadRejections(*raw, columns[i]);
    }
    return columns;
}

void Session::Print(QVE_Rowset& rowset, ResultWriter& writer) const {
    const std::vector<ResultColumn> columns = Describe(rowset);
    writer.Begin(columns);
    if (!columns.empty()) {
        // Whole rows: a page of the server never ends within one.
        std::vector<QVE_Value> values(columns.size() * 1024);
        std::size_t count = 0;
        while (true) {
            Check(QVE_RowsetGetValues(&rowset, values.size(), values.data(), &count));
            if (count == 0) break;
            for (std::size_t i = 0; i + columns.size() <= count; i += columns.size()) writer.Row(values.data() + i);
        }
    }
    writer.End();
}

}  // namespace qve::cli
