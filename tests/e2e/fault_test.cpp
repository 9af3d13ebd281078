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
#include "tests/support/ScratchFolder.h"
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

/// A statement that changes the database; % stands for the folder of the texts.
struct Change {
    const char* name;
    const char* statement;
    const char* before = "";  ///< run first, without faults
};

class FaultTest : public testing::TestWithParam<Change> {
protected:
    FaultTest() {
        fs::create_directories(m_path / "temp");
        fs::create_directories(m_base);
        std::ofstream(m_path / "old.csv") << "id,word\n1,one\n2,two\n3,one\n";
        std::ofstream(m_path / "new.csv") << "id,word\n4,four\n5,\n";
        std::ofstream(m_path / "control") << std::string(sizeof(FaultControl), '\0');
        const int descriptor = ::open((m_path / "control").c_str(), O_RDWR | O_CLOEXEC);
        void* shared = ::mmap(nullptr, sizeof(FaultControl), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        ::close(descriptor);
        EXPECT_NE(shared, MAP_FAILED);
        m_control = static_cast<FaultControl*>(shared);

        Start();
        m_client->Run("(create database \"" + m_db.string() + "\")");
        m_client->Run("(create schema [s])");
        m_client->Run("(create table-from-query [s].[old] (text \"" + (m_path / "old.csv").string() + "\"))");
        if (*GetParam().before) m_client->Run(GetParam().before);
        m_client->Run("(connect null)");
        fs::copy(m_db, m_path / "pristine", fs::copy_options::recursive);
        m_before = Reopen();
        m_statement = GetParam().statement;
        for (size_t at; (at = m_statement.find('%')) != std::string::npos;) {
            m_statement.replace(at, 1, m_path.string());
        }
    }
    ~FaultTest() override {
        m_client.reset();
        m_server.reset();
        ::munmap(m_control, sizeof(FaultControl));
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
        Restore("pristine");
        Connect();
    }
    /// Puts a copy in the place of the database.
    void Restore(const char* copy) {
        fs::remove_all(m_db);
        fs::copy(m_path / copy, m_db, fs::copy_options::recursive);
    }
    std::string ConnectStatement() const { return "(connect \"" + m_db.string() + "\")"; }
    void Connect() { m_client->Run(ConnectStatement()); }
    static size_t CountFiles(const fs::path& path) {
        if (!fs::is_directory(path)) return 1;
        return static_cast<size_t>(
            std::count_if(fs::recursive_directory_iterator(path), fs::recursive_directory_iterator(),
                          [](const fs::directory_entry& entry) { return !entry.is_directory(); }));
    }
    /// The columns and rows of a query, in a text.
    std::string Contents(const std::string& query) {
        const test::Rows found = m_client->Run(query);
        std::string text;
        for (const std::string& column : found.columns) text += " " + column;
        for (const test::Row& row : found.rows) {
            text += "\n ";
            for (const test::Cell& cell : row) text += " " + FormatCell(cell);
        }
        return text + "\n";
    }
    /// What the tables hold, in a text.
    std::string Tables() {
        std::string text;
        for (const test::Row& row : m_client->Run("(show schemas)").rows) {
            const std::string schema = FormatCell(row[0]);
            if (schema == "SYS") continue;
            text += schema + "\n";
            for (const test::Row& table : m_client->Run("(show tables [" + schema + "])").rows) {
                const std::string name = "[" + schema + "].[" + FormatCell(table[1]) + "]";
                text += name + Contents("(describe " + name + ")");
                if (m_client->Run("(describe " + name + ")").rows.empty()) continue;
                text += Contents("(table " + name + ")");
            }
        }
        return text;
    }
    /// The state that an object shows which reads everything anew.
    State Reopen() {
        m_client->Run("(connect null)");
        Connect();
        State state;
        state.tables = Tables();
        state.files = CountFiles(m_db);
        return state;
    }
    /// Runs a statement with the fault at call `at`; the status.
    int RunWithFault(FaultControl::Kind kind, int64_t at) { return RunWithFault(kind, at, m_statement); }
    int RunWithFault(FaultControl::Kind kind, int64_t at, const std::string& statement) {
        m_control->calls = 0;
        m_control->at = at;
        m_control->kind = kind;
        std::fill(std::begin(m_control->name), std::end(m_control->name), '\0');
        m_control->armed = 1;
        int status = 0;
        try {
            m_client->Run(statement);
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
        EXPECT_GT(calls, 3);
        m_after = Reopen();
        EXPECT_FALSE(m_after == m_before);
        return calls;
    }
    void ExpectOneOfBoth(const State& state, const std::string& where) const {
        EXPECT_TRUE(state == m_before || state == m_after)
            << where << "\n"
            << state.tables << state.files << " files, " << m_before.files << " before and " << m_after.files
            << " after";
    }
    /// The next that works in the folder of the database removes what lies beside it.
    void ExpectNothingBeside() {
        m_client->Run("(connect null)");
        m_client->Run("(create database \"" + (m_base / "other").string() + "\")");
        m_client->Run("(connect null)");
        m_client->Run("(drop database \"" + (m_base / "other").string() + "\" cascade)");
        EXPECT_EQ(std::distance(fs::directory_iterator(m_base), fs::directory_iterator()), 1);
    }
    std::string Where(int64_t at) const { return "call " + std::to_string(at) + ", " + m_control->name; }

    const test::ScratchFolder m_scratch{Scratch()};
    const fs::path m_path = m_scratch.GetPath();
    const fs::path m_base = m_path / "base";
    const fs::path m_db = m_base / "db";
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
        ExpectOneOfBoth(state, Where(at));
        before += state == m_before;
        EXPECT_EQ(CountFiles(m_path / "temp"), 0u) << Where(at);
        EXPECT_EQ(std::distance(fs::directory_iterator(m_path / "temp" / "corvane" / "temp"), fs::directory_iterator()),
                  1)
            << Where(at);
        if (HasFailure()) break;
    }
    // The change happens at one moment, somewhere in the middle.
    EXPECT_GT(before, 0u);
    ExpectNothingBeside();
}

// Whoever puts in order what a crash left may be killed, or meet a disk that fails, in the middle of that.
TEST_P(FaultTest, ARecoveryThatFailsIsDoneByTheNext) {
    const int64_t calls = CountCalls();
    const int64_t crashes = 8;  // this many moments of the statement
    int64_t recovered = 0;
    for (int64_t crash = 0; crash < crashes; ++crash) {
        // The last ones one by one: there the change is being put in place.
        const int64_t at = crash < crashes / 2 ? calls * crash / crashes : calls - (crashes - crash);
        if (at < 0) continue;
        Restore();
        EXPECT_NE(RunWithFault(FaultControl::kill, at), 0) << Where(at);
        fs::remove_all(m_path / "crashed");
        fs::copy(m_db, m_path / "crashed", fs::copy_options::recursive);
        Start();
        if (RunWithFault(FaultControl::none, -1, ConnectStatement()) != 0) ADD_FAILURE() << Where(at);
        const int64_t steps = m_control->calls;
        const State expected = Reopen();
        ExpectOneOfBoth(expected, Where(at));
        for (const auto kind : {FaultControl::kill, FaultControl::noSpace, FaultControl::inputOutput}) {
            for (int64_t step = 0; step < steps; ++step) {
                m_client->Run("(connect null)");
                Restore("crashed");
                const int status = RunWithFault(kind, step, ConnectStatement());
                SCOPED_TRACE("killed at call " + std::to_string(at) + ", recovery at " + Where(step) + ", status " +
                             std::to_string(status));
                if (kind == FaultControl::kill) {
                    EXPECT_NE(status, 0);
                    Start();
                }
                const State state = Reopen();
                EXPECT_EQ(state.tables, expected.tables);
                EXPECT_EQ(state.files, expected.files);
                ++recovered;
                if (HasFailure()) return;
            }
        }
    }
    // A package is made beside the database, in which there is nothing to put in order.
    if (std::string(GetParam().name).find("package") == std::string::npos) {
        EXPECT_GT(recovered, 20);
    }
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
            std::string seen;
            ASSERT_NO_THROW(seen = Tables());
            const State state = Reopen();
            EXPECT_EQ(seen, state.tables) << Where(at) << ", status " << status;
            ExpectOneOfBoth(state, Where(at));
            if (status == 0) {
                EXPECT_EQ(state.tables, m_after.tables) << Where(at);
            }
            // It works when it is tried again.
            if (state == m_before) {
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
    testing::Values(
        Change{"load", "(create table-from-query [s].[new] (text \"%/new.csv\"))"},
        Change{"append", "(create table-from-query [s].[new] (append (table [s].[old]) (text \"%/new.csv\") ()))"},
        Change{"insert", "(insert [s].[old] ([id] [word]) \"%/new.csv\")"},
        Change{"column",
               "(create column [s].[old].[more] ((type \"bigint\") (computed-by \"(+ [id] 1)\")"
               " (description \"%\")))"},
        Change{"table", "(create table [s].[new] (([a] ((type \"bigint\"))) ([b] ((type \"varchar\")))))"},
        Change{"schema", "(create schema [more])"}, Change{"dropped_column", "(drop column [s].[old].[word])"},
        Change{"dropped_table", "(drop table [s].[old] cascade)"},
        Change{"dropped_schema", "(drop schema [s] cascade)"},
        Change{"made_again", "(create table-from-query [s].[old] (text \"%/new.csv\"))", "(drop table [s].[old])"},
        Change{"package", "(package in-place)"}, Change{"unpackage", "(unpackage in-place)", "(package in-place)"}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace qve
