// The server as a process: what it says, and how it ends.

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/EngineClient.h"

namespace qve::test {
namespace {

using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;

/// A server of its own configuration whose log comes through a pipe.
class LoggedServer {
public:
    explicit LoggedServer(const std::string& configuration) {
        static int count = 0;
        m_config = testing::TempDir() + fmt::format("process_test_{}_{}.yaml", getpid(), ++count);
        std::ofstream(m_config) << configuration;
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        std::string arguments[] = {QVE_SERVER_PATH, "--config", m_config};
        char* argv[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), nullptr};
        const int failure = posix_spawn(&m_process, QVE_SERVER_PATH, &actions, nullptr, argv, environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        if (failure != 0) throw std::runtime_error("cannot start " QVE_SERVER_PATH);
        m_log = fdopen(ends[0], "r");
    }
    ~LoggedServer() {
        if (m_process != 0) {
            kill(m_process, SIGKILL);
            waitpid(m_process, nullptr, 0);
        }
        fclose(m_log);
        std::filesystem::remove(m_config);
    }
    LoggedServer(const LoggedServer&) = delete;
    LoggedServer& operator=(const LoggedServer&) = delete;

    /// Reads the log on to the line that holds `text`, and gives what stands behind it.
    std::string WaitFor(const std::string& text) {
        for (std::string line; ReadLine(line);) {
            const std::size_t found = line.find(text);
            if (found != line.npos) return line.substr(found + text.size());
        }
        throw std::runtime_error("the log ended without \"" + text + "\"");
    }
    std::string WaitUntilReady() { return WaitFor("server listening for incoming connections at: "); }
    void Signal(int number) const { kill(m_process, number); }
    /// The rest of the log, and the status of the exit in `status`; -1 for a signal.
    std::vector<std::string> WaitForEnd(int& status) {
        std::vector<std::string> lines;
        for (std::string line; ReadLine(line);) lines.push_back(line);
        int state = 0;
        waitpid(std::exchange(m_process, 0), &state, 0);
        status = WIFEXITED(state) ? WEXITSTATUS(state) : -1;
        return lines;
    }

private:
    bool ReadLine(std::string& line) {
        line.clear();
        for (int c = fgetc(m_log); c != EOF; c = fgetc(m_log)) {
            if (c == '\n') return true;
            line += static_cast<char>(c);
        }
        return !line.empty();
    }

    std::string m_config;
    pid_t m_process = 0;
    FILE* m_log = nullptr;
};

class StopSignal : public testing::TestWithParam<int> {};

TEST_P(StopSignal, EndsTheServerInOrderAlsoWithClients) {
    LoggedServer server("port:auto\n");
    EngineClient client(server.WaitUntilReady());
    EXPECT_EQ(client.Run("(show collations)").columns.empty(), false);
    server.Signal(GetParam());
    int status = -1;
    const auto rest = server.WaitForEnd(status);
    EXPECT_EQ(status, 0);
    EXPECT_THAT(rest, Contains(EndsWith("qveserver: exit (0)")));
    EXPECT_THROW(client.Run("(show collations)"), EngineError);
}

INSTANTIATE_TEST_SUITE_P(Signals, StopSignal, testing::Values(SIGINT, SIGTERM));

TEST(Process, EndsOnAConfigurationThatItCannotFollow) {
    LoggedServer server("port:0\n");
    int status = 0;
    server.WaitForEnd(status);
    EXPECT_EQ(status, 255);
}

TEST(Process, WritesTelemetryOfItsSessions) {
    const std::string path = testing::TempDir() + "process_telemetry_" + std::to_string(getpid()) + ".txt";
    LoggedServer server("port:auto\nmetrics.enable:true\nmetrics.set:all\nmetrics.out:" + path +
                        "\nmetrics.parameters:--sessionspecific on\n");
    server.WaitFor("metrics opened");
    {
        EngineClient client(server.WaitUntilReady());
        client.Run("(show collations)");
    }
    server.Signal(SIGTERM);
    int status = -1;
    const auto rest = server.WaitForEnd(status);
    EXPECT_EQ(status, 0);
    EXPECT_THAT(rest, Contains(HasSubstr("QVETelemetry::Background thread exiting")));
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    std::filesystem::remove(path);
    EXPECT_THAT(lines,
                Contains(testing::AllOf(HasSubstr("\tServer::Session::QueryExecute\tclose\t"), HasSubstr("elapse="))));
}

TEST(Process, ServesWithoutTelemetryThatItCannotWrite) {
    LoggedServer server("port:auto\nmetrics.enable:true\nmetrics.out:/nowhere/telemetry.txt\n");
    server.WaitFor("Failed to enable metrics");
    EngineClient client(server.WaitUntilReady());
    EXPECT_FALSE(client.Run("(show collations)").columns.empty());
}

}  // namespace
}  // namespace qve::test
