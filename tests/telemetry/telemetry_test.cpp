#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "metrics/Scope.h"
#include "telemetry/QVETelemetry_Configuration.h"

namespace qve {
namespace {

using Metrics::Attribute;
using Metrics::ControlCode;
using Metrics::MetricsManager;
using Metrics::Scope;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::SizeIs;

enum Column { Id, Depth, DateTime, Timestamp, Elapse, ElapseExclude, Pid, Tid, Cid, Session, Name, Type, Band, Info };

std::string MessageOf(const std::string& parameters) {
    try {
        QVETelemetry::Configuration::evaluate(parameters);
        return "";
    } catch (const std::invalid_argument& exception) {
        return exception.what();
    }
}

TEST(TelemetryConfiguration, ReadsParametersAndKeepsTheirBounds) {
    const auto read = QVETelemetry::Configuration::evaluate(
        "--emitutc on --sessionspecific off --rotationinterval 5 --statsinterval 9999 --metrics.set \"server, query\" "
        "--metrics.out \"a b.txt\"");
    EXPECT_TRUE(read.emitutc);
    EXPECT_FALSE(read.sessionspecific);
    EXPECT_EQ(read.rotationinterval, 600U);
    EXPECT_EQ(read.statsinterval, 3600U);
    EXPECT_EQ(read.set, Metrics::Bits::Server | Metrics::Bits::Query);
    EXPECT_EQ(read.out, "a b.txt");
}

TEST(TelemetryConfiguration, SaysWhatIsWrong) {
    EXPECT_EQ(MessageOf("--metrics.set server,frob"), "Parameter metrics.set has unknown bits - frob");
    EXPECT_EQ(MessageOf("--metrics.clear x,y"), "Parameter metrics.clear has unknown bits - x,y");
    EXPECT_THAT(MessageOf("--emitutc perhaps"), HasSubstr("expected on or off"));
    EXPECT_THAT(MessageOf("--statsinterval soon"), HasSubstr("statsinterval"));
    EXPECT_THAT(MessageOf("--help"), HasSubstr("--help"));  // and the process goes on
    EXPECT_THAT(MessageOf("--metrics.out"), HasSubstr("metrics.out"));
}

class TelemetryTest : public testing::Test {
protected:
    TelemetryTest() : m_path(testing::TempDir() + "telemetry_" + std::to_string(getpid()) + ".txt") {}
    void SetUp() override { MetricsManager::Enable(); }
    void TearDown() override {
        m_telemetry.Close();
        MetricsManager::ShutdownAndFreeInstance();
        std::filesystem::remove(m_path);
    }

    void Open(const std::string& parameters) {
        m_telemetry.SetOutputFileName(m_path);
        m_telemetry.SetBits("general");
        m_telemetry.SetParameters(parameters);
        m_telemetry.Open();
    }
    /// The fields of each line below the header, after closing.
    std::vector<std::vector<std::string>> Lines(const std::string& path) {
        m_telemetry.Close();
        std::ifstream file(path);
        std::string line;
        std::getline(file, line);
        EXPECT_EQ(line,
                  "id\tdepth\tdatetime\ttimestamp\telapse\telapse exclude\tpid\ttid\tcid\tsession\tscope\ttype\t"
                  "queryband\tinfo");
        std::vector<std::vector<std::string>> lines;
        while (std::getline(file, line)) {
            std::istringstream stream(line + '\t');
            std::vector<std::string> fields;
            for (std::string field; std::getline(stream, field, '\t');) fields.push_back(field);
            lines.push_back(std::move(fields));
        }
        return lines;
    }
    std::vector<std::string> Names() {
        std::vector<std::string> names;
        for (const auto& line : Lines(m_path)) names.push_back(line.at(Name));
        return names;
    }

