#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "server/ipc/IPC_Server.h"
#include "server/protocol/QVE_Command.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_Message.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/protocol/QVE_ReceiveMessage.h"

namespace qve {

/// A server for one connection whose every reply the test decides.
class ScriptedPeer {
public:
    static constexpr std::uint64_t s_session = 77;

    class Link {
    public:
        explicit Link(IPC_Connection& connection) : m_connection(connection) {}
        /// The next request, session commands answered on the way; false at the end of the stream.
        bool Next() {
            try {
                while (true) {
                    guid = QVE_ReceiveMessage(m_connection, request);
                    command = QVE_InputIterator(request).ReadCommand();
                    if (command == QVE_Command::SessionOpen) {
                        Reply([](QVE_OutputIterator& out) { out.WriteGuid(s_session); });
                    } else if (command == QVE_Command::SessionClose) {
                        Reply([](QVE_OutputIterator&) {});
                    } else {
                        return true;
                    }
                }
            } catch (const std::exception&) {
                return false;
            }
        }
        void Reply(const std::function<void(QVE_OutputIterator&)>& fields, int status = 0) {
            ReplyTo(guid, fields, status);
        }
        void ReplyTo(std::uint64_t session, const std::function<void(QVE_OutputIterator&)>& fields, int status = 0) {
            QVE_Message message;
            QVE_OutputIterator out(message);
            out.WriteHeader();
            out.WriteStatus(status);
            fields(out);
            QVE_OutputIterator::PatchHeader(message, session);
            m_connection.Write(message.data(), message.size());
        }
        void ReplyError(int status, const std::vector<std::string>& texts) {
            Reply(
                [&](QVE_OutputIterator& out) {
                    out.WriteU32(static_cast<std::uint32_t>(texts.size()));
                    for (const std::string& text : texts) out.WriteString(text);
                },
                status);
        }
        IPC_Connection& GetConnection() { return m_connection; }

        std::uint64_t guid = 0;
        QVE_Command command{};
        QVE_Message request;

    private:
        IPC_Connection& m_connection;
    };

    /// Runs `script` on a thread once someone connects; the connection ends with it.
    explicit ScriptedPeer(std::function<void(Link&)> script)
        : m_server(
              IPC_Server::MakeServer(IPC_ConnectionDescriptor::Parse("quil.tcp://:auto"), false, nullptr, nullptr)),
          m_thread([this, script = std::move(script)] {
              if (!m_server->WaitForConnection()) return;
              const std::unique_ptr<IPC_Connection> connection = m_server->Accept();
              Link link(*connection);
              script(link);
          }) {}
    ~ScriptedPeer() {
        m_server->Shutdown();
        m_thread.join();
    }
    std::string GetDescriptor() const { return m_server->GetDescriptor()->str(); }

private:
    std::unique_ptr<IPC_Server> m_server;
    std::thread m_thread;
};

}  // namespace qve
