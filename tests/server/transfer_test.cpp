// Databases that go to the server and come back as files.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "client/qve.h"
#include "tests/server/test_server.h"

namespace qve {
namespace {

namespace fs = std::filesystem;

class Transfer : public testing::Test {
protected:
    Transfer() : m_client(m_server.Connect()) {}

    static std::string Read(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        std::ostringstream bytes;
        bytes << file.rdbuf();
        return bytes.str();
    }
    template <class F>
    static int StatusOfCall(F call) {
        try {
            call();
            return 0;
        } catch (const QVE_ServerError& fault) {
            return fault.GetStatus();
        }
    }
    /// Sends bytes in pieces and says that they are `announced`.
    int Upload(const std::string& path, const std::string& bytes, std::uint64_t announced, size_t piece = 1 << 20) {
        return StatusOfCall([&] {
            const std::uint64_t upload = m_client->DatabaseUploadOpen(path);
            m_client->UploadSetSize(upload, announced);
            for (size_t at = 0; at < bytes.size(); at += piece) {
                const size_t count = std::min(piece, bytes.size() - at);
                m_client->UploadSend(upload, bytes.data() + at, static_cast<std::uint32_t>(count));
            }
            m_client->UploadCommit(upload);
            m_client->UploadClose(upload);
        });
    }
    std::string Download(const std::string& path, std::uint32_t piece) {
        const QVE_Client::Download download = m_client->DatabaseDownloadOpen(path);
        std::string bytes;
        std::string block(piece, '\0');
        while (bytes.size() < download.size) {
            bytes.append(block, 0, m_client->DownloadRecv(download.guid, block.data(), piece));
        }
        EXPECT_EQ(StatusOfCall([&] { m_client->DownloadRecv(download.guid, block.data(), piece); }), 40415);
        m_client->DownloadClose(download.guid);
        return bytes;
    }

    const ScratchFolder m_directory;
    const TestServer m_server;
    const RefCntPtr<QVE_Client> m_client;
};

TEST_F(Transfer, ADatabaseMovesAsAFile) {
    MakeNumbers(*m_client, m_directory, 100'000);
    const std::string package = m_directory / "package";
    RunQuery(*m_client, "(package \"" + package + "\")");
    const std::string bytes = Download(package, 10'000);
    EXPECT_TRUE(bytes == Read(package));
    EXPECT_TRUE(Download(package, 20 << 20) == bytes);
    EXPECT_EQ(Upload(m_directory / "copy", bytes, bytes.size(), 99'999), 0);
    RunQuery(*m_client, "(connect \"" + (m_directory / "copy") + "\")");
    EXPECT_EQ(RunQuery(*m_client, "(aggregate (table [t].[n]) () (([s] (sum [x]))))").at(0), "4999950000");
    // What is there is not written over.
    EXPECT_EQ(Upload(m_directory / "copy", bytes, bytes.size()), 40420);
    EXPECT_EQ(Upload(m_directory / "", bytes, bytes.size()), 40420);
    EXPECT_TRUE(Read(m_directory / "copy") == bytes);
}

TEST_F(Transfer, AnUploadOfTheWrongSizeLeavesNothing) {
    const std::string path = m_directory / "file";
    for (const std::uint64_t announced : {0, 4, 6}) {
        EXPECT_EQ(Upload(path, "12345", announced), 40437);
        EXPECT_FALSE(fs::exists(path));
    }
    const std::uint64_t upload = m_client->DatabaseUploadOpen(path);
    m_client->UploadSend(upload, "broken off", 10);
    m_client->UploadClose(upload);
    EXPECT_EQ(Read(path), "broken off");
    EXPECT_EQ(Upload(path, "whole", 5), 0) << "takes its place";
    EXPECT_EQ(Read(path), "whole");

    const std::uint64_t committed = m_client->DatabaseUploadOpen(m_directory / "empty");
    m_client->UploadCommit(committed);
    EXPECT_EQ(StatusOfCall([&] { m_client->UploadCommit(committed); }), 40436);
    EXPECT_EQ(StatusOfCall([&] { m_client->UploadSend(committed, "x", 1); }), 40438);
    EXPECT_EQ(StatusOfCall([&] { m_client->UploadSetSize(committed, 1); }), 40439);
    m_client->UploadClose(committed);
    EXPECT_EQ(StatusOfCall([&] { m_client->UploadClose(committed); }), 40408);
    EXPECT_EQ(StatusOfCall([&] { m_client->DownloadClose(committed); }), 40410);
    EXPECT_EQ(Upload(m_directory / "no/such/folder", "x", 1), 40419);
    EXPECT_NE(StatusOfCall([&] { m_client->DatabaseDownloadOpen(m_directory / "none"); }), 0);
    EXPECT_NE(StatusOfCall([&] { m_client->DatabaseDownloadOpen(m_directory / ""); }), 0);
    EXPECT_EQ(Upload("relative", "x", 1), 48041);
}

TEST_F(Transfer, CProgramsMoveDatabasesToo) {
    QVE_Connection* connection = nullptr;
    ASSERT_EQ(QVE_ConnectionOpen(&connection), 0);
    ASSERT_EQ(QVE_ConnectionConnect(connection, m_server.GetDescriptor().c_str()), 0);
    QVE_Upload* upload = nullptr;
    ASSERT_EQ(QVE_DatabaseUploadOpen(connection, (m_directory / "c").c_str(), &upload), 0);
    EXPECT_EQ(QVE_UploadSetSize(upload, 3), 0);
    EXPECT_EQ(QVE_UploadSend(upload, "abc", 3), 0);
    EXPECT_EQ(QVE_UploadCommit(upload), 0);
    EXPECT_EQ(QVE_UploadClose(upload), 0);
    QVE_Download* download = nullptr;
    ASSERT_EQ(QVE_DatabaseDownloadOpen(connection, (m_directory / "c").c_str(), &download), 0);
    std::uint64_t size = 0;
    EXPECT_EQ(QVE_DownloadGetSize(download, &size), 0);
    EXPECT_EQ(size, 3U);
    char bytes[4] = {};
    std::uint32_t count = 0;
    EXPECT_EQ(QVE_DownloadRecv(download, 2, bytes, &count), 0);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(QVE_DownloadRecv(download, 2, bytes + count, &count), 0);
    EXPECT_STREQ(bytes, "abc");
    EXPECT_EQ(QVE_DownloadRecv(download, 2, bytes, &count), 40415);
    EXPECT_EQ(QVE_DatabaseDownloadOpen(connection, nullptr, &download), QVE_ERROR_ARGUMENT);
    QVE_ConnectionDisconnect(connection);
    EXPECT_EQ(QVE_DownloadClose(download), 0);
}

TEST_F(Transfer, StaysWithinTheAccessPath) {
    usrprops properties;
    properties.set(usrpropkey::database_access, std::wstring(L"/tmp/qve_nowhere"));
    const TestServer server(properties);
    const auto client = server.Connect();
    EXPECT_EQ(StatusOfCall([&] { client->DatabaseUploadOpen(m_directory / "x"); }), 48041);
    EXPECT_EQ(StatusOfCall([&] { client->DatabaseDownloadOpen("../../etc/passwd"); }), 48041);
}

}  // namespace
}  // namespace qve
