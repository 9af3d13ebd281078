#pragma once

#include <cstdint>

namespace qve {

class IPC_Connection;
class QVE_Message;

/// Reads one message: its header, and its body into `body` (the header is not kept). Gives the session guid. A body
/// costs no more memory than twice what has arrived of it, whatever its header announces. Blocks. Throws
/// QVE_RuntimeError (70003) on a wrong magic, and what the connection throws.
std::uint64_t QVE_ReceiveMessage(IPC_Connection& connection, QVE_Message& body);

}  // namespace qve
