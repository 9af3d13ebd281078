#include <memory>

#include "client/api/handles.h"
#include "client/error_message.h"

using qve::api::Guard;

int QVE_IsActionableError(QVE_Status status) {
    return qve::IsActionableError(status);
}

QVE_Status QVE_ErrorInfoGetCount(QVE_ErrorInfo* info, uint32_t* count) {
    if (!info || !count) return QVE_ERROR_ARGUMENT;
    *count = static_cast<uint32_t>(info->texts.size());
    return QVE_OK;
}

QVE_Status QVE_ErrorInfoGetError(QVE_ErrorInfo* info, uint32_t index, QVE_Status* status, const char** text) {
    if (!info || !status || !text) return QVE_ERROR_ARGUMENT;
    return Guard([&] {
        qve::api::CheckIndex(index, info->texts.size());
        *status = info->status;
        *text = info->texts[index].c_str();
    });
}

QVE_Status QVE_ErrorInfoClose(QVE_ErrorInfo* info) {
    const std::unique_ptr<QVE_ErrorInfo> closed(info);
    return QVE_OK;
}
