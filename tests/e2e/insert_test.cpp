// Rows that are added to tables: from text files by statements, and from values through the client library.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/EngineClient.h"
#include "tests/support/ScratchFolder.h"

namespace qve {
namespace {

using test::EngineClient;
using test::EngineError;
using test::EngineProcess;
using test::FormatCell;

/// Values that own their bytes.
class Values {
public:
    Values& Add(uint32_t type, const void* data, size_t size) {
        m_bytes.emplace_back(static_cast<const char*>(data), size);
        m_types.push_back(type);
        return *this;
    }
    Values& Integer(int64_t value) { return Add(QVE_INT64, &value, sizeof value); }
    Values& Small(int16_t value) { return Add(QVE_INT16, &value, sizeof value); }
    Values& Double(double value) { return Add(QVE_DOUBLE, &value, sizeof value); }
    Values& Text(const std::string& text) { return Add(QVE_TEXT8, text.data(), text.size()); }
    Values& Text(const std::u16string& text) { return Add(QVE_TEXT16, text.data(), 2 * text.size()); }
    Values& Date(int year, uint8_t month, uint8_t day) {
        const QVE_Date date{year, month, day, {}};
        return Add(QVE_DATE, &date, sizeof date);
    }
    Values& Null() { return Add(QVE_INT64 | QVE_NULL, "", 0); }

    std::vector<QVE_Value> Views() const {
        std::vector<QVE_Value> views;
        for (size_t i = 0; i < m_types.size(); ++i) {
            const bool null = m_types[i] & QVE_NULL;
            views.push_back({m_types[i], static_cast<uint32_t>(m_bytes[i].size()), null ? nullptr : m_bytes[i].data()});
        }
        return views;
    }

private:
    std::vector<std::string> m_bytes;
    std::vector<uint32_t> m_types;
};

class InsertTest : public testing::Test {
protected:
    InsertTest() : m_client(m_server.GetDescriptor()) {
        Run("(create database \"" + (m_path / "base").string() + "\")");
        Run("(create schema [s])");
        Run("(create table [s].[t] (([id] ((type \"bigint\"))) ([word] ((type \"varchar\"))) ([x] ((type \"double\"))) "
            "([day] ((type \"date\"))) ([flag] ((type \"bit\")))))");
    }

    void Run(const std::string& statement) { m_client.Run(statement); }
    std::string File(const std::string& name, const std::string& text) const {
        std::ofstream(m_path / name) << text;
        return "\"" + (m_path / name).string() + "\"";
    }
    /// The rows in the order of [id], cells separated by blanks.
    std::vector<std::string> Rows(EngineClient& client, const std::string& columns = "[id] [word] [x] [day] [flag]") {
        const auto found = client.Run("(restrict (order (table [s].[t]) (([id] asc))) (" + columns + "))");
        std::vector<std::string> rows;
        for (const test::Row& row : found.rows) {
            std::string text;
            for (const test::Cell& cell : row) text += (text.empty() ? "" : " ") + FormatCell(cell);
            rows.push_back(text);
        }
        return rows;
    }
    std::vector<std::string> Rows() { return Rows(m_client); }
    void ExpectError(const std::string& statement, int status, const std::string& text) {
        try {
            m_client.Run(statement);
            ADD_FAILURE() << statement;
        } catch (const EngineError& error) {
            EXPECT_EQ(error.GetStatus(), status) << error.what();
            EXPECT_NE(std::string(error.what()).find(text), std::string::npos) << error.what();
        }
    }
    QVE_Insert* Open(const std::vector<const char*>& columns, EngineClient& client) {
        QVE_Insert* insert = nullptr;
        EXPECT_EQ(
            QVE_InsertOpen(client.Get(), "s", "t", static_cast<uint32_t>(columns.size()), columns.data(), &insert),
            QVE_OK);
        return insert;
    }
    QVE_Insert* Open(const std::vector<const char*>& columns = {}) { return Open(columns, m_client); }
    static QVE_Status Put(QVE_Insert* insert, const Values& values) {
        const std::vector<QVE_Value> views = values.Views();
        return QVE_InsertPutValues(insert, views.size(), views.data());
    }

