#include "server/protocol/QVE_ReceiveMessage.h"

#include <algorithm>
#include <cstddef>

#include "server/ipc/IPC_Connection.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_Message.h"

namespace qve {

std::uint64_t QVE_ReceiveMessage(IPC_Connection& connection, QVE_Message& body) {
    QVE_Message header(QVE_Message::s_headerSize);
    connection.Read(header.data(), header.size());
    std::uint64_t guid = 0;
    const std::size_t size = QVE_InputIterator(header).ReadHeader(guid);
    body.clear();
    constexpr std::size_t firstStep = 64 * 1024;
    while (body.size() < size) {
        const std::size_t arrived = body.size();
        const std::size_t step = std::min(size - arrived, std::max(arrived, firstStep));
        body.reserve(arrived + step);
        connection.Read(body.Extend(step), step);
    }
    return guid;
}

}  // namespace qve
