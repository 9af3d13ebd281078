#include "server/CloseOnException.h"

#include <exception>

#include "server/ipc/IPC_Connection.h"
#include "telemetry/LogEntry.h"

namespace qve::Server {

void CloseOnException(const std::string& description) noexcept {
    try {
        throw;
    } catch (const IPC_Connection::ipc_connection_closed&) {
        LogEntry() << "qveserver: disconnected connection=" << description;
    } catch (const std::exception& exception) {
        LogEntry() << "qveserver: dead connection=" << description << ": " << exception.what();
    } catch (...) {
        LogEntry() << "qveserver: dead connection=" << description << ": unknown exception";
    }
}

}  // namespace qve::Server