    const test::ScratchFolder m_scratch;
    const std::filesystem::path m_path = m_scratch.GetPath();
    const EngineProcess m_server;
    EngineClient m_client;
};

using Texts = std::vector<std::string>;

TEST_F(InsertTest, TextRowsFollowTheOldOnes) {
    Run("(insert [s].[t] ([id] [word] [x] [day] [flag]) " +
        File("a.csv", "n,w,v,d,f\n1,one,1.5,2024-01-01,true\n2,two,,2024-02-30,false\n") + ")");
    EXPECT_EQ(Rows(), (Texts{"1 one 1.5 2024-01-01 1", "2 two NULL NULL 0"}));
    // In another order and without some; more columns in the text than are asked for; values that need more room.
    Run("(insert [s].[t] ([word] [id]) " + File("b.csv", "w;n;z\nthree;3000000000;x\nfour;4;y\n") + ")");
    EXPECT_EQ(Rows(), (Texts{"1 one 1.5 2024-01-01 1", "2 two NULL NULL 0", "4 four NULL NULL NULL",
                             "3000000000 three NULL NULL NULL"}));
    // What is no value of the column is null; the column stays what it was. No names: all columns.
    Run("(insert [s].[t] () " + File("c.csv", "n,w,v,d,f\n5,5,five,2024-03-01,true\nsix,6,6,2024-03-02,false\n") + ")");
    EXPECT_EQ(Rows().front(), "NULL 6 6 2024-03-02 0");
    EXPECT_EQ(Rows().size(), 6u);
    EXPECT_EQ(FormatCell(m_client.Run("(aggregate (table [s].[t]) () (([s] (sum [id]))))").rows[0][0]), "3000000012");
}

TEST_F(InsertTest, StatementsSayWhatIsWrong) {
    const std::string file = File("a.csv", "n,w\n1,one\n2,two\n");
    ExpectError("(insert)", 48041, "Missing table name");
    ExpectError("(insert [t])", 48041, "Identifier is not a table name");
    ExpectError("(insert [q].[t] () " + file + ")", 48041, "Schema does not exist");
    ExpectError("(insert [s].[q] () " + file + ")", 48041, "Table does not exist");
    ExpectError("(insert [s].[t] " + file + ")", 48041, "Missing column list");
    ExpectError("(insert [s].[t] (\"id\") " + file + ")", 48041, "Invalid column name");
    ExpectError("(insert [s].[t] ([t].[id]) " + file + ")", 48041, "Column name is qualified");
    ExpectError("(insert [s].[t] ([nonesuch]) " + file + ")", 48041, "Unknown column name: nonesuch");
    ExpectError("(insert [s].[t] ([id] [id]) " + file + ")", 48041, "Column name stands twice: id");
    ExpectError("(insert [s].[t] ([id]))", 48041, "Missing path");
    ExpectError("(insert [s].[t] ([id]) [id])", 48041, "Path is not a string");
    ExpectError("(insert [s].[t] ([id]) \"/nonesuch\")", 48041, "File not found: /nonesuch");
    ExpectError("(insert [s].[t] ([id] [word] [x]) " + file + ")", 40037, "Not enough text columns");
    EXPECT_EQ(Rows(), Texts());
    Run("(connect null)");
    ExpectError("(insert [s].[t] ([id]) " + file + ")", 48041, "No current database");
}

TEST_F(InsertTest, ValuesBecomeRowsAtTheCommit) {
    QVE_Insert* insert = Open();
    uint32_t count = 0;
    ASSERT_EQ(QVE_InsertGetColumnCount(insert, &count), QVE_OK);
    EXPECT_EQ(count, 5u);
    QVE_Properties* properties = nullptr;
    ASSERT_EQ(QVE_InsertGetColumnProperties(insert, 1, &properties), QVE_OK);
    QVE_Value key, value;
    ASSERT_EQ(QVE_PropertiesGetProperty(properties, 0, &key, &value), QVE_OK);
    EXPECT_EQ(value.size, 8u);  // "word" in UTF-16
    QVE_PropertiesClose(properties);
    EXPECT_NE(QVE_InsertGetColumnProperties(insert, 5, &properties), QVE_OK);

    const uint8_t yes = 1;
    // The second row goes on in the next message.
    Values first, second;
    first.Integer(1).Text("one").Double(1.5).Date(2024, 2, 29).Add(QVE_BOOL, &yes, 1).Small(2).Text(u"zwölf");
    second.Null().Null().Null().Integer(-3).Text("").Integer(7).Date(2024, 2, 30).Null();
    EXPECT_EQ(Put(insert, first), QVE_OK);
    EXPECT_EQ(QVE_InsertPutValues(insert, 0, nullptr), QVE_OK);
    EXPECT_EQ(Put(insert, second), QVE_OK);
    EXPECT_EQ(Rows(), Texts());
    EXPECT_EQ(QVE_InsertCommit(insert), QVE_OK);
    EXPECT_EQ(Rows(), (Texts{"-3  7 NULL NULL", "1 one 1.5 2024-02-29 1", "2 zwölf NULL NULL NULL"}));
    EXPECT_NE(QVE_InsertCommit(insert), QVE_OK);  // it is final
    EXPECT_NE(Put(insert, first), QVE_OK);
    EXPECT_EQ(QVE_InsertClose(insert), QVE_OK);
    EXPECT_EQ(Rows().size(), 3u);

    // Of other types: what the column cannot take is null.
    insert = Open({"x", "id"});
    Values wrong;
    wrong.Text("text").Double(1.5).Small(4).Integer(11);
    EXPECT_EQ(Put(insert, wrong), QVE_OK);
    EXPECT_EQ(QVE_InsertCommit(insert), QVE_OK);
    QVE_InsertClose(insert);
    EXPECT_EQ(Rows(m_client, "[id] [x]"), (Texts{"NULL NULL", "-3 7", "1 1.5", "2 NULL", "11 4"}));
}

TEST_F(InsertTest, ManyRowsInBlocksOfAnySize) {
    constexpr int rows = 60'000;
    QVE_Insert* insert = Open({"word", "id"});
    QVE_ValueArray* array = nullptr;
    ASSERT_EQ(QVE_InsertValueArrayOpen(insert, &array), QVE_OK);
    Values all;
    for (int64_t i = 0; i < rows; ++i) all.Text("word " + std::to_string(i % 1000)).Integer(i);
    const std::vector<QVE_Value> views = all.Views();
    for (size_t sent = 0, block = 1; sent < views.size(); block = block * 3 + 1) {
        const size_t count = std::min(block, views.size() - sent);
        ASSERT_EQ(QVE_ValueArrayWriteValues(array, count, &views[sent]), QVE_OK);
        ASSERT_EQ(QVE_InsertPutValueArray(insert, array), QVE_OK);
        sent += count;
    }
    ASSERT_EQ(QVE_InsertCommit(insert), QVE_OK);
    QVE_ValueArrayClose(array);
    QVE_InsertClose(insert);
    const auto found = m_client.Run(
        "(aggregate (select (table [s].[t]) (= [word] \"word 999\")) () (([n] (count)) ([s] "
        "(sum [id]))))");
    EXPECT_EQ(FormatCell(found.rows[0][0]), "60");
    EXPECT_EQ(FormatCell(found.rows[0][1]), std::to_string(59 * 60 / 2 * 1000 + 60 * 999));
    // An array that is none of an insert's is refused.
    insert = Open();
    QVE_Rowset* rowset = nullptr;
    ASSERT_EQ(QVE_QueryExecute(m_client.Get(), "(table [s].[t])", &rowset), QVE_OK);
    ASSERT_EQ(QVE_RowsetGetValueArray(rowset, &array), QVE_OK);
    EXPECT_EQ(QVE_InsertPutValueArray(insert, array), 40517);
    QVE_ValueArrayClose(array);
    QVE_RowsetClose(rowset);
    QVE_InsertClose(insert);
}

TEST_F(InsertTest, WhatIsNotCommittedIsNeverSeen) {
    Values half;
    half.Integer(1).Text("one").Double(1);
    QVE_Insert* insert = Open();
    EXPECT_EQ(Put(insert, half), QVE_OK);
    EXPECT_EQ(QVE_InsertCommit(insert), 40034);
    QVE_InsertClose(insert);
    insert = Open({"id", "word", "x"});
    EXPECT_EQ(Put(insert, half), QVE_OK);
    EXPECT_EQ(QVE_InsertClose(insert), QVE_OK);
    QVE_Insert* left = nullptr;
    {
        EngineClient other(m_server.GetDescriptor());
        other.Run("(connect \"" + (m_path / "base").string() + "\")");
        left = Open({"id", "word", "x"}, other);
        EXPECT_EQ(Put(left, half), QVE_OK);  // the client leaves with the insert open
        // It keeps nobody from writing meanwhile.
        Run("(create table [s].[u] (([a] ((type \"bigint\")))))");
    }
    EXPECT_EQ(Rows(), Texts());
    EXPECT_EQ(QVE_InsertClose(left), QVE_OK) << "an insert keeps its session alive";
    EXPECT_EQ(Rows(), Texts());
    QVE_Insert* none = nullptr;
    const char* const unknown = "nonesuch";
    EXPECT_EQ(QVE_InsertOpen(m_client.Get(), "s", "t", 1, &unknown, &none), 40036);
    EXPECT_EQ(QVE_InsertOpen(m_client.Get(), "s", "nonesuch", 0, nullptr, &none), 40266);
    EXPECT_EQ(QVE_InsertOpen(m_client.Get(), "nonesuch", "t", 0, nullptr, &none), 40265);
    EXPECT_EQ(none, nullptr);
}

TEST_F(InsertTest, InsertsOfTwoSessionsBothCount) {
    constexpr int each = 8;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 2; ++thread) {
        threads.emplace_back([&, thread] {
            EngineClient client(m_server.GetDescriptor());
            client.Run("(connect \"" + (m_path / "base").string() + "\")");
            for (int i = 0; i < each; ++i) {
                QVE_Insert* insert = Open({"id"}, client);
                EXPECT_EQ(Put(insert, Values().Integer(thread * each + i)), QVE_OK);
                EXPECT_EQ(QVE_InsertCommit(insert), QVE_OK);
                QVE_InsertClose(insert);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(FormatCell(m_client.Run("(aggregate (table [s].[t]) () (([n] (countd [id]))))").rows[0][0]), "16");
}

}  // namespace
}  // namespace qve
