#pragma once

#include <memory>

#include "client/qve.h"

namespace qve::cli {

/// A handle of the client library that is closed at the end.
template <class Handle, QVE_Status (*CloseHandle)(Handle*)>
struct HandleCloser {
    void operator()(Handle* handle) const { CloseHandle(handle); }
};

using ServerProcessHandle = std::unique_ptr<QVE_ServerProcess, HandleCloser<QVE_ServerProcess, QVE_ServerProcessClose>>;
using ConnectionHandle = std::unique_ptr<QVE_Connection, HandleCloser<QVE_Connection, QVE_ConnectionDisconnect>>;
using StatementHandle = std::unique_ptr<QVE_Statement, HandleCloser<QVE_Statement, QVE_StatementClose>>;
using RowsetHandle = std::unique_ptr<QVE_Rowset, HandleCloser<QVE_Rowset, QVE_RowsetClose>>;
using UploadHandle = std::unique_ptr<QVE_Upload, HandleCloser<QVE_Upload, QVE_UploadClose>>;
using DownloadHandle = std::unique_ptr<QVE_Download, HandleCloser<QVE_Download, QVE_DownloadClose>>;
using PropertiesHandle = std::unique_ptr<QVE_Properties, HandleCloser<QVE_Properties, QVE_PropertiesClose>>;
using ErrorInfoHandle = std::unique_ptr<QVE_ErrorInfo, HandleCloser<QVE_ErrorInfo, QVE_ErrorInfoClose>>;

}  // namespace qve::cli
