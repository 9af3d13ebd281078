#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "metrics/Scope.h"

namespace qve::Metrics {
namespace {

using testing::ElementsAre;

// Writes each event as one short text.
class Recorder : public MetricsConsumer {
public:
    void OnMetricsEvent(const MetricsEvent& event) noexcept override {
        static constexpr const char* kinds[] = {"create", "context", "end",       "open",
                                                "close",  "value",   "attribute", "control"};
        std::string text = kinds[static_cast<int>(event.kind)];
        if (!event.name.empty()) text += " " + std::string(event.name);
        const std::string value = ToString(event.value);
        if (event.kind == EventKind::NameValue || event.kind == EventKind::Attribute ||
            event.kind == EventKind::Control)
            text += "=" + value;
        std::lock_guard lock(m_mutex);
        m_events.push_back(text);
        m_contexts.push_back(event.context);
    }
    std::vector<std::string> Events() {
        std::lock_guard lock(m_mutex);
        return m_events;
    }
    std::vector<uint64_t> Contexts() {
        std::lock_guard lock(m_mutex);
        return m_contexts;
    }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_events;
    std::vector<uint64_t> m_contexts;
};

class MetricsTest : public testing::Test {
protected:
    void SetUp() override {
        m_recorder = MakeRef<Recorder>();
        MetricsManager::Enable();
        MetricsManager::GetInstance().AddConsumer(m_recorder);
    }
    void TearDown() override { MetricsManager::ShutdownAndFreeInstance(); }

    RefCntPtr<Recorder> m_recorder;
};

TEST_F(MetricsTest, ScopesNestAndCarryTheirValues) {
    MetricsManager::GetInstance().SetBits(Bits::General | Bits::Session);
    {
        Scope outer("Outer::Run");
        outer.NameValue("rows", 42);
        {
            Scope inner("Inner::Run");
            inner.NameValue("name", L"gr\u00fcn");
            NameValue("ratio", 0.5);
        }
        Attribute("session", uint64_t{7}, Bits::Session);
        outer.NameValue("done", true);
    }
    EXPECT_THAT(m_recorder->Events(),
                ElementsAre("open Outer::Run", "value rows=42", "open Inner::Run", "value name=gr\xc3\xbcn",
                            "value ratio=0.5", "close", "attribute session=7", "value done=true", "close"));
}

TEST_F(MetricsTest, OnlyWantedKindsFlow) {
    MetricsManager::GetInstance().SetBits(Bits::Files | Bits::Server);
    MetricsManager::GetInstance().ClearBits(Bits::Server);
    {
        Scope general("General");
        Scope server("Server", Bits::Server);
        Scope files("Files", Bits::Files);
        EXPECT_FALSE(general.IsOpen());
        EXPECT_FALSE(server.IsOpen());
    }
    EXPECT_THAT(m_recorder->Events(), ElementsAre("open Files", "close"));
}

// Consumers keep a stack of scopes for each context: one that saw the opening must see the closing.
TEST_F(MetricsTest, AnOpenScopeIsClosedThoughItsBitWentOff) {
    MetricsManager::GetInstance().SetBits(Bits::General);
    {
        Scope scope("Scope");
        MetricsManager::GetInstance().ClearBits(Bits::General);
    }
    EXPECT_THAT(m_recorder->Events(), ElementsAre("open Scope", "close"));
}

TEST_F(MetricsTest, NothingFlowsWithoutAConsumerOrAfterShutdown) {
    MetricsManager& manager = MetricsManager::GetInstance();
    manager.SetBits(Bits::General);
    manager.RemoveConsumer(m_recorder);
    EXPECT_FALSE(IsEnabled(Bits::General));
    EXPECT_EQ(manager.GetBits(), Bits::General);
    manager.AddConsumer(m_recorder);
    EXPECT_TRUE(IsEnabled(Bits::General));
    MetricsManager::ShutdownAndFreeInstance();
    Scope scope("Scope");
    EXPECT_TRUE(m_recorder->Events().empty());
}

TEST_F(MetricsTest, AThreadHasAContextOfItsOwn) {
    MetricsManager::GetInstance().SetBits(Bits::General | Bits::Threads);
    const uint64_t mine = Context::Current().GetId();
    UniqueMetricsContext context;
    const uint64_t theirs = context.GetContext().GetId();
    std::thread([context = std::move(context)]() mutable {
        context.Open("Thread");
        Scope scope("Work");
    }).join();
    EXPECT_EQ(Context::Current().GetId(), mine);
    EXPECT_NE(theirs, mine);
    const auto events = m_recorder->Events();
    const auto contexts = m_recorder->Contexts();
    // The lambda was moved into the thread: only the last owner ends the context.
    EXPECT_THAT(std::vector(events.end() - 4, events.end()),
                ElementsAre("context Thread", "open Work", "close", "end"));
    EXPECT_THAT(std::vector(contexts.end() - 4, contexts.end()), testing::Each(theirs));
}

TEST_F(MetricsTest, ConsumersMayAnswerAControlEventBySettingBits) {
    class Reconfigurer : public MetricsConsumer {
    public:
        void OnMetricsEvent(const MetricsEvent& event) noexcept override {
            if (event.kind == EventKind::Control && event.code == ControlCode::Reconfigure)
                MetricsManager::GetInstance().SetBits(MetricsBitsUtils::ToBits(ToString(event.value)));
        }
    };
    MetricsManager::GetInstance().AddConsumer(MakeRef<Reconfigurer>());
    MetricsManager::GetInstance().Control(ControlCode::Reconfigure, "", std::string_view("files"));
    EXPECT_EQ(MetricsManager::GetInstance().GetBits(), Bits::Files);
}

TEST_F(MetricsTest, EventsAndConsumersMayChangeAtOnce) {
    MetricsManager& manager = MetricsManager::GetInstance();
    manager.SetBits(Bits::General);
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([] {
            for (int n = 0; n < 500; ++n) {
                Scope scope("Scope");
                scope.NameValue("n", n);
            }
        });
    }
    for (int n = 0; n < 200; ++n) {
        const auto other = MakeRef<Recorder>();
        manager.AddConsumer(other);
        manager.SetBits(Bits::Files);
        manager.RemoveConsumer(other);
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(m_recorder->Events().size(), 3 * 500 * 3u);
}

TEST(MetricsBitsUtilsTest, ReadsAndWritesMnemonics) {
    EXPECT_EQ(MetricsBitsUtils::ToBits("Server; query|files"), Bits::Server | Bits::Query | Bits::Files);
    EXPECT_EQ(MetricsBitsUtils::ValidateMnemonicList("server, frob query,nix"), "frob,nix");
    EXPECT_EQ(MetricsBitsUtils::ValidateMnemonicList(" , "), "");
    EXPECT_EQ(MetricsBitsUtils::ToMnemonics(Bits::Session | Bits::Server), "server,session");
    EXPECT_EQ(MetricsBitsUtils::ToBits(MetricsBitsUtils::ToMnemonics(MetricsBitsUtils::ToBits("all"))),
              MetricsBitsUtils::ToBits("all"));
    EXPECT_EQ(Bits::Session, 0x2000000000000u);
}

}  // namespace
}  // namespace qve::Metrics
