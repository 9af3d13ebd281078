#include <memory>

#include "client/api/handles.h"

using qve::api::Guard;

QVE_Status QVE_DatabaseUploadOpen(QVE_Connection* connection, const char* path, QVE_Upload** upload) {
    if (!connection || !path || !upload) return QVE_ERROR_ARGUMENT;
    return Guard(*connection->client, [&] {
        auto opened = std::make_unique<QVE_Upload>();
        opened->client = connection->client;
        opened->guid = connection->client->DatabaseUploadOpen(path);
        *upload = opened.release();
    });
}

QVE_Status QVE_UploadSetSize(QVE_Upload* upload, uint64_t size) {
    if (!upload) return QVE_ERROR_ARGUMENT;
    return Guard(*upload->client, [&] { upload->client->UploadSetSize(upload->guid, size); });
}

QVE_Status QVE_UploadSend(QVE_Upload* upload, const void* bytes, uint32_t count) {
    if (!upload || (!bytes && count != 0)) return QVE_ERROR_ARGUMENT;
    return Guard(*upload->client, [&] { upload->client->UploadSend(upload->guid, bytes, count); });
}

QVE_Status QVE_UploadCommit(QVE_Upload* upload) {
    if (!upload) return QVE_ERROR_ARGUMENT;
    return Guard(*upload->client, [&] { upload->client->UploadCommit(upload->guid); });
}

QVE_Status QVE_UploadClose(QVE_Upload* upload) {
    const std::unique_ptr<QVE_Upload> closed(upload);
    if (!closed) return QVE_OK;
    return Guard(*closed->client, [&] {
        // With its session went the upload.
        if (closed->client->IsConnected()) closed->client->UploadClose(closed->guid);
    });
}

QVE_Status QVE_DatabaseDownloadOpen(QVE_Connection* connection, const char* path, QVE_Download** download) {
    if (!connection || !path || !download) return QVE_ERROR_ARGUMENT;
    return Guard(*connection->client, [&] {
        auto opened = std::make_unique<QVE_Download>();
        opened->client = connection->client;
        opened->download = connection->client->DatabaseDownloadOpen(path);
        *download = opened.release();
    });
}

QVE_Status QVE_DownloadGetSize(QVE_Download* download, uint64_t* size) {
    if (!download || !size) return QVE_ERROR_ARGUMENT;
    *size = download->download.size;
    return QVE_OK;
}

QVE_Status QVE_DownloadRecv(QVE_Download* download, uint32_t max_bytes, void* bytes, uint32_t* count) {
    if (!download || !bytes || !count) return QVE_ERROR_ARGUMENT;
    return Guard(*download->client, [&] {
        *count = static_cast<uint32_t>(download->client->DownloadRecv(download->download.guid, bytes, max_bytes));
    });
}

QVE_Status QVE_DownloadClose(QVE_Download* download) {
    const std::unique_ptr<QVE_Download> closed(download);
    if (!closed) return QVE_OK;
    return Guard(*closed->client, [&] {
        if (closed->client->IsConnected()) closed->client->DownloadClose(closed->download.guid);
    });
}
