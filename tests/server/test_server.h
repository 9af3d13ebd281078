#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "client/QVE_Client.h"
#include "client/QVE_ClientRowset.h"
#include "client/QVE_ServerError.h"
#include "server/QVE_Server.h"
#include "server/ipc/IPC_Server.h"
#include "tests/support/ScratchFolder.h"
#include "types/usrprops.h"

namespace qve {

using test::ScratchFolder;

/// A server in this process, pumped by a thread of its own until the end of the object.
class TestServer {
public:
    explicit TestServer(usrprops properties = {});
    ~TestServer();
    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;

    const std::string& GetDescriptor() const { return m_descriptor; }
    /// A connected client.
    RefCntPtr<QVE_Client> Connect() const;

private:
    std::string m_descriptor;
    std::unique_ptr<QVE_Server> m_server;
    std::thread m_pump;
};

/// Runs a statement: its rows as texts, values separated by blanks.
std::vector<std::string> RunQuery(QVE_Client& client, const std::string& text);

/// The status of a statement, 0 when it succeeds.
int StatusOf(QVE_Client& client, const std::string& text);

/// A table [t].[n] with the column [x] of the numbers from 0 to rows - 1, in a new database to which the client is
/// connected afterwards.
void MakeNumbers(QVE_Client& client, const ScratchFolder& directory, unsigned rows);

}  // namespace qve
