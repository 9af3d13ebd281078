#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "client/QVE_Client.h"
#include "client/QVE_ClientRowset.h"
#include "client/QVE_ServerProcess2.h"
#include "client/qve.h"
#include "server/protocol/QVE_InterredValue.h"
#include "server/protocol/QVE_ValueArray.h"
#include "system/RefCntPtr.h"

// What stands behind the handles of client/qve.h.

struct QVE_ErrorInfo {
    QVE_Status status = 0;
    std::vector<std::string> texts;
};

struct QVE_ServerProcess {
    qve::QVE_ServerProcess2 process;
    QVE_ErrorInfo error;
};

struct QVE_Connection {
    qve::RefCntPtr<qve::QVE_Client> client;
};

struct QVE_Statement {
    qve::RefCntPtr<qve::QVE_Client> client;
    std::uint64_t guid = 0;
};

struct QVE_Rowset {
    qve::RefCntPtr<qve::QVE_Client> client;
    qve::RefCntPtr<qve::QVE_ClientRowset> rowset;
};

struct QVE_Insert {
    qve::RefCntPtr<qve::QVE_Client> client;
    qve::QVE_Client::OpenInsert insert;
};

struct QVE_ValueArray {
    qve::QVE_ValueArray values;
};

struct QVE_Upload {
    qve::RefCntPtr<qve::QVE_Client> client;
    std::uint64_t guid = 0;
};

struct QVE_Download {
    qve::RefCntPtr<qve::QVE_Client> client;
    qve::QVE_Client::Download download;
};

struct QVE_Properties {
    qve::QVE_PropertyList list;
};

namespace qve::api {

/// Gives the status of the exception that is being handled and reports it with its texts.
QVE_Status ReportException(const std::function<void(int status, std::vector<std::string> texts)>& report) noexcept;

/// Runs the body of a function of a connection: exceptions become statuses, whose texts are posted for
/// QVE_GetErrorInfo.
template <class Body>
QVE_Status Guard(QVE_Client& client, Body body) noexcept {
    try {
        body();
        return QVE_OK;
    } catch (...) {
        return ReportException(
            [&client](int status, std::vector<std::string> texts) { client.PostErrorInfo(status, std::move(texts)); });
    }
}

/// The same where there is nowhere to keep the texts.
template <class Body>
QVE_Status Guard(Body body) noexcept {
    try {
        body();
        return QVE_OK;
    } catch (...) {
        return ReportException({});
    }
}

/// Throws QVE_LogicError (40516) for an index that is not below the count.
void CheckIndex(std::size_t index, std::size_t count);

/// The value as C programs see it.
inline ::QVE_Value ToApi(const QVE_Value& value) {
    return {value.type, value.size, value.data};
}

/// The values of a C program.
inline std::vector<QVE_Value> FromApi(std::size_t count, const ::QVE_Value* values) {
    std::vector<QVE_Value> views;
    views.reserve(count);
    for (std::size_t i = 0; i < count; ++i) views.push_back({values[i].type, values[i].size, values[i].data});
    return views;
}

}  // namespace qve::api
