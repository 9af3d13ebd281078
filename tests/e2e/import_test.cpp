// What an interrupted import leaves: nothing.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>
#include <thread>

#include "tests/support/EngineClient.h"
#include "tests/support/ScratchFolder.h"

namespace qve {
namespace {

using test::EngineClient;
using test::EngineError;
using test::EngineProcess;
using test::FormatCell;

constexpr int s_cancelled = 50000;

/// A directory with a text of many records, room for a database, and the server's temporary files.
class InterruptedImport : public testing::Test {
protected:
    InterruptedImport()
        : m_base((m_path / "base").string()),
          m_temp((m_path / "temp").string()),
          m_import("(create table-from-query [t].[big] (text \"" + (m_path / "big.csv").string() + "\"))") {
        std::filesystem::create_directories(m_temp);
        std::ofstream text(m_path / "big.csv");
        text << "id,word,x\n";
        for (unsigned i = 0; i < s_rows; ++i) text << i << ",word " << i * 7919 % 100003 << "," << i % 97 << ".5\n";
    }

    void Create(EngineClient& client) const {
        client.Run("(create database \"" + m_base + "\")");
        client.Run("(create schema [t])");
    }
    size_t CountFiles(const std::string& directory) const {
        size_t count = 0;
        std::error_code gone;  // files come and go meanwhile
        for (std::filesystem::recursive_directory_iterator it(directory, gone), end; it != end; it.increment(gone)) {
            count += it->is_regular_file(gone);
        }
        return count;
    }
    static size_t CountTables(EngineClient& client) { return client.Run("(show tables)").rows.size(); }

    static constexpr unsigned s_rows = 300'000;
    const test::ScratchFolder m_scratch;
    const std::filesystem::path m_path = m_scratch.GetPath();
    const std::string m_base;
    const std::string m_temp;
    const std::string m_import;
};

TEST_F(InterruptedImport, ACancelLeavesNoTableAndNoFile) {
    const EngineProcess server({}, m_temp);
    EngineClient client(server.GetDescriptor());
    Create(client);
    const size_t before = CountFiles(m_base);
    const size_t tables = CountTables(client);
    QVE_Statement* statement = nullptr;
    ASSERT_EQ(QVE_StatementOpen(client.Get(), &statement), 0);
    for (unsigned i = 0; i < 5; ++i) {
        ASSERT_EQ(QVE_StatementPrepare(statement, m_import.c_str()), 0);
        std::atomic<bool> started{false};
        auto outcome = std::async(std::launch::async, [&] {
            QVE_Rowset* rowset = nullptr;
            started = true;
            return QVE_StatementExecute(statement, &rowset);
        });
        // At the start, and while there are temporary files or files of the table to be.
        while (!started) std::this_thread::yield();
        const std::string& watched = i % 2 ? m_temp : m_base;
        const size_t files = CountFiles(watched);
        const auto runs = [&] { return outcome.wait_for(std::chrono::seconds(0)) != std::future_status::ready; };
        while (i > 0 && runs() && CountFiles(watched) == files) std::this_thread::yield();
        ASSERT_EQ(QVE_StatementCancel(statement), 0);
        const QVE_Status status = outcome.get();
        if (status == 0) {
            client.Run("(drop table [t].[big])");  // the cancel came too late
            // It stops the next execution.
            QVE_Rowset* rowset = nullptr;
            QVE_StatementPrepare(statement, "(show tables)");
            QVE_StatementExecute(statement, &rowset);
            if (rowset) QVE_RowsetClose(rowset);
        } else {
            EXPECT_EQ(status, s_cancelled);
        }
        EXPECT_EQ(CountTables(client), tables);
        EXPECT_EQ(CountFiles(m_base), before);
        EXPECT_EQ(CountFiles(m_temp), 0u);
    }
    QVE_StatementClose(statement);
    client.Run(m_import);
    EXPECT_EQ(FormatCell(client.Run("(aggregate (table [t].[big]) () (([n] (count))))").rows[0][0]),
              std::to_string(s_rows));
}

TEST_F(InterruptedImport, AKilledServerLeavesTheDatabaseAsItWas) {
    {
        const EngineProcess server({}, m_temp);
        EngineClient client(server.GetDescriptor());
        Create(client);
        client.Run("(create table-from-query [t].[old] (restrict (text \"" + (m_path / "big.csv").string() +
                   "\") ([id])))");
    }
    for (unsigned i = 0; i < 6; ++i) {
        {
            const EngineProcess server({}, m_temp);
            EngineClient client(server.GetDescriptor());
            client.Run("(connect \"" + m_base + "\")");
            const size_t files = CountFiles(m_base);
            std::atomic<bool> ended{false};
            std::thread importing([&] {
                try {
                    client.Run(m_import);
                } catch (const EngineError&) {
                }
                ended = true;
            });
            // While the text is parsed, and at different places of the writing.
            const size_t more = i == 0 ? 0 : 1 + (i - 1) * 4;
            while (!ended && CountFiles(m_base) < files + more) std::this_thread::yield();
            ::kill(server.GetProcessId(), SIGKILL);
            importing.join();
        }
        const EngineProcess server({}, m_temp);
        EngineClient client(server.GetDescriptor());
        client.Run("(connect \"" + m_base + "\")");
        const std::string count = "(aggregate (table [t].[%]) () (([n] (count)) ([s] (sum [id]))))";
        const auto rows = [&](const std::string& table) {
            std::string text = count;
            const test::Row row = client.Run(text.replace(text.find('%'), 1, table)).rows.at(0);
            return FormatCell(row[0]) + " " + FormatCell(row[1]);
        };
        EXPECT_EQ(rows("old"), "300000 44999850000") << i;
        try {
            EXPECT_EQ(rows("big"), "300000 44999850000") << i;
            client.Run("(drop table [t].[big])");
        } catch (const EngineError& none) {
            EXPECT_NE(std::string(none.what()).find("big"), std::string::npos) << none.what();
        }
    }
}

}  // namespace
}  // namespace qve
