#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "client/QVE_ServerProcess2.h"
#include "client/status.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

int StatusOfStart(QVE_ServerProcess2& process, const std::string& path) {
    QVE_ServerOptions options;
    options.path = path;
    try {
        process.Start(options);
        return 0;
    } catch (const QuillonException& exception) {
        return exception.GetStatus();
    }
}

/// A shell script that stands for a server; removed at the end.
class FakeServer {
public:
    explicit FakeServer(const std::string& body)
        : m_path(testing::TempDir() + "fake_server_" + std::to_string(getpid()) + ".sh") {
        std::ofstream(m_path) << "#!/bin/bash\n" << body;
        chmod(m_path.c_str(), 0700);
    }
    ~FakeServer() { std::filesystem::remove(m_path); }
    const std::string& GetPath() const { return m_path; }

private:
    const std::string m_path;
};

// Reads the address from --callback quil.tcp://[host]:port, and calls back.
constexpr const char* s_callBack =
    "hostport=${2#quil.tcp://}; port=${hostport##*:}; host=${hostport%:*}; host=${host#[}; host=${host%]}\n"
    "exec 3<>/dev/tcp/$host/$port; printf '\\021quil.tcp://h:1234' >&3\n";

TEST(ServerProcess, ReportsWhyAServerDoesNotCome) {
    QVE_ServerProcess2 process;
    EXPECT_EQ(StatusOfStart(process, "/no/such/server"), status::QVE_ServerProcess_Launch);
    EXPECT_EQ(StatusOfStart(process, "/bin/false"), status::QVE_ServerProcess_CallBack);
    EXPECT_FALSE(process.IsAlive());
    EXPECT_THROW(process.Stop(), QVE_LogicError);
    EXPECT_THROW(process.GetServerDescriptor(), QVE_LogicError);
}

TEST(ServerProcess, LearnsTheAddressAndStops) {
    const FakeServer server(std::string(s_callBack) + "exec sleep 1000\n");
    QVE_ServerProcess2 process;
    ASSERT_EQ(StatusOfStart(process, server.GetPath()), 0);
    EXPECT_EQ(process.GetServerDescriptor(), "quil.tcp://h:1234");
    EXPECT_TRUE(process.IsAlive());
    EXPECT_EQ(StatusOfStart(process, server.GetPath()), status::QVE_ServerProcess_AlreadyStarted);
    const int id = process.GetProcessId();
    process.Stop();
    EXPECT_NE(kill(id, 0), 0);
    EXPECT_THROW(process.GetProcessId(), QVE_LogicError);
}

TEST(ServerProcess, KillsAServerThatHangs) {
    const FakeServer server("trap '' TERM\n" + std::string(s_callBack) + "while true; do sleep 0.1; done\n");
    QVE_ServerProcess2 process;
    ASSERT_EQ(StatusOfStart(process, server.GetPath()), 0);
    const int id = process.GetProcessId();
    process.Stop();
    EXPECT_NE(kill(id, 0), 0);
}

}  // namespace
}  // namespace qve
