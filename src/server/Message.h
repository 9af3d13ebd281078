#pragma once

#include <cstdint>

#include "server/protocol/QVE_Message.h"
#include "system/RefCntObject.h"

namespace qve::Server {

/// A reply on its way to the send thread.
class Message : public RefCntObject {
public:
    /// Takes the content of `message`.
    Message(std::uint64_t guid, QVE_Message& message) : m_guid(guid) { m_message.swap(message); }
    std::uint64_t GetGuid() const noexcept { return m_guid; }
    QVE_Message& GetMessage() noexcept { return m_message; }

private:
    const std::uint64_t m_guid;
    QVE_Message m_message;
};

}  // namespace qve::Server
