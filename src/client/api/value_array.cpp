#include <memory>
#include <vector>

#include "client/api/handles.h"

using qve::api::Guard;

QVE_Status QVE_ValueArrayClear(QVE_ValueArray* array) {
    if (!array) return QVE_ERROR_ARGUMENT;
    return Guard([&] { array->values.Clear(); });
}

QVE_Status QVE_ValueArrayGetSizeBytes(QVE_ValueArray* array, size_t* bytes) {
    if (!array || !bytes) return QVE_ERROR_ARGUMENT;
    *bytes = array->values.GetSizeBytes();
    return QVE_OK;
}

QVE_Status QVE_ValueArrayGetNumValues(QVE_ValueArray* array, size_t* count) {
    if (!array || !count) return QVE_ERROR_ARGUMENT;
    *count = array->values.GetNumValues();
    return QVE_OK;
}

QVE_Status QVE_ValueArrayReadValues(QVE_ValueArray* array, size_t max_values, QVE_Value* values, size_t* count) {
    if (!array || !count || (!values && max_values != 0)) return QVE_ERROR_ARGUMENT;
    const size_t start = array->values.GetConsumed();
    *count = array->values.Consume(max_values);
    for (size_t i = 0; i < *count; ++i) values[i] = qve::api::ToApi(array->values.ReadValues()[start + i]);
    return QVE_OK;
}

QVE_Status QVE_ValueArrayWriteValues(QVE_ValueArray* array, size_t count, const QVE_Value* values) {
    if (!array || (!values && count != 0)) return QVE_ERROR_ARGUMENT;
    return Guard([&] { array->values.WriteValues(count, qve::api::FromApi(count, values).data()); });
}

QVE_Status QVE_ValueArrayClose(QVE_ValueArray* array) {
    const std::unique_ptr<QVE_ValueArray> closed(array);
    return QVE_OK;
}
