#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "server/ipc/IPC_Server.h"
#include "server/ipc/IPC_ServerProxy.h"
#include "server/ipc/IPC_Socket.h"
#include "server/ipc/IPC_SocketConnectionDescriptor.h"
#include "server/ipc/IPC_Whitelist.h"

namespace qve {
namespace {

using testing::HasSubstr;

std::unique_ptr<IPC_Server> MakeServer(std::shared_ptr<const IPC_Whitelist> whitelist = nullptr) {
    return IPC_Server::MakeServer(IPC_ConnectionDescriptor::Parse("quil.tcp://ignored.invalid:auto"), false, nullptr,
                                  std::move(whitelist));
}

TEST(SocketServer, BindsToLoopbackAndReportsItsPort) {
    const auto server = MakeServer();
    const auto endpoint = server->GetDescriptor();
    const auto& descriptor = dynamic_cast<const IPC_SocketConnectionDescriptor&>(*endpoint);
    EXPECT_TRUE(descriptor.GetHost() == "::1" || descriptor.GetHost() == "127.0.0.1") << descriptor.str();
    EXPECT_NE(descriptor.GetPort(), 0);
}

TEST(SocketServer, CarriesBytesBothWays) {
    const auto server = MakeServer();
    const auto client = IPC_Connection::Connect(*server->GetDescriptor());
    ASSERT_TRUE(server->WaitForConnection());
    const auto peer = server->Accept();

    EXPECT_FALSE(peer->IsReadPending(0));
    // Larger than the buffers of the system, so that both ends have to loop.
    std::string sent(3 << 20, '\0');
    for (std::size_t i = 0; i < sent.size(); ++i) sent[i] = static_cast<char>(i * 7 + i / 251);
    std::thread writer([&] {
        client->Write(5U);
        client->Write(sent.data(), sent.size());
        client->Write(9U);
    });
    EXPECT_TRUE(peer->IsReadPending(-1));
    unsigned word = 0;
    peer->Read(word);
    EXPECT_EQ(word, 5U);
    std::string received(sent.size() - 5000, '\0');
    peer->Read(received.data(), received.size());
    EXPECT_EQ(received, sent.substr(0, received.size()));
    peer->Skip(5000);
    peer->Read(word);
    EXPECT_EQ(word, 9U);
    writer.join();

    peer->Write("back", 4);
    char back[4];
    client->Read(back, 4);
    EXPECT_EQ(std::string(back, 4), "back");
}

TEST(SocketServer, DisconnectEndsABlockedRead) {
    const auto server = MakeServer();
    const auto client = IPC_Connection::Connect(*server->GetDescriptor());
    server->WaitForConnection();
    const auto peer = server->Accept();
    auto blocked = std::async(std::launch::async, [&] {
        char byte;
        EXPECT_THROW(peer->Read(&byte, 1), IPC_Connection::ipc_connection_closed);
    });
    peer->Disconnect();
    blocked.get();
    char byte;
    EXPECT_THROW(client->Read(&byte, 1), IPC_Connection::ipc_connection_closed);
    EXPECT_TRUE(client->IsReadPending(-1));
}

TEST(SocketServer, ShutdownEndsAWaitForConnection) {
    const auto server = MakeServer();
    auto waiting = std::async(std::launch::async, [&] { return server->WaitForConnection(); });
    server->Shutdown();
    EXPECT_FALSE(waiting.get());
    EXPECT_FALSE(server->WaitForConnection());
    EXPECT_THROW(server->Accept(), std::runtime_error);
}

TEST(SocketServer, DropsPeersOffTheWhitelist) {
    const auto server = MakeServer(std::make_shared<IPC_Whitelist>("192.0.2.1,2001:db8::1"));
    const auto client = IPC_Connection::Connect(*server->GetDescriptor());
    ASSERT_TRUE(server->WaitForConnection());
    try {
        server->Accept();
        FAIL();
    } catch (const std::runtime_error& exception) {
        EXPECT_THAT(exception.what(), HasSubstr("IPC_SocketServer::Accept: whitelist exclusion, peer="));
    }
    char byte;
    EXPECT_THROW(client->Read(&byte, 1), IPC_Connection::ipc_connection_closed);
}

/// Sets the soft limit of descriptors back when it goes.
class DescriptorLimit {
public:
    explicit DescriptorLimit(rlim_t limit) {
        getrlimit(RLIMIT_NOFILE, &m_old);
        rlimit lower = m_old;
        lower.rlim_cur = limit;
        setrlimit(RLIMIT_NOFILE, &lower);
    }
    ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &m_old); }

private:
    rlimit m_old;
};

