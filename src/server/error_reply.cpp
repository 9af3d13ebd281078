#include "server/error_reply.h"

#include <string_view>

#include "server/protocol/QVE_Message.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/status.h"
#include "system/QuillonException.h"
#include "system/VQLException.h"
#include "telemetry/LogEntry.h"

namespace qve::Server {
namespace {

/// Header, status and count of texts: what a reply without text takes, made ready before memory runs out.
constexpr std::size_t s_plainReplySize = QVE_Message::s_headerSize + 8;

}  // namespace

int GetStatus(const std::exception& exception) noexcept {
    if (const auto* numbered = dynamic_cast<const QuillonException*>(&exception)) return numbered->GetStatus();
    if (const auto* statement = dynamic_cast<const VQLException*>(&exception)) return statement->GetErrorCode();
    return status::Server_StandardException;
}

void MakeStatusReply(int status, QVE_Message& reply) noexcept {
    // A few bytes, which the message has room for if it ever held a reply; there is no going on without them.
    reply.clear();
    QVE_OutputIterator out(reply);
    out.WriteHeader();
    out.WriteStatus(status);
    out.WriteU32(0);
    static_assert(s_plainReplySize == 24);
}

void MakeErrorReply(const std::exception& exception, QVE_Message& reply) noexcept {
    try {
        const int status = GetStatus(exception);
        LogEntry() << "QVE error=" << status << ": " << exception.what();
        reply.clear();
        QVE_OutputIterator out(reply);
        out.WriteHeader();
        out.WriteStatus(status);
        out.WriteU32(1);
        out.WriteString(std::string_view(exception.what()));
    } catch (...) {
        MakeStatusReply(status::Server_NonStandardException, reply);
    }
}

}  // namespace qve::Server
