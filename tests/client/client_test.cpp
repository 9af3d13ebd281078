#include <gtest/gtest.h>

#include <cstring>
#include <future>
#include <string>
#include <vector>

#include "client/QVE_Client.h"
#include "client/QVE_ClientRowset.h"
#include "client/QVE_ServerError.h"
#include "client/qve.h"
#include "client/status.h"
#include "server/protocol/QVE_InterredValue.h"
#include "server/protocol/status.h"
#include "tests/client/c_program.h"
#include "tests/client/scripted_peer.h"

namespace qve {
namespace {

using Link = ScriptedPeer::Link;

void ReplyRowset(Link& link, std::uint64_t rowset) {
    link.Reply([rowset](QVE_OutputIterator& out) {
        out.WriteU32(1);
        out.WriteGuid(rowset);
        out.WriteU32(1);
        QVE_PropertyList properties;
        properties.emplace_back(QVE_InterredValue(L"name"), QVE_InterredValue(L"n"));
        properties.emplace_back(QVE_InterredValue(L"type"), QVE_InterredValue(std::int32_t{QVE_TypeInt64}));
        out.WriteProperties(properties);
    });
}

void ReplyValues(Link& link, const std::vector<std::int64_t>& numbers) {
    link.Reply([&](QVE_OutputIterator& out) {
        out.WriteU32(static_cast<std::uint32_t>(numbers.size()));
        for (const std::int64_t number : numbers) out.WriteValue(QVE_InterredValue(number).GetValue());
    });
}

/// Connects, runs a query and gives the status.
int StatusOfQuery(const std::string& descriptor) {
    QVE_Client client;
    try {
        client.Connect(descriptor);
        client.QueryExecute("(x)");
        return 0;
    } catch (const QuillonException& exception) {
        return exception.GetStatus();
    }
}

TEST(Client, ReadsRowsetsPageByPage) {
    const ScriptedPeer peer([](Link& link) {
        ASSERT_TRUE(link.Next());
        EXPECT_EQ(link.command, QVE_Command::QueryExecute);
        EXPECT_EQ(link.guid, ScriptedPeer::s_session);
        QVE_InputIterator in(link.request);
        in.ReadCommand();
        EXPECT_EQ(in.ReadString(), u"(\xE4)");
        ReplyRowset(link, 5);
        for (const std::vector<std::int64_t>& page : {std::vector<std::int64_t>{1, 2, 3, 4, 5}, {10}, {}}) {
            ASSERT_TRUE(link.Next());
            EXPECT_EQ(link.command, QVE_Command::RowsetGetValues);
            ReplyValues(link, page);
        }
        ASSERT_TRUE(link.Next());
        EXPECT_EQ(link.command, QVE_Command::RowsetClose);
        link.Reply([](QVE_OutputIterator&) {});
        EXPECT_FALSE(link.Next());
    });
    long long sum = 0;
    EXPECT_EQ(run_c_program(peer.GetDescriptor().c_str(), "(\xC3\xA4)", &sum), 0);
    EXPECT_EQ(sum, 25);
}

TEST(Client, PostsTheTextsOfAnErrorReplyAndGoesOn) {
    const ScriptedPeer peer([](Link& link) {
        link.Next();
        link.ReplyError(49012, {"first \xE2\x82\xAC", "second"});
        link.Next();
        link.ReplyError(50000, {});
        link.Next();
        link.Reply([](QVE_OutputIterator& out) { out.WriteU32(0); });
        link.Next();
    });
    QVE_Connection* connection = nullptr;
    QVE_Rowset* rowset = nullptr;
    ASSERT_EQ(QVE_ConnectionOpen(&connection), 0);
    EXPECT_EQ(QVE_QueryExecute(connection, "(x)", &rowset), QVE_ERROR_NOT_CONNECTED);
    ASSERT_EQ(QVE_ConnectionConnect(connection, peer.GetDescriptor().c_str()), 0);
    EXPECT_EQ(QVE_QueryExecute(connection, "(x)", &rowset), 49012);

    ::QVE_ErrorInfo* info = nullptr;
    std::uint32_t count = 0;
    QVE_Status status = 0;
    const char* text = nullptr;
    ASSERT_EQ(QVE_GetErrorInfo(connection, &info), 0);
    EXPECT_EQ(QVE_ErrorInfoGetCount(info, &count), 0);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(QVE_ErrorInfoGetError(info, 0, &status, &text), 0);
    EXPECT_EQ(status, 49012);
    EXPECT_STREQ(text, "first \xE2\x82\xAC");
    EXPECT_NE(QVE_ErrorInfoGetError(info, 2, &status, &text), 0);
    QVE_ErrorInfoClose(info);
    EXPECT_TRUE(QVE_IsActionableError(49012));
    EXPECT_FALSE(QVE_IsActionableError(40135));

    EXPECT_EQ(QVE_QueryExecute(connection, "(x)", &rowset), QVE_CANCELLED);
    ASSERT_EQ(QVE_GetErrorInfo(connection, &info), 0);
    EXPECT_EQ(QVE_ErrorInfoGetError(info, 0, &status, &text), 0);
    EXPECT_STREQ(text, "the statement was cancelled");
    QVE_ErrorInfoClose(info);

    EXPECT_EQ(QVE_QueryExecute(connection, "(x)", &rowset), 0);
    EXPECT_EQ(rowset, nullptr);
    QVE_ConnectionDisconnect(connection);
}

TEST(Client, CancelOvertakesARunningStatementInEitherOrderOfReplies) {
    for (const bool cancelFirst : {true, false}) {
        std::promise<void> executing;
        const ScriptedPeer peer([&](Link& link) {
            link.Next();
            EXPECT_EQ(link.command, QVE_Command::StatementOpen);
            link.Reply([](QVE_OutputIterator& out) {
                out.WriteGuid(ScriptedPeer::s_session);
                out.WriteGuid(3);
            });
            link.Next();
            EXPECT_EQ(link.command, QVE_Command::StatementExecute);
            executing.set_value();
            link.Next();
            EXPECT_EQ(link.command, QVE_Command::StatementCancel);
            QVE_InputIterator in(link.request);
            in.ReadCommand();
            EXPECT_EQ(in.ReadGuid(), ScriptedPeer::s_session);
            EXPECT_EQ(in.ReadGuid(), 3U);
            if (cancelFirst) link.Reply([](QVE_OutputIterator&) {});
            link.ReplyError(50000, {});
            if (!cancelFirst) link.Reply([](QVE_OutputIterator&) {});
            // Nothing of the cancel is left over for the next call.
            link.Next();
            EXPECT_EQ(link.command, QVE_Command::StatementClose);
            link.ReplyError(40427, {"no such statement"});
            link.Next();
        });
        QVE_Client client;
        client.Connect(peer.GetDescriptor());
        const std::uint64_t statement = client.StatementOpen();
        auto result = std::async(std::launch::async, [&] {
            try {
                client.StatementExecute(statement);
                return 0;
            } catch (const QVE_ServerError& exception) {
                return exception.GetStatus();
            }
        });
        executing.get_future().wait();
        client.StatementCancel(statement);
        EXPECT_EQ(result.get(), 50000);
        EXPECT_THROW(client.StatementClose(statement), QVE_ServerError);
    }
}

TEST(Client, ProgressOvertakesARunningStatementInEitherOrderOfReplies) {
    for (const bool progressFirst : {true, false}) {
        std::promise<void> executing;
        const ScriptedPeer peer([&](Link& link) {
            const auto counts = [&link](std::uint64_t done) {
                link.Reply([done](QVE_OutputIterator& out) {
                    for (const std::uint64_t count : {std::uint64_t{1}, ~std::uint64_t{0}, done, std::uint64_t{9}}) {
                        out.WriteU64(count);
                    }
                });
            };
            link.Next();
            EXPECT_EQ(link.command, QVE_Command::StatementExecute);
            executing.set_value();
            link.Next();
            EXPECT_EQ(link.command, QVE_Command::StatementEstimateProgress);
            QVE_InputIterator in(link.request);
            in.ReadCommand();
            EXPECT_EQ(in.ReadGuid(), ScriptedPeer::s_session);
            EXPECT_EQ(in.ReadGuid(), 3U);
            if (progressFirst) counts(5);
            link.Reply([](QVE_OutputIterator& out) { out.WriteU32(0); });
            if (!progressFirst) counts(5);
            // Between executions it waits its turn as all calls do.
            link.Next();
            EXPECT_EQ(link.command, QVE_Command::StatementEstimateProgress);
            counts(6);
            link.Next();
        });
        QVE_Client client;
        client.Connect(peer.GetDescriptor());
        auto result = std::async(std::launch::async, [&] { return client.StatementExecute(3); });
        executing.get_future().wait();
        const QVE_Client::Progress progress = client.StatementEstimateProgress(3);
        EXPECT_EQ(progress.first, 1U);
        EXPECT_EQ(progress.done, 5U);
        EXPECT_EQ(progress.total, 9U);
        EXPECT_EQ(result.get(), nullptr);
        EXPECT_EQ(client.StatementEstimateProgress(3).done, 6U);
    }
}

TEST(Client, ALostConnectionEndsWaitingCallsAndLaterOnes) {
    const ScriptedPeer peer([](Link& link) { link.Next(); });
    QVE_Client client;
    client.Connect(peer.GetDescriptor());
    for (int i = 0; i < 2; ++i) {
        try {
            client.QueryExecute("(x)");
            FAIL();
        } catch (const QVE_Exception& exception) {
            EXPECT_EQ(exception.GetStatus(), status::Client_Network);
        }
    }
    EXPECT_FALSE(client.IsConnected());
}

TEST(Client, NobodyThereIsANetworkError) {
    std::string gone;
    {
        const ScriptedPeer peer([](Link&) {});
        gone = peer.GetDescriptor();
    }
    EXPECT_EQ(StatusOfQuery(gone), status::Client_Network);
    EXPECT_THROW(QVE_Client().Connect("nonsense"), std::invalid_argument);
}

TEST(Client, DropsRepliesForUnknownSessions) {
    const ScriptedPeer peer([](Link& link) {
        link.Next();
        link.ReplyTo(
            123456, [](QVE_OutputIterator&) {}, 1);
        link.Reply([](QVE_OutputIterator& out) { out.WriteU32(0); });
        link.Next();
    });
    EXPECT_EQ(StatusOfQuery(peer.GetDescriptor()), 0);
}

TEST(Client, SurvivesHostileReplies) {
    const auto statusOf = [](const std::function<void(Link&)>& reply) {
        const ScriptedPeer peer([&](Link& link) {
            link.Next();
            reply(link);
            link.Next();
        });
        return StatusOfQuery(peer.GetDescriptor());
    };
    // No body at all; a rowset block that breaks off; more columns and more error texts than there are bytes.
    EXPECT_EQ(statusOf([](Link& link) {
                  QVE_Message message;
                  QVE_OutputIterator(message).WriteHeader();
                  QVE_OutputIterator::PatchHeader(message, link.guid);
                  link.GetConnection().Write(message.data(), message.size());
              }),
              status::QVE_InputIterator_Overrun);
    EXPECT_EQ(statusOf([](Link& link) { link.Reply([](QVE_OutputIterator& out) { out.WriteU32(1); }); }),
              status::QVE_InputIterator_Overrun);
    EXPECT_EQ(statusOf([](Link& link) {
                  link.Reply([](QVE_OutputIterator& out) {
                      out.WriteU32(1);
                      out.WriteGuid(1);
                      out.WriteU32(0xFFFFFFFF);
                  });
              }),
              status::QVE_InputIterator_Overrun);
    EXPECT_EQ(statusOf([](Link& link) {
                  link.Reply(
                      [](QVE_OutputIterator& out) {
                          out.WriteU32(0xFFFFFFFF);
                          out.WriteString(u"only one");
                      },
                      49000);
              }),
              49000);
    // A wrong magic; a body of 4 GiB that never comes.
    EXPECT_EQ(statusOf([](Link& link) { link.GetConnection().Write("0123456789abcdef", 16); }),
              status::QVE_InputIterator_BadMagic);
    EXPECT_EQ(statusOf([](Link& link) {
                  QVE_Message message;
                  QVE_OutputIterator(message).WriteHeader();
                  link.GetConnection().Write(message.data(), message.size());
                  link.GetConnection().Disconnect();
              }),
              status::Client_Network);
}

TEST(Client, ConnectionDescriptorTcpChecksTheBuffer) {
    char text[32];
    EXPECT_EQ(QVE_ConnectionDescriptorTcp("::1", 27042, text, sizeof(text)), 0);
    EXPECT_STREQ(text, "quil.tcp://[::1]:27042");
    EXPECT_EQ(QVE_ConnectionDescriptorTcp("host", 1, text, sizeof(text)), 0);
    EXPECT_STREQ(text, "quil.tcp://host:1");
    EXPECT_EQ(QVE_ConnectionDescriptorTcp("host", 1, text, 18), 0);
    EXPECT_NE(QVE_ConnectionDescriptorTcp("host", 1, text, 17), 0);
}

TEST(Client, NullHandlesAreArgumentErrors) {
    QVE_Rowset* rowset = nullptr;
    std::uint32_t count = 0;
    EXPECT_EQ(QVE_QueryExecute(nullptr, "(x)", &rowset), QVE_ERROR_ARGUMENT);
    EXPECT_EQ(QVE_RowsetGetColumnCount(nullptr, &count), QVE_ERROR_ARGUMENT);
    EXPECT_EQ(QVE_RowsetClose(nullptr), 0);
    EXPECT_EQ(QVE_ConnectionDisconnect(nullptr), 0);
    EXPECT_EQ(QVE_ServerProcessClose(nullptr), 0);
}

}  // namespace
}  // namespace qve
