#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <thread>

#include "os/OS.h"
#include "os/Path.h"
#include "system/QuillonException.h"
#include "telemetry/LogEntry.h"
#include "telemetry/LogScopeTime.h"
#include "telemetry/SimpleLogger.h"
#include "telemetry/log_time.h"
#include "tests/support/ScratchFolder.h"

namespace qve {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

std::vector<std::string> lines_of(const std::wstring& path) {
    std::ifstream file(Path::utf8path(path));
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

std::string without_header(const std::string& line) {
    return line.substr(line.find("): ") + 3);
}

class LoggerTest : public testing::Test {
protected:
    void TearDown() override { Logger::Init(nullptr); }
    // Writes all that is queued.
    static void Drain(Logger& logger) {
        logger.QueueStop();
        logger.Run();
    }

    const test::ScratchFolder m_scratch;
    const std::wstring m_directory = m_scratch.GetPath().wstring();
};

TEST_F(LoggerTest, StampsEachLineOfAMessage) {
    const std::wstring path = Path::join(m_directory, L"log.txt");
    const auto logger = MakeRef<SimpleLogger>(path, 0);
    logger->QueueMessage(std::string("one\ntwo\n"));
    logger->QueueMessage(std::wstring(L"dr\u00e4i"));
    std::istringstream narrow("four\n\nfive");
    logger->QueueMessage(narrow);
    std::wistringstream wide(L"six");
    logger->QueueMessage(wide);
    logger->QueueMessage(std::string());
    Drain(*logger);
    const auto lines = lines_of(path);
    std::vector<std::string> texts;
    for (const auto& line : lines) {
        EXPECT_THAT(line, MatchesRegex(
                              "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{4} \\([0-9a-fx]+\\): .*"));
        texts.push_back(without_header(line));
    }
    EXPECT_THAT(texts, ElementsAre("one", "two", "dr\xc3\xa4i", "four", "", "five", "six"));
    // The lines of one message have one time.
    EXPECT_EQ(lines[0].substr(0, 24), lines[1].substr(0, 24));
    EXPECT_EQ(logger->GetBaseFilePath(), path);
}

TEST_F(LoggerTest, AppendsToTheFileThatIsThere) {
    const std::wstring path = Path::join(m_directory, L"log.txt");
    for (const char* text : {"first", "second"}) {
        const auto logger = MakeRef<SimpleLogger>(path, 0);
        logger->QueueMessage(std::string(text));
        Drain(*logger);
    }
    const auto lines = lines_of(path);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_THAT(lines[0], HasSubstr("first"));
}

// As two processes do that begin a file in the same second.
TEST_F(LoggerTest, RotatedFilesNeverShareAName) {
    const std::wstring path = Path::join(m_directory, L"log.txt");
    std::vector<RefCntPtr<SimpleLogger>> loggers;
    for (int i = 0; i < 3; ++i) {
        loggers.push_back(MakeRef<SimpleLogger>(path, 600));
        loggers.back()->QueueMessage(std::to_string(i));
        Drain(*loggers.back());
    }
    const auto names = OS::listdir(m_directory);
    ASSERT_EQ(names.size(), 3u);
    std::set<std::string> texts;
    for (const auto& name : names) {
        EXPECT_THAT(Path::utf8path(name), MatchesRegex("log(_[0-9]+){6,7}\\.txt"));
        const auto lines = lines_of(Path::join(m_directory, name));
        ASSERT_EQ(lines.size(), 1u);
        texts.insert(without_header(lines[0]));
    }
    EXPECT_THAT(texts, ElementsAre("0", "1", "2"));
}

TEST_F(LoggerTest, AFileThatCannotBeOpenedIsRefused) {
    try {
        MakeRef<SimpleLogger>(Path::join(m_directory, L"none/log.txt"), 0);
        FAIL();
    } catch (const QVE_LogicError& fault) {
        EXPECT_THAT(fault.GetText(), HasSubstr("SimpleLogger constructor failed. Couldn't open: '"));
    }
}

TEST_F(LoggerTest, WritesInTheOrderOfThePushesAndAllThatCameBeforeTheStop) {
    const std::wstring path = Path::join(m_directory, L"log.txt");
    const auto logger = MakeRef<SimpleLogger>(path, 0);
    Logger::Init(logger);
    std::thread writer([&] { logger->Run(); });
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int n = 0; n < 200; ++n) LogEntry() << t << ' ' << n;
        });
    }
    for (auto& thread : threads) thread.join();
    logger->Flush();
    logger->QueueStop();
    writer.join();
    int next[4] = {};
    for (const auto& line : lines_of(path)) {
        int t = -1, n = -1;
        ASSERT_EQ(std::sscanf(without_header(line).c_str(), "%d %d", &t, &n), 2) << line;
        EXPECT_EQ(n, next[t]++);
    }
    EXPECT_THAT(next, testing::Each(200));
}

// Nobody writes: the queue must not grow without end, and the loss must show in the log.
TEST_F(LoggerTest, DropsAndCountsWhatDoesNotFitTheQueue) {
    const std::wstring path = Path::join(m_directory, L"log.txt");
    const auto logger = MakeRef<SimpleLogger>(path, 0);
    const std::string big(SimpleLogger::MaximalQueueBytes / 2, 'x');
    for (int i = 0; i < 3; ++i) logger->QueueMessage(big);
    Drain(*logger);
    const auto lines = lines_of(path);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(without_header(lines[0]), "2 log lines were dropped: the log could not keep up");
}

TEST_F(LoggerTest, WithoutALoggerNothingIsBuilt) {
    EXPECT_FALSE(Logger::Get()->IsWritten());
    EXPECT_TRUE(Logger::Get()->GetBaseFilePath().empty());
    Logger::Get()->QueueMessage(std::string("dropped"));
    LogEntry entry;
    EXPECT_FALSE(entry);
    entry << "dropped";
}

TEST_F(LoggerTest, EntriesTakeTextAndNumbers) {
    const std::wstring path = Path::join(m_directory, L"log.txt");
    const auto logger = MakeRef<SimpleLogger>(path, 0);
    Logger::Init(logger);
    LogEntry() << "a" << std::string("b") << L"\u00e4" << std::wstring(L"c") << 1 << 'd' << uint64_t{2} << -3 << 0.25
               << true;
    { LogScopeTime slow("Slow", 0, 17); }
    { LogScopeTime fast("Fast", 1000); }
    Drain(*logger);
    const auto lines = lines_of(path);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(without_header(lines[0]),
              "ab\xc3\xa4"
              "c1d2-30.25true");
    EXPECT_THAT(without_header(lines[1]), HasSubstr("LogScopeTime: Slow, 17, "));
}

TEST(LogTimeTest, FormatsInUtc) {
    using namespace std::chrono;
    const system_clock::time_point time{seconds(1717143300) + microseconds(42199)};
    const std::string header = FormatHeader(time, std::this_thread::get_id(), true);
    EXPECT_THAT(header, testing::StartsWith("2024-05-31 08:15:00.0421 ("));
    EXPECT_THAT(header, testing::EndsWith("): "));
    EXPECT_EQ(FormatRotationTime(time, true), L"_2024_5_31_8_15_0");
}

}  // namespace
}  // namespace qve
