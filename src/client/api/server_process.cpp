#include <utility>

#include "client/api/handles.h"

namespace {

/// Runs the body of a function of a server process, which keeps the texts of its last failure.
template <class Body>
QVE_Status Guard(QVE_ServerProcess& process, Body body) noexcept {
    try {
        body();
        return QVE_OK;
    } catch (...) {
        return qve::api::ReportException([&process](int status, std::vector<std::string> texts) {
            process.error = {status, std::move(texts)};
        });
    }
}

std::string TextOf(const char* text) {
    return text ? text : "";
}

}  // namespace

QVE_Status QVE_ServerProcessOpen(QVE_ServerProcess** process) {
    if (!process) return QVE_ERROR_ARGUMENT;
    return qve::api::Guard([&] { *process = std::make_unique<QVE_ServerProcess>().release(); });
}

QVE_Status QVE_ServerProcessStart(QVE_ServerProcess* process, const QVE_ServerProcessOptions* options) {
    if (!process || !options || !options->path) return QVE_ERROR_ARGUMENT;
    return Guard(*process, [&] {
        qve::QVE_ServerOptions start;
        start.path = options->path;
        if (options->listen) start.listen = options->listen;
        start.log = TextOf(options->log);
        start.config = TextOf(options->config);
        start.tempDirectory = TextOf(options->temp_directory);
        start.desktop = options->desktop != 0;
        process->process.Start(start);
    });
}

QVE_Status QVE_ServerProcessStop(QVE_ServerProcess* process) {
    if (!process) return QVE_ERROR_ARGUMENT;
    return Guard(*process, [&] { process->process.Stop(); });
}

QVE_Status QVE_ServerProcessIsAlive(QVE_ServerProcess* process, int* alive) {
    if (!process || !alive) return QVE_ERROR_ARGUMENT;
    return Guard(*process, [&] { *alive = process->process.IsAlive(); });
}

QVE_Status QVE_ServerProcessGetConnectionDescriptor(QVE_ServerProcess* process, const char** descriptor) {
    if (!process || !descriptor) return QVE_ERROR_ARGUMENT;
    return Guard(*process, [&] { *descriptor = process->process.GetServerDescriptor().c_str(); });
}

QVE_Status QVE_ServerProcessGetProcessId(QVE_ServerProcess* process, int* id) {
    if (!process || !id) return QVE_ERROR_ARGUMENT;
    return Guard(*process, [&] { *id = process->process.GetProcessId(); });
}

QVE_Status QVE_ServerProcessGetErrorInfo(QVE_ServerProcess* process, QVE_ErrorInfo** info) {
    if (!process || !info) return QVE_ERROR_ARGUMENT;
    return qve::api::Guard([&] { *info = std::make_unique<QVE_ErrorInfo>(process->error).release(); });
}

QVE_Status QVE_ServerProcessClose(QVE_ServerProcess* process) {
    return qve::api::Guard([&] { std::unique_ptr<QVE_ServerProcess> closed(process); });
}
