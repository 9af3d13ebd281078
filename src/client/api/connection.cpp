#include <fmt/format.h>

#include <cstring>
#include <memory>

#include "client/api/handles.h"

using qve::api::Guard;

QVE_Status QVE_ConnectionOpen(QVE_Connection** connection) {
    if (!connection) return QVE_ERROR_ARGUMENT;
    return Guard([&] {
        auto opened = std::make_unique<QVE_Connection>();
        opened->client = qve::MakeRef<qve::QVE_Client>();
        *connection = opened.release();
    });
}

QVE_Status QVE_ConnectionConnect(QVE_Connection* connection, const char* descriptor) {
    if (!connection || !descriptor) return QVE_ERROR_ARGUMENT;
    return Guard(*connection->client, [&] { connection->client->Connect(std::string(descriptor)); });
}

QVE_Status QVE_ConnectionGetProperties(QVE_Connection* connection, QVE_Properties** properties) {
    if (!connection || !properties) return QVE_ERROR_ARGUMENT;
    return Guard(*connection->client, [&] {
        *properties = std::make_unique<QVE_Properties>(QVE_Properties{connection->client->GetProperties()}).release();
    });
}

QVE_Status QVE_ConnectionDisconnect(QVE_Connection* connection) {
    return Guard([&] {
        const std::unique_ptr<QVE_Connection> closed(connection);
        if (closed) closed->client->Disconnect();
    });
}

QVE_Status QVE_ConnectionDescriptorTcp(const char* host, uint16_t port, char* text, size_t size) {
    if (!host || !text) return QVE_ERROR_ARGUMENT;
    return Guard([&] {
        const bool bracketed = std::strchr(host, ':') != nullptr;
        const std::string descriptor =
            fmt::format("quil.tcp://{}{}{}:{}", bracketed ? "[" : "", host, bracketed ? "]" : "", port);
        qve::api::CheckIndex(descriptor.size(), size);
        std::memcpy(text, descriptor.c_str(), descriptor.size() + 1);
    });
}

QVE_Status QVE_GetErrorInfo(QVE_Connection* connection, QVE_ErrorInfo** info) {
    if (!connection || !info) return QVE_ERROR_ARGUMENT;
    return Guard([&] {
        qve::QVE_Client::ErrorInfo posted = connection->client->GetErrorInfo();
        *info = std::make_unique<QVE_ErrorInfo>(QVE_ErrorInfo{posted.status, std::move(posted.texts)}).release();
    });
}
