#include <memory>
#include <string_view>
#include <utility>

#include "client/api/handles.h"

using qve::api::Guard;

namespace {

/// The handle of a rowset; null for none.
QVE_Rowset* MakeHandle(const qve::RefCntPtr<qve::QVE_Client>& client, qve::RefCntPtr<qve::QVE_ClientRowset> rowset) {
    if (!rowset) return nullptr;
    return std::make_unique<QVE_Rowset>(QVE_Rowset{client, std::move(rowset)}).release();
}

}  // namespace

QVE_Status QVE_QueryExecute(QVE_Connection* connection, const char* query, QVE_Rowset** rowset) {
    if (!connection || !query || !rowset) return QVE_ERROR_ARGUMENT;
    *rowset = nullptr;
    return Guard(*connection->client,
                 [&] { *rowset = MakeHandle(connection->client, connection->client->QueryExecute(query)); });
}

QVE_Status QVE_StatementOpen(QVE_Connection* connection, QVE_Statement** statement) {
    if (!connection || !statement) return QVE_ERROR_ARGUMENT;
    return Guard(*connection->client, [&] {
        auto opened = std::make_unique<QVE_Statement>();
        opened->client = connection->client;
        opened->guid = connection->client->StatementOpen();
        *statement = opened.release();
    });
}

QVE_Status QVE_StatementPlan(QVE_Statement* statement, const char* plan) {
    if (!statement || !plan) return QVE_ERROR_ARGUMENT;
    return Guard(*statement->client, [&] { statement->client->StatementPlan(statement->guid, plan); });
}

QVE_Status QVE_StatementPrepare(QVE_Statement* statement, const char* query) {
    if (!statement || !query) return QVE_ERROR_ARGUMENT;
    return Guard(*statement->client, [&] { statement->client->StatementPrepare(statement->guid, query); });
}

QVE_Status QVE_StatementExecute(QVE_Statement* statement, QVE_Rowset** rowset) {
    if (!statement || !rowset) return QVE_ERROR_ARGUMENT;
    *rowset = nullptr;
    return Guard(*statement->client, [&] {
        *rowset = MakeHandle(statement->client, statement->client->StatementExecute(statement->guid));
    });
}

QVE_Status QVE_StatementCancel(QVE_Statement* statement) {
    if (!statement) return QVE_ERROR_ARGUMENT;
    return Guard(*statement->client, [&] { statement->client->StatementCancel(statement->guid); });
}

QVE_Status QVE_StatementEstimateProgress(QVE_Statement* statement, QVE_Progress* progress) {
    if (!statement || !progress) return QVE_ERROR_ARGUMENT;
    return Guard(*statement->client, [&] {
        const auto estimate = statement->client->StatementEstimateProgress(statement->guid);
        *progress = {estimate.first, estimate.last, estimate.done, estimate.total};
    });
}

QVE_Status QVE_StatementClose(QVE_Statement* statement) {
    const std::unique_ptr<QVE_Statement> closed(statement);
    if (!closed) return QVE_OK;
    return Guard(*closed->client, [&] {
        // With its session went the statement.
        if (closed->client->IsConnected()) closed->client->StatementClose(closed->guid);
    });
}
