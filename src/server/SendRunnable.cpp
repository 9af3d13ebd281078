#include "server/SendRunnable.h"

#include "server/CloseOnException.h"
#include "server/QVE_Server.h"
#include "telemetry/LogEntry.h"

namespace qve::Server {

void SendRunnable::Run() {
    LogEntry() << "beginthread: send, connection=" << m_connection->GetDescription();
    try {
        while (m_connection->SendOneMessage()) {
        }
    } catch (...) {
        CloseOnException(m_connection->GetDescription());
        m_connection->Close();
    }
    LogEntry() << "endthread: send, connection=" << m_connection->GetDescription();
    m_server.RemoveCurrentThread();
}

}  // namespace qve::Server
