#include "server/DispatchRunnable.h"

#include <utility>

#include "server/Session.h"
#include "server/error_reply.h"
#include "server/status.h"
#include "system/Operator.h"

namespace qve::Server {
namespace {

/// Enough for a status without text, also when there is no memory left by then.
constexpr std::size_t s_reservedReply = 64;

void DispatchTo(Session& session, const QVE_Message& request, QVE_Message& reply) noexcept {
    try {
        session.Dispatch(request, reply);
    } catch (const std::exception& exception) {
        MakeErrorReply(exception, reply);
    } catch (const Operator::CancelledException&) {
        MakeStatusReply(status::Server_Cancelled, reply);
    } catch (...) {
        MakeStatusReply(status::Server_NonStandardException, reply);
    }
}

}  // namespace

DispatchRunnable::DispatchRunnable(RefCntPtr<Connection> connection, RefCntPtr<Session> session,
                                   RefCntPtr<WorkQueue> work)
    : m_connection(std::move(connection)), m_session(std::move(session)), m_work(std::move(work)) {}

DispatchRunnable::~DispatchRunnable() = default;

void DispatchRunnable::Answer(const QVE_Message& request) noexcept {
    try {
        QVE_Message reply;
        reply.reserve(s_reservedReply);
        DispatchTo(*m_session, request, reply);
        m_connection->PushReply(m_session->GetGuid(), reply);
    } catch (...) {
        // No memory for so much as a reply: the client must not wait for it.
        m_connection->Close();
    }
}

void DispatchRunnable::Run() {
    QVE_Message request;
    if (!m_session->Dequeue(request)) return;
    Answer(request);
    try {
        m_work->Push(RefCntPtr<Runnable>(this));
    } catch (...) {
        m_connection->Close();
    }
}

}  // namespace qve::Server
