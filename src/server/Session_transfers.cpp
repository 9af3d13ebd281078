// Whole databases that come and go as files.

#include "metrics/Scope.h"
#include "server/Answer.h"
#include "server/Download.h"
#include "server/Session.h"
#include "server/Upload.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/status.h"
#include "storage/DatabaseFamily.h"
#include "system/QuillonException.h"
#include "system/VQLException.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"
#include "vql/eval/status.h"

namespace qve::Server {

std::wstring Session::ResolveTransferPath(const std::wstring& path, const wchar_t* command) const {
    try {
        return DatabaseFamily::ResolveDatabasePath(path, std::wstring(m_properties.text(usrpropkey::database_access)));
    } catch (const VQLException& fault) {  // says which command it was
        throw VQLException(status::VQLSession_ExecError,
                           L"Invalid Command: " + std::wstring(command) + L": " + fault.GetWhatW());
    }
}

Upload& Session::GetUpload(std::uint64_t guid) const {
    const auto found = m_uploads.find(guid);
    if (found == m_uploads.end()) throw QVE_RangeError(status::Session_GetUpload, "no such upload");
    return *found->second;
}

Download& Session::GetDownload(std::uint64_t guid) const {
    const auto found = m_downloads.find(guid);
    if (found == m_downloads.end()) throw QVE_RangeError(status::Session_GetDownload, "no such download");
    return *found->second;
}

void Session::DatabaseUploadOpen(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::DatabaseUploadOpen");
    Answer(reply, [&](QVE_OutputIterator& out) {
        const std::wstring path = widen(in.ReadString());
        scope.NameValue("relpath", path);
        LogEntry() << "Session" << m_guid << ": UploadOpen:  path=\"" << path << "\"";
        auto upload = MakeRef<Upload>(ResolveTransferPath(path, L"upload-database"));
        const std::uint64_t guid = AllocateGuid();
        m_uploads.emplace(guid, std::move(upload));
        out.WriteGuid(guid);
    });
}

void Session::UploadSetSize(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::UploadSetSize");
    Answer(reply, [&](QVE_OutputIterator&) {
        Upload& upload = GetUpload(in.ReadGuid());
        upload.SetSize(in.ReadU64());
    });
}

void Session::UploadSend(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::UploadSend");
    Answer(reply, [&](QVE_OutputIterator&) {
        Upload& upload = GetUpload(in.ReadGuid());
        const std::string_view bytes = in.ReadBytes();
        upload.Send(bytes.size(), bytes.data());
    });
}

void Session::UploadCommit(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::UploadCommit");
    Answer(reply, [&](QVE_OutputIterator&) {
        Upload& upload = GetUpload(in.ReadGuid());
        LogEntry() << "Session" << m_guid << ": UploadCommit: path=\"" << upload.GetPath() << "\"";
        upload.Commit();
    });
}

void Session::UploadClose(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::UploadClose");
    Answer(reply, [&](QVE_OutputIterator&) {
        const std::uint64_t guid = in.ReadGuid();
        GetUpload(guid);
        m_uploads.erase(guid);
    });
}

void Session::DatabaseDownloadOpen(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::DatabaseDownloadOpen");
    Answer(reply, [&](QVE_OutputIterator& out) {
        const std::wstring path = widen(in.ReadString());
        scope.NameValue("relpath", path);
        LogEntry() << "Session" << m_guid << ": DownloadOpen:  path=\"" << path << "\"";
        auto download = MakeRef<Download>(ResolveTransferPath(path, L"download-database"));
        const std::uint64_t guid = AllocateGuid();
        out.WriteGuid(guid);
        out.WriteU64(download->GetSize());
        m_downloads.emplace(guid, std::move(download));
    });
}

void Session::DownloadRecv(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::DownloadRecv");
    Answer(reply, [&](QVE_OutputIterator& out) {
        Download& download = GetDownload(in.ReadGuid());
        download.Recv(in.ReadU32(), out);
    });
}

void Session::DownloadClose(QVE_InputIterator& in, QVE_Message& reply) {
    const Metrics::Scope scope("Server::Session::DownloadClose");
    Answer(reply, [&](QVE_OutputIterator&) {
        const std::uint64_t guid = in.ReadGuid();
        GetDownload(guid);
        m_downloads.erase(guid);
    });
}

}  // namespace qve::Server
