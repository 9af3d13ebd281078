#pragma once

#include <memory>

#include "server/Connection.h"
#include "server/protocol/QVE_Message.h"
#include "system/RefCntPtr.h"
#include "system/Runnable.h"

namespace qve::Server {

class Session;

/// Work on the requests of one session: carries out one of them and, as long as there are more, queues up again behind
/// the work of other sessions.
class DispatchRunnable : public Runnable {
public:
    DispatchRunnable(RefCntPtr<Connection> connection, RefCntPtr<Session> session, RefCntPtr<WorkQueue> work);
    ~DispatchRunnable() override;

    /// Takes the session's next request. Throws nothing: every failure becomes a reply, or ends the connection.
    void Run() override;
    /// Carries out a request and queues its reply. Throws nothing.
    void Answer(const QVE_Message& request) noexcept;

private:
    const RefCntPtr<Connection> m_connection;
    const RefCntPtr<Session> m_session;
    const RefCntPtr<WorkQueue> m_work;
};

}  // namespace qve::Server
