#pragma once

#include <exception>

namespace qve {
class QVE_Message;
}

namespace qve::Server {

/// Replaces the reply by one that carries the exception's status and text. When not even that can be built, the reply
/// has status 40135 and no text.
void MakeErrorReply(const std::exception& exception, QVE_Message& reply) noexcept;

/// Replaces the reply by one of a status without text.
void MakeStatusReply(int status, QVE_Message& reply) noexcept;

/// The status that a client sees for an exception.
int GetStatus(const std::exception& exception) noexcept;

}  // namespace qve::Server
