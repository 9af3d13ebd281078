// Messages of an insert that are not what they should be: the next call is told, nothing is stored, all goes on.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "client/QVE_Client.h"
#include "client/QVE_ServerError.h"
#include "server/protocol/QVE_ValueArray.h"
#include "tests/server/test_server.h"

namespace qve {
namespace {

constexpr const char* s_count = "(aggregate (table [t].[n]) () (([n] (count))))";

class InsertMessages : public testing::Test {
protected:
    InsertMessages() : m_client(m_server.Connect()) { MakeNumbers(*m_client, m_directory, 10); }

    /// Sends ten values of a message that `spoil` changed before; the status of the call.
    int Put(std::uint64_t insert, const std::function<void(QVE_ValueArray&)>& spoil) {
        QVE_ValueArray values;
        m_client->InsertValueArrayOpen(insert, values);
        const std::int64_t number = 7;
        for (int i = 0; i < 10; ++i) values.WriteValue({QVE_TypeInt64, sizeof number, &number});
        spoil(values);
        return StatusOfCall([&] { m_client->InsertPutValueArray(insert, values); });
    }
    /// Has the first value, whose length follows its type, be longer than the message.
    static void LengthenFirstValue(QVE_ValueArray& values) {
        QVE_Message& message = values.GetMessage();
        std::fill_n(message.data() + message.size() - values.GetSizeBytes() + 4, 4, std::uint8_t{0x7F});
    }
    template <class F>
    static int StatusOfCall(F call) {
        try {
            call();
            return 0;
        } catch (const QVE_ServerError& fault) {
            EXPECT_STRNE(fault.what(), "");
            return fault.GetStatus();
        }
    }

    const ScratchFolder m_directory;
    const TestServer m_server;
    const RefCntPtr<QVE_Client> m_client;
};

TEST_F(InsertMessages, WhatCannotBeReadEndsTheInsertAndNothingElse) {
    const std::function<void(QVE_ValueArray&)> none = [](QVE_ValueArray&) {};
    const std::function<void(QVE_ValueArray&)> spoilers[] = {
        &LengthenFirstValue,
        [](QVE_ValueArray& values) { values.GetMessage().resize(values.GetMessage().size() - 3); }  // cut
    };
    for (const auto& spoil : spoilers) {
        const std::uint64_t insert = m_client->InsertOpen({"x"}, "n", "t").guid;
        EXPECT_EQ(Put(insert, none), 0);
        Put(insert, spoil);
        const int status = StatusOfCall([&] { m_client->InsertCommit(insert); });
        EXPECT_NE(status, 0);
        EXPECT_NE(Put(insert, none), 0) << "what has failed takes no more";
        m_client->InsertClose(insert);
        EXPECT_EQ(RunQuery(*m_client, s_count).at(0), "10");
    }
    const std::uint64_t insert = m_client->InsertOpen({"x"}, "n", "t").guid;
    EXPECT_EQ(Put(insert, none), 0);
    m_client->InsertCommit(insert);
    m_client->InsertClose(insert);
    EXPECT_EQ(RunQuery(*m_client, s_count).at(0), "20");
}

// The thread that reads the messages fails after the call has been answered; one of the next calls says so.
TEST_F(InsertMessages, TheFailureOfTheThreadComesWithALaterCall) {
    const std::uint64_t insert = m_client->InsertOpen({"x"}, "n", "t").guid;
    ASSERT_EQ(Put(insert, &LengthenFirstValue), 0);
    int status = 0;
    while (status == 0) status = Put(insert, [](QVE_ValueArray&) {});
    EXPECT_EQ(StatusOfCall([&] { m_client->InsertCommit(insert); }), status);
    m_client->InsertClose(insert);
    EXPECT_EQ(RunQuery(*m_client, s_count).at(0), "10");
}

}  // namespace
}  // namespace qve
