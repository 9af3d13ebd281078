// The requests of a session that insert rows.

#include "algebra/Namespace.h"
#include "metrics/Scope.h"
#include "server/Answer.h"
#include "server/Insert.h"
#include "server/Session.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"

namespace qve::Server {

namespace {

void ReportInsertColumns(std::uint64_t session, const std::vector<std::wstring>& columns) {
    const Metrics::Scope scope("Server::Session::ReportInsertColumns");
    for (std::size_t i = 0; i < columns.size(); ++i) {
        LogEntry() << "Session" << session << ":   column[" << i << "]=\"" << columns[i] << "\"";
    }
}

}  // namespace

void Session::InsertOpen(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::InsertOpen");
    Answer(
        reply,
        [&](QVE_OutputIterator& out) {
            if (!m_database) throw QVE_RuntimeError(status::Session_InsertOpen, "no open database");
            std::vector<std::wstring> columns;
            // Only as many as there are bytes for: the count may be anything.
            for (std::uint32_t count = in.ReadU32(); count != 0; --count) columns.push_back(widen(in.ReadString()));
            const std::wstring table = widen(in.ReadString());
            const std::wstring schema = widen(in.ReadString());
            LogEntry() << "Session" << m_guid << ": InsertOpen: table=\"" << table << "\" schema=\"" << schema << "\"";
            ReportInsertColumns(m_guid, columns);
            auto insert = MakeRef<Insert>(columns, table, schema, m_database, Namespace::s_blockLength);
            const std::uint64_t guid = AllocateGuid();
            out.WriteGuid(guid);
            out.WriteU32(insert->GetColumnCount());
            m_inserts.emplace(guid, std::move(insert));
        },
        [&](const char* text) { LogEntry() << "Session" << m_guid << ": InsertOpen: FAILED, error=" << text; });
}

void Session::InsertGetColumnProperties(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::InsertGetColumnProperties");
    Answer(reply, [&](QVE_OutputIterator& out) {
        const std::uint64_t guid = in.ReadGuid();
        out.WriteProperties(GetInsert(guid)->GetColumnProperties(in.ReadU32()));
    });
}

void Session::InsertPutValues(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::InsertPutValues");
    std::uint64_t guid = 0;
    std::uint32_t count = 0;
    Answer(
        reply,
        [&](QVE_OutputIterator&) {
            guid = in.ReadGuid();
            count = in.ReadU32();
            Insert& insert = *GetInsert(guid);
            if (count == 0) return;
            BinaryScan::CheckCount(count, in.GetRemaining());
            QVE_Message message;
            Insert::InitMessage(message, count, guid);
            const std::size_t rest = in.GetRemaining();
            QVE_OutputIterator(message).WriteRaw(in.ReadRaw(rest, 1), rest, 1);
            insert.PushMessage(message);
            scope.NameValue("total_calls", insert.GetTotalCalls());
            scope.NameValue("total_message_size", insert.GetTotalBytes());
        },
        [&](const char* text) {
            LogEntry() << "Session" << m_guid << ": InsertPutValues: insert_guid=" << guid << " n_values=" << count
                       << " FAILED, error=" << text;
        });
}

void Session::InsertCommit(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::InsertCommit");
    Answer(
        reply,
        [&](QVE_OutputIterator&) {
            const RefCntPtr<Insert> insert = GetInsert(in.ReadGuid());
            insert->Commit();
            LogEntry() << "Session" << m_guid << ": InsertPutValues: total_calls=" << insert->GetTotalCalls()
                       << " total_message_size=" << insert->GetTotalBytes();
            LogEntry() << "Session" << m_guid << ": InsertCommit: OK rows=" << insert->GetRows()
                       << " errors=" << insert->GetErrors();
        },
        [&](const char* text) { LogEntry() << "Session" << m_guid << ": InsertCommit: FAILED, error=" << text; });
}

void Session::InsertClose(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::InsertClose");
    Answer(reply, [&](QVE_OutputIterator&) {
        const std::uint64_t guid = in.ReadGuid();
        GetInsert(guid)->Rollback();
        m_inserts.erase(guid);
    });
}

}  // namespace qve::Server