    std::string m_path;
    QVETelemetry m_telemetry;
};

TEST_F(TelemetryTest, WritesALineForEachScopeWithItsTimesAndValues) {
    Open("--runforeground on");
    {
        Attribute("session", 7, Metrics::Bits::Session);
        Attribute("queryband", "job=\"night\"", Metrics::Bits::Session);
        Attribute("statement", 3);
        Scope outer("Outer::Run");
        {
            Scope inner("Inner::Run");
            inner.NameValue("rows", 42);
            inner.NameValue("exact", true);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    Attribute("session", 0, Metrics::Bits::Session);
    const auto lines = Lines(m_path);
    ASSERT_THAT(lines, SizeIs(2));
    ASSERT_THAT(lines, Each(SizeIs(14)));
    const auto& inner = lines[0];
    const auto& outer = lines[1];
    EXPECT_THAT(inner, IsSupersetOf({"1", "1", "Inner::Run", "close", "7", "rows=42 exact=true"}));
    EXPECT_EQ(inner[Band], "\"job=\"\"night\"\"\"");
    EXPECT_EQ(inner[Pid], std::to_string(getpid()));
    EXPECT_EQ(inner[Cid], outer[Cid]);
    EXPECT_EQ(outer[Depth], "0");
    EXPECT_EQ(outer[Info], "statement=3");
    EXPECT_GE(std::stod(outer[Elapse]), std::stod(inner[Elapse]));
    EXPECT_NEAR(std::stod(outer[ElapseExclude]), std::stod(outer[Elapse]) - std::stod(inner[Elapse]), 2e-6);
}

TEST_F(TelemetryTest, KeepsToTheSessionsThatAreAskedFor) {
    Open("--runforeground on --sessionspecific on");
    { const Scope none("Without"); }
    Attribute("session", 1, Metrics::Bits::Session);
    { const Scope first("First"); }
    MetricsManager::GetInstance().Control(ControlCode::TraceSession, "on", std::uint64_t{2});
    { const Scope other("Other"); }
    Attribute("session", 2, Metrics::Bits::Session);
    { const Scope traced("Traced"); }
    MetricsManager::GetInstance().Control(ControlCode::TraceSession, "off", std::uint64_t{2});
    Attribute("session", 1, Metrics::Bits::Session);
    { const Scope again("Again"); }
    Attribute("session", 0, Metrics::Bits::Session);
    EXPECT_THAT(Names(), ElementsAre("First", "Traced", "Again"));
}

TEST_F(TelemetryTest, IsReconfiguredWhileItRuns) {
    Open("--runforeground on");
    const std::string other = m_path + ".other";
    const auto reconfigure = [](const std::string& text) {
        MetricsManager::GetInstance().Control(ControlCode::Reconfigure, "parameters", std::string_view(text));
    };
    { const Scope before("Before"); }
    reconfigure("--metrics.set frob --metrics.out /nowhere");
    reconfigure("--metrics.set files --metrics.out /nowhere/telemetry.txt");
    EXPECT_FALSE(Metrics::IsEnabled(Metrics::Bits::Files));
    { const Scope still("Still"); }
    reconfigure("--emitopenscope on --metrics.set files --metrics.out \"" + other + "\"");
    { const Scope file("File", Metrics::Bits::Files); }
    EXPECT_THAT(Names(), ElementsAre("Before", "Still"));
    const auto lines = Lines(other);
    std::filesystem::remove(other);
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_EQ(lines[0][Type], "open");
    EXPECT_EQ(lines[1][Type], "close");
}

TEST_F(TelemetryTest, RefusesWhatItCannotDo) {
    EXPECT_THROW(m_telemetry.SetBits("frob"), std::invalid_argument);
    EXPECT_THROW(m_telemetry.ClearBits("general,frob"), std::invalid_argument);
    m_telemetry.SetOutputFileName("/nowhere/telemetry.txt");
    EXPECT_THROW(m_telemetry.Open(), std::runtime_error);
    EXPECT_FALSE(m_telemetry.IsOpen());
    EXPECT_FALSE(Metrics::IsEnabled(Metrics::Bits::Session));
}

TEST_F(TelemetryTest, AddsStatisticsOfTheProcessFirstAndLast) {
    Open("--metrics.set process");
    const auto lines = Lines(m_path);
    ASSERT_THAT(lines, SizeIs(3));
    EXPECT_EQ(lines[0][Name], "First process stats");
    EXPECT_THAT(lines[0][Info], HasSubstr("cpu.user="));
    EXPECT_EQ(lines[1][Name], "Last process stats");
}

TEST_F(TelemetryTest, ThreadsEmitWhileItEnds) {
    Open("--metrics.set threads --emitemptyevent on");
    std::vector<std::jthread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([](const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                Metrics::UniqueMetricsContext context;
                context.Open("Emitter");
                Attribute("session", 5, Metrics::Bits::Session);
                const Scope scope("Emitter::Run");
            }
        });
    }
    while (std::filesystem::file_size(m_path) < 100'000) std::this_thread::yield();
    MetricsManager::GetInstance().Control(ControlCode::Reconfigure, "parameters", std::string_view("--emitutc on"));
    const auto lines = Lines(m_path);
    threads.clear();
    EXPECT_THAT(lines, Each(SizeIs(14)));
}

}  // namespace
}  // namespace qve