TEST(SocketServer, SurvivesAShortageOfDescriptors) {
    const auto server = MakeServer();
    const auto client = IPC_Connection::Connect(*server->GetDescriptor());
    ASSERT_TRUE(server->WaitForConnection());
    server->Accept();
    // The last free descriptor is for the next client, so that there is none for its peer.
    const int next = dup(0);
    close(next);
    std::unique_ptr<IPC_Connection> second;
    {
        const DescriptorLimit limit(next + 1);
        second = IPC_Connection::Connect(*server->GetDescriptor());
        ASSERT_TRUE(server->WaitForConnection());
        try {
            server->Accept();
            FAIL();
        } catch (const std::runtime_error& exception) {
            EXPECT_THAT(exception.what(), HasSubstr("Too many open files"));
        }
    }
    ASSERT_TRUE(server->WaitForConnection());
    server->Accept()->Write(7U);
    unsigned word = 0;
    second->Read(word);
    EXPECT_EQ(word, 7U);
}

TEST(SocketServer, CallsItsParentBack) {
    const auto proxy = IPC_ServerProxy::MakeProxy();
    const auto server = IPC_Server::MakeServer(IPC_ConnectionDescriptor::Parse("quil.tcp://:auto"), false,
                                               proxy->GetDescriptor(), nullptr);
    const auto reported = proxy->WaitForServer(10000);
    ASSERT_NE(reported, nullptr);
    EXPECT_EQ(reported->str(), server->GetDescriptor()->str());
    // The parent may close the stream and live on: the server still accepts.
    proxy->Close();
    const auto client = IPC_Connection::Connect(*reported);
    EXPECT_TRUE(server->WaitForConnection());
}

TEST(ServerProxy, GivesUpOnASilentServer) {
    const auto proxy = IPC_ServerProxy::MakeProxy();
    EXPECT_EQ(proxy->WaitForServer(1), nullptr);
    // Half a call-back is none.
    const auto server = IPC_Connection::Connect(*proxy->GetDescriptor());
    const char length = 20;
    server->Write(&length, 1);
    EXPECT_EQ(proxy->WaitForServer(50), nullptr);
}

TEST(ServerProxy, RefusesNonsense) {
    const auto proxy = IPC_ServerProxy::MakeProxy();
    const auto server = IPC_Connection::Connect(*proxy->GetDescriptor());
    server->Write("\4junk", 5);
    EXPECT_THROW(proxy->WaitForServer(10000), std::invalid_argument);
}

TEST(Socket, RefusesWrongCalls) {
    IPC_Socket socket;
    char byte;
    EXPECT_THROW(socket.Recv(nullptr, 0), IPC_Socket::buffer_is_null);
    EXPECT_THROW(socket.Recv(&byte, 1), IPC_Socket::socket_closed);
    EXPECT_THROW(socket.GetPeer(), IPC_Socket::socket_closed);
}

class OtherDescriptor : public IPC_ConnectionDescriptor {
public:
    const std::string& str() const override { return m_text; }

private:
    std::string m_text = "other://";
};

TEST(SocketServer, RefusesOtherKindsOfEndpoints) {
    const auto other = std::make_shared<OtherDescriptor>();
    const auto socket = IPC_ConnectionDescriptor::Parse("quil.tcp://:auto");
    EXPECT_THROW(IPC_Server::MakeServer(other, false, nullptr, nullptr), std::range_error);
    EXPECT_THROW(IPC_Server::MakeServer(socket, false, other, nullptr), std::range_error);
    EXPECT_THROW(IPC_Connection::Connect(*other), std::range_error);
}

}  // namespace
}  // namespace qve
