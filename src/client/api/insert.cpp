#include <memory>
#include <string>
#include <vector>

#include "client/api/handles.h"

using qve::api::Guard;

QVE_Status QVE_InsertOpen(QVE_Connection* connection, const char* schema, const char* table, uint32_t count,
                          const char* const* columns, QVE_Insert** insert) {
    if (!connection || !schema || !table || (!columns && count != 0) || !insert) return QVE_ERROR_ARGUMENT;
    for (uint32_t i = 0; i < count; ++i) {
        if (!columns[i]) return QVE_ERROR_ARGUMENT;
    }
    *insert = nullptr;
    return Guard(*connection->client, [&] {
        auto opened = std::make_unique<QVE_Insert>();
        opened->client = connection->client;
        opened->insert = connection->client->InsertOpen({columns, columns + count}, table, schema);
        *insert = opened.release();
    });
}

QVE_Status QVE_InsertGetColumnCount(QVE_Insert* insert, uint32_t* count) {
    if (!insert || !count) return QVE_ERROR_ARGUMENT;
    *count = insert->insert.columns;
    return QVE_OK;
}

QVE_Status QVE_InsertGetColumnProperties(QVE_Insert* insert, uint32_t column, QVE_Properties** properties) {
    if (!insert || !properties) return QVE_ERROR_ARGUMENT;
    return Guard(*insert->client, [&] {
        auto list = insert->client->InsertGetColumnProperties(insert->insert.guid, column);
        *properties = std::make_unique<QVE_Properties>(QVE_Properties{std::move(list)}).release();
    });
}

QVE_Status QVE_InsertPutValues(QVE_Insert* insert, size_t count, const QVE_Value* values) {
    if (!insert || (!values && count != 0)) return QVE_ERROR_ARGUMENT;
    return Guard(*insert->client, [&] {
        const std::vector<qve::QVE_Value> views = qve::api::FromApi(count, values);
        insert->client->InsertPutValues(insert->insert.guid, count, views.data());
    });
}

QVE_Status QVE_InsertValueArrayOpen(QVE_Insert* insert, QVE_ValueArray** array) {
    if (!insert || !array) return QVE_ERROR_ARGUMENT;
    return Guard(*insert->client, [&] {
        auto opened = std::make_unique<QVE_ValueArray>();
        insert->client->InsertValueArrayOpen(insert->insert.guid, opened->values);
        *array = opened.release();
    });
}

QVE_Status QVE_InsertPutValueArray(QVE_Insert* insert, QVE_ValueArray* array) {
    if (!insert || !array) return QVE_ERROR_ARGUMENT;
    return Guard(*insert->client, [&] { insert->client->InsertPutValueArray(insert->insert.guid, array->values); });
}

QVE_Status QVE_InsertCommit(QVE_Insert* insert) {
    if (!insert) return QVE_ERROR_ARGUMENT;
    return Guard(*insert->client, [&] { insert->client->InsertCommit(insert->insert.guid); });
}

QVE_Status QVE_InsertClose(QVE_Insert* insert) {
    const std::unique_ptr<QVE_Insert> closed(insert);
    if (!closed) return QVE_OK;
    return Guard(*closed->client, [&] {
        // With its session went the insert.
        if (closed->client->IsConnected()) closed->client->InsertClose(closed->insert.guid);
    });
}
