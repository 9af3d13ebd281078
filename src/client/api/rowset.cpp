#include <memory>
#include <vector>

#include "client/api/handles.h"

using qve::api::Guard;

QVE_Status QVE_RowsetGetProperties(QVE_Rowset* rowset, QVE_Properties** properties) {
    if (!rowset || !properties) return QVE_ERROR_ARGUMENT;
    return Guard(*rowset->client, [&] {
        *properties = std::make_unique<QVE_Properties>(QVE_Properties{rowset->rowset->GetProperties()}).release();
    });
}

QVE_Status QVE_RowsetGetColumnCount(QVE_Rowset* rowset, uint32_t* count) {
    if (!rowset || !count) return QVE_ERROR_ARGUMENT;
    *count = static_cast<uint32_t>(rowset->rowset->GetColumnCount());
    return QVE_OK;
}

QVE_Status QVE_RowsetGetColumnProperties(QVE_Rowset* rowset, uint32_t column, QVE_Properties** properties) {
    if (!rowset || !properties) return QVE_ERROR_ARGUMENT;
    return Guard(*rowset->client, [&] {
        qve::api::CheckIndex(column, rowset->rowset->GetColumnCount());
        *properties =
            std::make_unique<QVE_Properties>(QVE_Properties{rowset->rowset->GetColumnProperties(column)}).release();
    });
}

QVE_Status QVE_RowsetHasMoreValues(QVE_Rowset* rowset, int* more) {
    if (!rowset || !more) return QVE_ERROR_ARGUMENT;
    return Guard(*rowset->client, [&] { *more = rowset->rowset->HasMoreValues(); });
}

QVE_Status QVE_RowsetGetValues(QVE_Rowset* rowset, size_t max_values, QVE_Value* values, size_t* count) {
    if (!rowset || !count || (!values && max_values != 0)) return QVE_ERROR_ARGUMENT;
    return Guard(*rowset->client, [&] {
        std::vector<qve::QVE_Value> views(max_values);
        *count = rowset->rowset->GetValues(max_values, views.data());
        for (size_t i = 0; i < *count; ++i) values[i] = qve::api::ToApi(views[i]);
    });
}

QVE_Status QVE_RowsetGetValueArray(QVE_Rowset* rowset, QVE_ValueArray** array) {
    if (!rowset || !array) return QVE_ERROR_ARGUMENT;
    return Guard(*rowset->client, [&] {
        auto taken = std::make_unique<QVE_ValueArray>();
        taken->values = rowset->rowset->GetValueArray();
        *array = taken.release();
    });
}

QVE_Status QVE_RowsetClose(QVE_Rowset* rowset) {
    const std::unique_ptr<QVE_Rowset> closed(rowset);
    if (!closed) return QVE_OK;
    return Guard(*closed->client, [&] {
        // With its session went the rowset.
        if (closed->client->IsConnected()) closed->rowset->Close();
    });
}
