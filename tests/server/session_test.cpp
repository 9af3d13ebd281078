#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <future>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "server/ipc/IPC_Connection.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/protocol/QVE_ReceiveMessage.h"
#include "server/protocol/status.h"
#include "server/status.h"
#include "tests/server/test_server.h"

namespace qve {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* s_sum = "(aggregate (table [t].[n]) () (([s] (sum [x])) ([n] (count [x]))))";

TEST(Session, AnswersQueriesOverItsDatabase) {
    const ScratchFolder directory;
    const TestServer server;
    const auto client = server.Connect();
    EXPECT_EQ(StatusOf(*client, "(table [t].[n])"), 48048);
    MakeNumbers(*client, directory, 5000);
    EXPECT_THAT(RunQuery(*client, s_sum), ElementsAre("12497500 5000"));
    EXPECT_THAT(RunQuery(*client, "(select (table [t].[n]) (< [x] 3))"), ElementsAre("0", "1", "2"));
    EXPECT_THAT(RunQuery(*client, "(select (table [t].[n]) (< [x] 0))"), IsEmpty());
}

TEST(Session, StaysUsableAfterAnError) {
    const ScratchFolder directory;
    const TestServer server;
    const auto client = server.Connect();
    MakeNumbers(*client, directory, 10);
    EXPECT_EQ(StatusOf(*client, "(frob [t].[n])"), 49039);
    EXPECT_EQ(StatusOf(*client, "(table [t].[n]"), 49034);
    EXPECT_NE(StatusOf(*client, "(table [t].[nonesuch])"), 0);
    EXPECT_NE(StatusOf(*client, std::string(1000000, '(')), 0);
    EXPECT_THAT(RunQuery(*client, s_sum), ElementsAre("45 10"));
}

TEST(Session, KeepsWhatWasStoredWhenTheServerStartsAgain) {
    const ScratchFolder directory;
    {
        const TestServer server;
        MakeNumbers(*server.Connect(), directory, 100);
    }
    const TestServer server;
    const auto client = server.Connect();
    client->QueryExecute("(connect \"" + directory / "base" + "\")");
    EXPECT_THAT(RunQuery(*client, s_sum), ElementsAre("4950 100"));
}

TEST(Session, ServesSeveralClientsAtOnce) {
    const ScratchFolder directory;
    const TestServer server;
    MakeNumbers(*server.Connect(), directory, 20000);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            const auto client = server.Connect();
            client->QueryExecute("(connect \"" + directory / "base" + "\")");
            for (int round = 0; round < 5; ++round) {
                EXPECT_THAT(RunQuery(*client, s_sum), ElementsAre("199990000 20000"));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST(Session, RepliesHoldWholeRowsAndGoOn) {
    const ScratchFolder directory;
    const TestServer server;
    const auto client = server.Connect();
    // More than one reply of 8 MiB.
    constexpr unsigned rows = 600000;
    MakeNumbers(*client, directory, rows);
    const auto rowset = client->QueryExecute("(project (table [t].[n]) (([y] (+ [x] 1)) ([z] (* [x] 1.0))))");
    const std::size_t columns = rowset->GetColumnCount();
    std::size_t count = 0;
    while (true) {
        const QVE_ValueArray array = rowset->GetValueArray();
        if (array.GetNumValues() == 0) break;
        EXPECT_EQ(array.GetNumValues() % columns, 0U);
        EXPECT_LT(array.GetMessage().size(), 9U << 20);
        count += array.GetNumValues() / columns;
    }
    EXPECT_EQ(count, rows);
}

TEST(Session, StatementsArePreparedAndExecutedAnyNumberOfTimes) {
    const ScratchFolder directory;
    const TestServer server;
    const auto client = server.Connect();
    MakeNumbers(*client, directory, 10);
    const std::uint64_t statement = client->StatementOpen();
    EXPECT_FALSE(client->StatementExecute(statement));
    client->StatementPrepare(statement, s_sum);
    const auto rowset = client->StatementExecute(statement);
    ASSERT_TRUE(rowset);
    EXPECT_EQ(rowset->GetColumnCount(), 2U);
    EXPECT_EQ(rowset->GetColumnProperties(0)[0].second.GetText(), L"s");
    rowset->Close();
    client->StatementClose(statement);
    try {
        client->StatementExecute(statement);
        FAIL();
    } catch (const QVE_ServerError& error) {
        EXPECT_EQ(error.GetStatus(), status::Session_GetStatement);
        EXPECT_EQ(error.GetText(), "no such statement");
    }
    EXPECT_EQ(StatusOf(*client, "(connect \"" + directory / "nonesuch" + "\")") == 0, false);
}

TEST(Session, ExecutesPlansInPlaceOfQueries) {
    const ScratchFolder directory;
    const TestServer server;
    const auto client = server.Connect();
    std::uint64_t statement = client->StatementOpen();
    const auto planStatus = [&](const std::string& plan) {
        try {
            client->StatementPlan(statement, plan);
        } catch (const QVE_ServerError& error) {
            return error.GetStatus();
        }
        return 0;
    };
    EXPECT_EQ(planStatus("(table [t].[n] ([x]))"), 48046);
    MakeNumbers(*client, directory, 100);
    statement = client->StatementOpen();  // a statement keeps the database that it was opened with
    client->StatementPlan(statement,
                          "(restrict ([n] [s]) (aggregate () (([s] (sum [x])) ([n] (countstar)))"
                          " (select (lt [x] 10) (scan ([x]) (table [t].[n] ([x]))))))");
    const auto rowset = client->StatementExecute(statement);
    ASSERT_TRUE(rowset);
    // In the order in which the plan lists them.
    EXPECT_EQ(rowset->GetColumnProperties(0)[0].second.GetText(), L"n");
    rowset->Close();
    const auto firstRow = [&](const char* plan) {
        client->StatementPlan(statement, plan);
        const auto rows = client->StatementExecute(statement);
        QVE_Value values[2];
        if (!rows || rows->GetValues(2, values) == 0) return std::string("no row");
        std::ostringstream row;
        row << values[0] << " " << values[1];
        rows->Close();
        return row.str();
    };
    // One share of four, 30 to 49, through a view of the table, on dense pages.
    EXPECT_EQ(firstRow("(aggregate () (([s] (sum [x])) ([n] (countstar))) (compact (select (ge [x] 30)"
                       " (scan ([x]) (fraction 1 4 ([x]) (shared (table [t].[n] ([x]))))))))"),
              "20 790");
    // All rows, in the order of their clusters, partition by partition, with one column in the place of another.
    EXPECT_EQ(firstRow("(aggregate () (([s] (sum [y])) ([n] (countstar))) (update (([y] [x])) (partition-restart"
                       " (partition-split [x] (project (([y] [x])) (clustering-flow [x] 7 (scan ([x])"
                       " (table [t].[n] ([x])))))))))"),
              "100 4950");
    EXPECT_EQ(planStatus("(frob)"), 49012);
    EXPECT_EQ(planStatus("(table [t].[n] ([x])) (x)"), 48034);
    EXPECT_THAT(RunQuery(*client, s_sum), ElementsAre("4950 100"));
}

TEST(Session, ExplainsWithTheRowsOfEachOperator) {
    const ScratchFolder directory;
    const TestServer server;
    const auto client = server.Connect();
    MakeNumbers(*client, directory, 3000);
    const std::vector<std::string> plan =
        RunQuery(*client, "(explain analyze (aggregate (select (table [t].[n]) (< [x] 10)) () (([s] (sum [x])))))");
    // Each line ends in rows and milliseconds.
    const auto rowsOf = [](const std::string& line) {
        std::istringstream words(line);
        std::vector<std::string> all{std::istream_iterator<std::string>(words), {}};
        return all.size() < 2 ? std::string() : all[all.size() - 2];
    };
    std::map<std::string, std::string> rows;
    for (const std::string& line : plan) {
        const size_t word = line.find_first_not_of(' ');
        rows[line.substr(word, line.find(' ', word) - word)] = rowsOf(line);
    }
    EXPECT_EQ(rows["aggregate"], "1");
    EXPECT_EQ(rows["select"], "10");
    EXPECT_EQ(rows["table"], "3000");
}

TEST(Session, ACancelThatComesFirstStopsTheNextExecution) {
    const ScratchFolder directory;
    const TestServer server;
    const auto client = server.Connect();
    MakeNumbers(*client, directory, 10);
    const std::uint64_t statement = client->StatementOpen();
    client->StatementCancel(statement);
    client->StatementPrepare(statement, s_sum);
    try {
        client->StatementExecute(statement);
        FAIL();
    } catch (const QVE_ServerError& error) {
        EXPECT_EQ(error.GetStatus(), status::Server_Cancelled);
        EXPECT_THAT(error.GetTexts(), IsEmpty());
    }
    EXPECT_THAT(RunQuery(*client, s_sum), ElementsAre("45 10"));
}

TEST(Session, TellsBesideARunningStatementHowFarItIs) {
    const ScratchFolder directory;
    const TestServer server;
    const auto client = server.Connect();
    MakeNumbers(*client, directory, 300'000);
    const std::string text = directory / "numbers.csv";
    const std::uint64_t size = std::filesystem::file_size(text);
    const std::uint64_t statement = client->StatementOpen();
    client->StatementPrepare(statement, "(create table-from-query [t].[m] (text \"" + text + "\"))");
    auto done = std::async(std::launch::async, [&] { client->StatementExecute(statement); });
    std::uint64_t before = 0;
    while (done.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        const QVE_Client::Progress progress = client->StatementEstimateProgress(statement);
        EXPECT_EQ(progress.total, size);
        EXPECT_LE(before, progress.done);
        EXPECT_LE(progress.done, size);
        before = progress.done;
    }
    done.get();
    const QVE_Client::Progress progress = client->StatementEstimateProgress(statement);
    EXPECT_EQ(progress.done, size);
    EXPECT_EQ(progress.first, 300'000U);
}

TEST(Session, CancelStopsARunningStatement) {
    const ScratchFolder directory;
    const TestServer server;
    const auto client = server.Connect();
    MakeNumbers(*client, directory, 300000);
    const std::uint64_t statement = client->StatementOpen();
    client->StatementPrepare(statement, "(order (table [t].[n]) (([x] desc)))");
    auto outcome = std::async(std::launch::async, [&] {
        // Executes until a cancel meets an execution: it may come between two of them, and then stops the next.
        while (true) {
            try {
                const auto rowset = client->StatementExecute(statement);
                rowset->Close();
                client->StatementPrepare(statement, "(order (table [t].[n]) (([x] desc)))");
            } catch (const QVE_ServerError& error) {
                return error.GetStatus();
            }
        }
    });
    client->StatementCancel(statement);
    EXPECT_EQ(outcome.get(), status::Server_Cancelled);
}

/// A client that sends what it likes.
class RawClient {
public:
    explicit RawClient(const TestServer& server)
        : m_connection(IPC_Connection::Connect(*IPC_ConnectionDescriptor::Parse(server.GetDescriptor()))) {}

    void Send(std::uint64_t guid, const std::function<void(QVE_OutputIterator&)>& body) {
        QVE_Message message;
        QVE_OutputIterator out(message);
        out.WriteHeader();
        body(out);
        QVE_OutputIterator::PatchHeader(message, guid);
        m_connection->Write(message.data(), message.size());
    }
    void SendCommand(std::uint64_t guid, QVE_Command command) {
        Send(guid, [command](QVE_OutputIterator& out) { out.WriteCommand(command); });
    }
    /// The status of the next reply; -1 at the end of the connection.
    int Status() {
        try {
            QVE_ReceiveMessage(*m_connection, m_reply);
            return QVE_InputIterator(m_reply).ReadStatus();
        } catch (const std::exception&) {
            return -1;
        }
    }
    std::uint64_t OpenSession() {
        SendCommand(0, QVE_Command::SessionOpen);
        EXPECT_EQ(Status(), 0);
        QVE_InputIterator in(m_reply);
        in.ReadStatus();
        return in.ReadGuid();
    }
    IPC_Connection& GetConnection() { return *m_connection; }

private:
    const std::unique_ptr<IPC_Connection> m_connection;
    QVE_Message m_reply;
};

TEST(Connection, EndsOnWhatNoClientMaySend) {
    const TestServer server;
    RawClient magic(server);
    magic.GetConnection().Write("GET / HTTP/1.1\r\n\r\n", 18);
    EXPECT_EQ(magic.Status(), -1);

    RawClient unknown(server);
    unknown.SendCommand(0, QVE_Command::QueryExecute);
    EXPECT_EQ(unknown.Status(), -1);

    RawClient empty(server);
    empty.Send(0, [](QVE_OutputIterator&) {});
    EXPECT_EQ(empty.Status(), -1);

    RawClient owner(server);
    const std::uint64_t guid = owner.OpenSession();
    RawClient thief(server);
    thief.SendCommand(guid, QVE_Command::StatementOpen);
    EXPECT_EQ(thief.Status(), -1);
    // The owner is none the worse for it.
    owner.SendCommand(guid, QVE_Command::StatementOpen);
    EXPECT_EQ(owner.Status(), 0);
}

TEST(Connection, AnswersBadRequestsOfASessionAndGoesOn) {
    const TestServer server;
    RawClient client(server);
    const std::uint64_t guid = client.OpenSession();
    client.SendCommand(guid, static_cast<QVE_Command>(0xF1D3A401));
    EXPECT_EQ(client.Status(), status::Session_Dispatch);
    client.SendCommand(guid, QVE_Command::QueryExecute);
    EXPECT_EQ(client.Status(), 70004);
    client.Send(guid, [](QVE_OutputIterator&) {});
    EXPECT_EQ(client.Status(), 70004);
    client.Send(guid, [](QVE_OutputIterator& out) {
        out.WriteCommand(QVE_Command::QueryExecute);
        out.WriteU32(0);
    });
    EXPECT_EQ(client.Status(), 70005);
    client.Send(guid, [](QVE_OutputIterator& out) {
        out.WriteCommand(QVE_Command::RowsetGetValues);
        out.WriteGuid(99);
    });
    EXPECT_EQ(client.Status(), status::Session_GetRowset);
    client.Send(guid, [guid](QVE_OutputIterator& out) {
        out.WriteCommand(QVE_Command::StatementPrepare);
        out.WriteGuid(guid + 1);
        out.WriteGuid(1);
        out.WriteString(u"(x)");
    });
    EXPECT_EQ(client.Status(), status::Session_StatementPrepare);
    client.SendCommand(guid, QVE_Command::DatabaseUploadOpen);
    EXPECT_EQ(client.Status(), status::QVE_InputIterator_Overrun);
    client.SendCommand(guid, QVE_Command::StatementOpen);
    EXPECT_EQ(client.Status(), 0);
}

TEST(Connection, RunsRequestsThatAreSentAheadOneAfterTheOther) {
    const TestServer server;
    RawClient client(server);
    const std::uint64_t guid = client.OpenSession();
    constexpr int requests = 200;
    for (int i = 0; i < requests; ++i) client.SendCommand(guid, QVE_Command::StatementOpen);
    for (int i = 0; i < requests; ++i) EXPECT_EQ(client.Status(), 0);
}

TEST(Connection, APeerThatStallsCostsNobodyElse) {
    const TestServer server;
    RawClient half(server);
    half.GetConnection().Write("\xE5\xA7\x0D\x0C", 4);
    // A body of 4 GiB, of which next to nothing comes.
    RawClient huge(server);
    const unsigned header[] = {QVE_Message::s_magic, 0xFFFFFFFF, 0, 0};
    huge.GetConnection().Write(header, sizeof(header));
    huge.GetConnection().Write("some", 4);
    EXPECT_NE(StatusOf(*server.Connect(), "(table [a].[b])"), 0);
}

TEST(Connection, AClientThatLeavesTakesItsSessionsAlong) {
    const TestServer server;
    std::uint64_t guid;
    {
        RawClient client(server);
        guid = client.OpenSession();
        client.SendCommand(guid, QVE_Command::StatementOpen);
    }
    RawClient next(server);
    EXPECT_GT(next.OpenSession(), guid);
    // Closing what is not one's own, or not there, is no failure.
    next.Send(0, [guid](QVE_OutputIterator& out) {
        out.WriteCommand(QVE_Command::SessionClose);
        out.WriteGuid(guid);
    });
    EXPECT_EQ(next.Status(), 0);
}

}  // namespace
}  // namespace qve
