// A server that is killed, or whose disk fails, at any call that changes the disk: the database then holds the state
// before the statement or the state after it, and nothing else is left behind.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "tests/support/EngineClient.h"
#include "tests/support/fault_injection.h"

namespace qve {
namespace {

namespace fs = std::filesystem;
using test::EngineClient;
using test::EngineError;
using test::EngineProcess;
using test::FormatCell;

/// A state of the database as its users see it, and how many files it has.
struct State {
    std::string tables;
    size_t files = 0;
    friend bool operator==(const State&, const State&) = default;
};

class FaultTest : public testing::TestWithParam<std::pair<const char*, const char*>> {
protected:
    FaultTest() : m_path(Scratch() / ("qve_fault_" + std::to_string(::getpid()))) {
        fs::remove_all(m_path);
        fs::create_directories(m_path / "temp");
        std::ofstream(m_path / "old.csv") << "id,word\n1,one\n2,two\n3,one\n";
        std::ofstream(m_path / "new.csv") << "id,word\n4,four\n5,\n";
        std::ofstream(m_path / "control") << std::string(sizeof(FaultControl), '\0');
        const int descriptor = ::open((m_path / "control").c_str(), O_RDWR | O_CLOEXEC);
        void* shared = ::mmap(nullptr, sizeof(FaultControl), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        ::close(descriptor);
        EXPECT_NE(shared, MAP_FAILED);
        m_control = static_cast<FaultControl*>(shared);

        Start();
        m_client->Run("(create database \"" + (m_path / "db").string() + "\")");
        m_client->Run("(create schema [s])");
        m_client->Run("(create table-from-query [s].[old] (text \"" + (m_path / "old.csv").string() + "\"))");
        m_client->Run("(connect null)");
        fs::copy(m_path / "db", m_path / "pristine", fs::copy_options::recursive);
        m_before = Reopen();
        m_statement = GetParam().second;
        m_statement.replace(m_statement.find('%'), 1, (m_path / "new.csv").string());
    }
    ~FaultTest() override {
        m_client.reset();
        m_server.reset();
        ::munmap(m_control, sizeof(FaultControl));
        fs::remove_all(m_path);
    }
    /// In memory where there is such a place: the faults are many, and each waits for the disk.
    static fs::path Scratch() {
        return ::access("/dev/shm", W_OK) == 0 ? fs::path("/dev/shm") : fs::temp_directory_path();
    }

    /// A new server with the faults in reach.
    void Start() {
        m_client.reset();
        m_server.reset();
        ::setenv("LD_PRELOAD", QVE_FAULT_LIBRARY, 1);
        ::setenv("QVE_FAULTS", (m_path / "control").c_str(), 1);
        m_server = std::make_unique<EngineProcess>(std::string(), (m_path / "temp").string());
        ::unsetenv("LD_PRELOAD");
        ::unsetenv("QVE_FAULTS");
        m_client = std::make_unique<EngineClient>(m_server->GetDescriptor());
    }
    void Restore() {
        m_client->Run("(connect null)");
        fs::remove_all(m_path / "db");
        fs::copy(m_path / "pristine", m_path / "db", fs::copy_options::recursive);
        Connect();
    }
    void Connect() { m_client->Run("(connect \"" + (m_path / "db").string() + "\")"); }
    static size_t CountFiles(const fs::path& path) {
        return static_cast<size_t>(
            std::count_if(fs::recursive_directory_iterator(path), fs::recursive_directory_iterator(),
                          [](const fs::directory_entry& entry) { return !entry.is_directory(); }));
    }
    /// What the tables hold, in a text.
    std::string Tables() {
        std::string text;
        for (const test::Row& table : m_client->Run("(show tables [s])").rows) {
            const auto found = m_client->Run("(table [s].[" + FormatCell(table[1]) + "])");
            text += FormatCell(table[1]) + ":";
            for (const std::string& column : found.columns) text += " " + column;
            for (const test::Row& row : found.rows) {
                text += "\n ";
                for (const test::Cell& cell : row) text += " " + FormatCell(cell);
            }
            text += "\n";
        }
        return text;
    }
    /// The state that an object shows which reads everything anew.
    State Reopen() {
        m_client->Run("(connect null)");
        Connect();
        State state;
        state.tables = Tables();
        state.files = CountFiles(m_path / "db");
        return state;
    }
    /// Runs the statement with the fault at call `at`; the status.
    int RunWithFault(FaultControl::Kind kind, int64_t at) {
        m_control->calls = 0;
        m_control->at = at;
        m_control->kind = kind;
        std::fill(std::begin(m_control->name), std::end(m_control->name), '\0');
        m_control->armed = 1;
        int status = 0;
        try {
            m_client->Run(m_statement);
        } catch (const EngineError& error) {
            status = error.GetStatus();
        }
        m_control->armed = 0;
        return status;
    }
    /// Runs the statement without a fault: how many calls it makes, and what comes of it.
    int64_t CountCalls() {
        Restore();
        EXPECT_EQ(RunWithFault(FaultControl::none, -1), 0);
        const int64_t calls = m_control->calls;
        EXPECT_GT(calls, 10);
        m_after = Reopen();
        EXPECT_NE(m_after.tables, m_before.tables);
        return calls;
    }
    std::string Where(int64_t at) const { return "call " + std::to_string(at) + ", " + m_control->name; }

    const fs::path m_path;
    std::string m_statement;
    FaultControl* m_control = nullptr;
    std::unique_ptr<EngineProcess> m_server;
    std::unique_ptr<EngineClient> m_client;
    State m_before;
    State m_after;
};

TEST_P(FaultTest, AKillLeavesTheStateBeforeOrAfter) {
    const int64_t calls = CountCalls();
    size_t before = 0;
    for (int64_t at = 0; at < calls; ++at) {
        Restore();
        EXPECT_NE(RunWithFault(FaultControl::kill, at), 0) << Where(at);
        Start();
        const State state = Reopen();
        EXPECT_TRUE(state == m_before || state == m_after)
            << Where(at) << "\n"
            << state.tables << state.files << " files, " << m_before.files << " before and " << m_after.files
            << " after";
        before += state == m_before;
        EXPECT_EQ(CountFiles(m_path / "temp"), 0u) << Where(at);
        EXPECT_EQ(std::distance(fs::directory_iterator(m_path / "temp" / "corvane" / "temp"), fs::directory_iterator()),
                  1)
            << Where(at);
        if (HasFailure()) break;
    }
    // The change happens at one moment, somewhere in the middle.
    EXPECT_GT(before, 0u);
}

TEST_P(FaultTest, ADiskThatFailsLeavesTheStateBeforeOrAfter) {
    const int64_t calls = CountCalls();
    const int server = m_server->GetProcessId();
    for (const auto kind : {FaultControl::noSpace, FaultControl::inputOutput}) {
        for (int64_t at = 0; at < calls; ++at) {
            Restore();
            const int status = RunWithFault(kind, at);
            // The session goes on, and sees what one that comes later sees.
            SCOPED_TRACE(Where(at) + ", status " + std::to_string(status));
            const std::string seen = Tables();
            const State state = Reopen();
            EXPECT_EQ(seen, state.tables) << Where(at) << ", status " << status;
            EXPECT_TRUE(state == m_before || state == m_after)
                << Where(at) << ", status " << status << "\n"
                << state.tables << state.files << " files, " << m_before.files << " before and " << m_after.files
                << " after";
            if (status == 0) {
                EXPECT_EQ(state.tables, m_after.tables) << Where(at);
            }
            // It works when it is tried again.
            if (state.tables == m_before.tables) {
                EXPECT_EQ(RunWithFault(FaultControl::none, -1), 0) << Where(at);
            }
            EXPECT_EQ(Reopen().tables, m_after.tables) << Where(at);
            if (HasFailure()) return;
        }
    }
    EXPECT_EQ(server, m_server->GetProcessId());
    EXPECT_EQ(CountFiles(m_path / "temp"), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Statements, FaultTest,
    testing::Values(std::pair("load", "(create table-from-query [s].[new] (text \"%\"))"),
                    std::pair("insert", "(insert [s].[old] ([id] [word]) \"%\")"),
                    std::pair("column",
                              "(create column [s].[old].[more] ((type \"bigint\") (computed-by \"(+ [id] 1)\")"
                              " (description \"%\")))")),
    [](const auto& info) { return std::string(info.param.first); });

}  // namespace
}  // namespace qve
