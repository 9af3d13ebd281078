#include "tests/e2e/TestServer.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace qve::test {
namespace {

namespace fs = std::filesystem;

}  // namespace

const std::vector<ServerSetting>& ServerSettings() {
    static const std::vector<ServerSetting> settings = {
        {"defaults", ""},
        {"no_vectors", "", false},
        {"no_encodings", "encodings:false\n"},
        {"large_pages", "block-length:4096\n"},
        {"small_work_buffer", "work-buffer-size:1\n"},
        {"small_memory", "", true, false, "(settings set global \"MemoryBudget\" 1)"},
        {"plan_text", "", true, true},
    };
    return settings;
}

const std::vector<ServerSetting>& GroupingSettings() {
    static const std::vector<ServerSetting> settings = {
        {"merge_and_parallel", "MergeGrouping:true\nparallelhashing:true\n"},
        {"fetch", "ForcedGrouping:FetchGrouping\n", true, false,
         "(settings set global \"DefaultOrderedAggregates\" false)"},
        {"merge", "ForcedGrouping:MergeGrouping\n"},
        {"array", "ForcedGrouping:ArrayGrouping\n"},
        {"perfect_hash", "ForcedGrouping:PerfectHashGrouping\n"},
        {"perfect_concurrent_hash", "ForcedGrouping:PerfectConcurrentHashGrouping\n"},
        {"hash", "ForcedGrouping:HashGrouping\n"},
        {"concurrent_hash", "ForcedGrouping:ConcurrentHashGrouping\n"},
    };
    return settings;
}

TestServer::TestServer(const ServerSetting& setting) : m_setting(setting), m_folder(m_scratch.GetPath()) {
    const fs::path config = m_folder / "qveconfig.yaml";
    std::ofstream(config) << setting.configuration;
    ::setenv("LC_ALL", "C", 1);
    ::setenv("QUILLON_VECTORIZATION", setting.vectors ? "1" : "0", 1);
    m_process.emplace(config.string());
    m_client.emplace(m_process->GetDescriptor());
    m_client->Run("(create database \"" + (m_folder / "test.db").string() + "\")");
    if (!setting.command.empty()) m_client->Run(setting.command);
}

TestServer::~TestServer() {
    m_client.reset();
    m_process.reset();
}

// The plan of a query as one text; empty for what has none. The listing leaves the closing parentheses out.
std::string TestServer::PlanText(const std::string& query) {
    constexpr int hasNoPlan = 48037;
    std::vector<Row> lines;
    try {
        lines = m_client->Run("(explain " + query + ")").rows;
    } catch (const EngineError& error) {
        if (error.GetStatus() != hasNoPlan) throw;
        return {};
    }
    std::string plan;
    size_t open = 0;
    for (const Row& line : lines) {
        const std::string& text = std::get<std::string>(line[0]);
        const size_t depth = text.find_first_not_of(' ') / 2;
        for (; open > depth; --open) plan += ')';
        plan += "\n(" + text.substr(2 * depth);
        ++open;
    }
    return plan + std::string(open, ')');
}

std::vector<Row> TestServer::Query(const std::string& query) {
    const std::string plan = m_setting.plans ? PlanText(query) : std::string();
    return plan.empty() ? m_client->Run(query).rows : m_client->RunPlan(plan).rows;
}

}  // namespace qve::test
