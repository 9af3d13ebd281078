#include "server/RecvRunnable.h"

#include "server/CloseOnException.h"
#include "server/QVE_Server.h"
#include "telemetry/LogEntry.h"

namespace qve::Server {

void RecvRunnable::Run() {
    LogEntry() << "beginthread: recv, connection=" << m_connection->GetDescription();
    try {
        while (true) m_connection->RecvOneMessage();
    } catch (...) {
        CloseOnException(m_connection->GetDescription());
        m_connection->Close();
    }
    LogEntry() << "endthread: recv, connection=" << m_connection->GetDescription();
    m_server.RemoveCurrentThread();
}

}  // namespace qve::Server
