// Two servers on one database: one writes, the other reads and is told so when it tries to write.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/support/EngineClient.h"
#include "tests/support/ScratchFolder.h"

namespace qve {
namespace {

using test::EngineClient;
using test::EngineError;
using test::EngineProcess;

constexpr int s_taken = 40474;

class TwoServers : public testing::Test {
protected:
    void Connect(EngineClient& client) const { client.Run("(connect \"" + m_base + "\")"); }
    static void ExpectTaken(EngineClient& client, const std::string& statement, int owner) {
        try {
            client.Run(statement);
            ADD_FAILURE() << statement;
        } catch (const EngineError& error) {
            EXPECT_EQ(error.GetStatus(), s_taken) << error.what();
            EXPECT_NE(std::string(error.what()).find("process " + std::to_string(owner) + ")"), std::string::npos)
                << error.what();
        }
    }
    static size_t CountTables(EngineClient& client) { return client.Run("(show tables)").rows.size(); }

    const test::ScratchFolder m_scratch;
    const std::filesystem::path m_path = m_scratch.GetPath();
    const std::string m_base = m_scratch / "base";
};

TEST_F(TwoServers, TheSecondToWriteIsRefused) {
    const EngineProcess first, second;
    EngineClient one(first.GetDescriptor()), other(second.GetDescriptor());
    one.Run("(create database \"" + m_base + "\")");
    one.Run("(create schema [s])");
    one.Run("(create table [s].[a] (([x] ((type \"bigint\")))))");
    Connect(other);
    EXPECT_EQ(CountTables(other), 1u);
    for (const std::string statement : {"(create table [s].[b] (([x] ((type \"bigint\")))))", "(create schema [t])",
                                        "(drop table [s].[a])", "(drop schema [s] cascade)"}) {
        ExpectTaken(other, statement, first.GetProcessId());
    }
    ExpectTaken(other, "(drop database \"" + m_base + "\" cascade)", first.GetProcessId());
    // A reader sees what the writer does, and another session of the writer's server may write as well.
    EngineClient sibling(first.GetDescriptor());
    Connect(sibling);
    sibling.Run("(create table [s].[b] (([x] ((type \"bigint\")))))");
    EXPECT_EQ(CountTables(other), 2u);
    // The right to write goes with the last session that used it.
    one.Run("(connect null)");
    ExpectTaken(other, "(create schema [t])", first.GetProcessId());
    sibling.Run("(connect null)");
    other.Run("(create schema [t])");
    Connect(one);
    ExpectTaken(one, "(create schema [u])", second.GetProcessId());
}

TEST_F(TwoServers, AKilledServerOwnsNothing) {
    const EngineProcess second;
    EngineClient other(second.GetDescriptor());
    {
        const EngineProcess first;
        EngineClient one(first.GetDescriptor());
        one.Run("(create database \"" + m_base + "\")");
        one.Run("(create schema [s])");
        Connect(other);
        ExpectTaken(other, "(create schema [t])", first.GetProcessId());
        ::kill(first.GetProcessId(), SIGKILL);
    }
    other.Run("(create schema [t])");
    // A database that was dropped and made anew is another one.
    const EngineProcess third;
    EngineClient late(third.GetDescriptor());
    Connect(late);
    EXPECT_EQ(late.Run("(show schemas)").rows.size(), other.Run("(show schemas)").rows.size());
    other.Run("(drop database \"" + m_base + "\" cascade)");
    other.Run("(connect null)");
    EngineClient maker(third.GetDescriptor());
    maker.Run("(create database \"" + m_base + "\")");
    maker.Run("(create schema [s])");
    late.Run("(create schema [u])");
    EXPECT_EQ(maker.Run("(show schemas)").rows.size(), late.Run("(show schemas)").rows.size());
}

}  // namespace
}  // namespace qve
