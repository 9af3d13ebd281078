#include <memory>

#include "client/api/handles.h"

using qve::api::Guard;

QVE_Status QVE_PropertiesGetCount(QVE_Properties* properties, uint32_t* count) {
    if (!properties || !count) return QVE_ERROR_ARGUMENT;
    *count = static_cast<uint32_t>(properties->list.size());
    return QVE_OK;
}

QVE_Status QVE_PropertiesGetProperty(QVE_Properties* properties, uint32_t index, QVE_Value* key, QVE_Value* value) {
    if (!properties || !key || !value) return QVE_ERROR_ARGUMENT;
    return Guard([&] {
        qve::api::CheckIndex(index, properties->list.size());
        const auto& [ownKey, ownValue] = properties->list[index];
        *key = qve::api::ToApi(ownKey.GetValue());
        *value = qve::api::ToApi(ownValue.GetValue());
    });
}

QVE_Status QVE_PropertiesClose(QVE_Properties* properties) {
    const std::unique_ptr<QVE_Properties> closed(properties);
    return QVE_OK;
}
