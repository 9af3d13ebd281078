// Packages as statements make and open them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/server/test_server.h"

namespace qve {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;

class PackageStatement : public testing::Test {
protected:
    PackageStatement() : m_client(m_server.Connect()) { MakeNumbers(*m_client, m_directory, 1000); }

    std::string Text(const std::string& name) const { return "\"" + (m_directory / name) + "\""; }
    /// Where the session's database lies.
    std::string Root() { return RunQuery(*m_client, "(show database)").at(0).substr(5); }
    std::string Sum(QVE_Client& client) {
        return RunQuery(client, "(aggregate (table [t].[n]) () (([s] (sum [x]))))").at(0);
    }

    const ScratchFolder m_directory;
    const TestServer m_server;
    const RefCntPtr<QVE_Client> m_client;
};

TEST_F(PackageStatement, MakesAFileThatOpensInPlace) {
    const std::string root = Root();
    RunQuery(*m_client, "(package " + Text("p") + ")");
    EXPECT_TRUE(fs::is_regular_file(m_directory / "p"));
    EXPECT_EQ(StatusOf(*m_client, "(package " + Text("p") + ")"), 48041) << "Path already exists.";
    RunQuery(*m_client, "(connect " + Text("p") + ")");
    EXPECT_THAT(RunQuery(*m_client, "(show database)"), Contains("packaged true"));
    EXPECT_EQ(Sum(*m_client), "499500");
    // Changes lie beside the file.
    RunQuery(*m_client, "(create table-from-query [t].[m] (select (table [t].[n]) (< [x] 3)))");
    EXPECT_THAT(RunQuery(*m_client, "(table [t].[m])"), ElementsAre("0", "1", "2"));
    EXPECT_THAT(RunQuery(*m_client, "(show databases \"" + fs::path(root).parent_path().string() + "\")"),
                Contains(testing::StartsWith("p ")));
    RunQuery(*m_client, "(unpackage " + Text("d") + ")");
    EXPECT_TRUE(fs::is_directory(m_directory / "d"));
    RunQuery(*m_client, "(connect " + Text("d") + ")");
    EXPECT_THAT(RunQuery(*m_client, "(table [t].[m])"), ElementsAre("0", "1", "2"));
    RunQuery(*m_client, "(drop database " + Text("p") + ")");
    EXPECT_FALSE(fs::exists(m_directory / "p"));
}

TEST_F(PackageStatement, ConvertsInPlace) {
    const std::string root = Root();
    const auto other = m_server.Connect();
    RunQuery(*other, "(connect \"" + root + "\")");
    for (int round = 0; round < 2; ++round) {
        RunQuery(*m_client, "(package in-place)");
        EXPECT_TRUE(fs::is_regular_file(root));
        EXPECT_EQ(Sum(*m_client), "499500") << "the session goes on with the result";
        EXPECT_NE(StatusOf(*m_client, "(package in-place)"), 0) << "it is one";
        EXPECT_NE(StatusOf(*other, "(create schema [x])"), 0) << "what it knew has gone";
        RunQuery(*other, "(connect \"" + root + "\")");
        EXPECT_EQ(Sum(*other), "499500");
        RunQuery(*m_client, "(unpackage in-place)");
        EXPECT_TRUE(fs::is_directory(root));
        EXPECT_EQ(Sum(*m_client), "499500");
        RunQuery(*m_client, "(create schema [s" + std::to_string(round) + "])");
        RunQuery(*other, "(connect \"" + root + "\")");
    }
    for (const auto& entry : fs::directory_iterator(fs::path(root).parent_path())) {
        EXPECT_THAT(entry.path().filename().string(), testing::AnyOf("base", "numbers.csv")) << "left over";
    }
    EXPECT_THAT(RunQuery(*m_client, "(show sessions)"), testing::Not(testing::IsEmpty()));
}

TEST_F(PackageStatement, SaysWhatIsWrong) {
    EXPECT_EQ(StatusOf(*m_client, "(package)"), 48042);
    EXPECT_EQ(StatusOf(*m_client, "(package [x])"), 48043);
    EXPECT_EQ(StatusOf(*m_client, "(unpackage 5)"), 48044);
    EXPECT_NE(StatusOf(*m_client, "(package " + Text("no/such/folder") + ")"), 0);
    RunQuery(*m_client, "(connect null)");
    EXPECT_EQ(StatusOf(*m_client, "(package " + Text("p") + ")"), 48041);
}

}  // namespace
}  // namespace qve
