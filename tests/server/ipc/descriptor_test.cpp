#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "server/ipc/IPC_SocketConnectionDescriptor.h"

namespace qve {
namespace {

const IPC_SocketConnectionDescriptor& Socket(const IPC_ConnectionDescriptor::Ptr& descriptor) {
    return dynamic_cast<const IPC_SocketConnectionDescriptor&>(*descriptor);
}

std::string ErrorOf(const std::string& text) {
    try {
        return "parsed as " + IPC_ConnectionDescriptor::Parse(text)->str();
    } catch (const std::invalid_argument& exception) {
        return exception.what();
    }
}

TEST(ConnectionDescriptor, ReadsHostsAndPorts) {
    const auto ipv6 = IPC_ConnectionDescriptor::Parse("quil.tcp://[::1]:27042");
    EXPECT_EQ(Socket(ipv6).GetHost(), "::1");
    EXPECT_EQ(Socket(ipv6).GetPort(), 27042);
    EXPECT_EQ(ipv6->str(), "quil.tcp://[::1]:27042");

    const auto any = IPC_ConnectionDescriptor::Parse("quil.tcp://:auto");
    EXPECT_EQ(Socket(any).GetHost(), "");
    EXPECT_EQ(Socket(any).GetPort(), 0);

    EXPECT_EQ(IPC_ConnectionDescriptor::Parse("quil.tcp://localhost:1")->str(), "quil.tcp://localhost:1");
    // The last colon divides, with or without brackets.
    EXPECT_EQ(Socket(IPC_ConnectionDescriptor::Parse("quil.tcp://::1:5")).GetHost(), "::1");
    EXPECT_EQ(Socket(IPC_ConnectionDescriptor::Parse("quil.tcp://h:7x")).GetPort(), 7);
    EXPECT_EQ(IPC_SocketConnectionDescriptor(80).str(), "quil.tcp://:80");
}

TEST(ConnectionDescriptor, TellsWhatIsWrong) {
    EXPECT_EQ(ErrorOf("localhost:1"), "Connection string must be of form scheme://rest");
    EXPECT_EQ(ErrorOf("http://localhost:1"), "Unknown connection string scheme");
    EXPECT_EQ(ErrorOf("://x:1"), "Unknown connection string scheme");
    EXPECT_EQ(ErrorOf("quil.tcp://localhost"), "Socket connection must be of form quil.tcp://[host]:port");
    EXPECT_EQ(ErrorOf("quil.tcp://localhost:"), "Port must be non-empty");
    EXPECT_EQ(ErrorOf("quil.tcp://localhost:x1"), "Port must be numeric or \"auto\"");
    EXPECT_EQ(ErrorOf("quil.tcp://localhost:-1"), "Port must be numeric or \"auto\"");
    EXPECT_EQ(ErrorOf("quil.tcp://localhost:65536"), "Port must be at most 65535");
    EXPECT_EQ(ErrorOf("quil.tcp://localhost:99999999999999999999"), "Port must be at most 65535");
}

}  // namespace
}  // namespace qve
