#include "server/Upload.h"

#include <utility>

#include "os/OS.h"
#include "os/Path.h"
#include "server/status.h"
#include "storage/Package.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"

namespace qve::Server {
namespace {

/// Whether a path holds what nobody wants to lose: a folder, or a package that can be read.
bool HoldsDatabase(const std::wstring& path) {
    if (!Path::isfile(path)) return Path::exists(path);
    try {
        Package::Open(MakeRef<DataFile>(path, false), Package::Read::directories);
        return true;
    } catch (const QuillonException&) {
        return false;  // an upload that broke off, or something else altogether
    }
}

RefCntPtr<DataFile> MakeFile(const std::wstring& path) {
    if (HoldsDatabase(path)) {
        throw QVE_RuntimeError(status::Upload_exists,
                               "UploadOpen: there is a database at \"" + narrow(path) + "\": drop it first");
    }
    try {
        OS::touch(path);
        auto file = MakeRef<DataFile>(path, true);
        file->Resize(0);
        return file;
    } catch (const QVE_RuntimeError& fault) {
        throw QVE_RuntimeError(status::Upload_create,
                               "UploadOpen: error creating file \"" + narrow(path) + "\"" + fault.GetText());
    }
}

}  // namespace

Upload::Upload(std::wstring path) : m_path(std::move(path)), m_file(MakeFile(m_path)) {}

void Upload::RequireOpen(int status) const {
    if (!m_file) throw QVE_RuntimeError(status, "upload already committed");
}

void Upload::SetSize(std::uint64_t size) {
    RequireOpen(status::Upload_SetSize);
    m_expected = size;
}

void Upload::Send(std::size_t count, const void* bytes) {
    RequireOpen(status::Upload_Send);
    m_file->Write(bytes, count);
    m_file->Flush();
}

void Upload::Commit() {
    RequireOpen(status::Upload_Commit);
    m_file->Flush();
    const std::uint64_t actual = m_file->GetSize();
    m_file.reset();
    if (actual == m_expected) {
        OS::sync(m_path);
        OS::sync(Path::split(m_path).first);
        return;
    }
    Delete();
    throw QVE_RuntimeError(status::Upload_size, "UploadCommit: actual size is " + std::to_string(actual) +
                                                    " bytes, expected " + std::to_string(m_expected) +
                                                    " bytes, deleting \"" + narrow(m_path) + "\"");
}

void Upload::Delete() const noexcept {
    try {
        OS::unlink(m_path);
    } catch (const std::exception& fault) {
        LogEntry() << "Server::Upload::Delete: path=\"" << m_path << "\" " << fault.what();
    }
}

}  // namespace qve::Server
