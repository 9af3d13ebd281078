#pragma once

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/EngineClient.h"
#include "tests/support/ScratchFolder.h"

namespace qve::test {

/// What a server is started with: lines of its configuration file, and whether it may use vector instructions; and how
/// queries are run.
struct ServerSetting {
    std::string name;
    std::string configuration;
    bool vectors = true;
    bool plans = false;        ///< each query is run by the text of its plan
    std::string command = {};  ///< a statement to begin with

    friend void PrintTo(const ServerSetting& setting, std::ostream* out) { *out << setting.name; }
};

/// The settings under which every query is to give the same rows.
const std::vector<ServerSetting>& ServerSettings();
/// The same with each strategy of grouping first where it is valid, and with those that are off by default.
const std::vector<ServerSetting>& GroupingSettings();

/// A server of its own with an empty database, which go with the object; with QVE_TEST_KEEP in the environment the
/// files stay.
class TestServer {
public:
    explicit TestServer(const ServerSetting& setting);
    ~TestServer();
    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;

    EngineClient& GetClient() { return *m_client; }
    /// For the files of the test.
    const std::filesystem::path& GetFolder() const { return m_folder; }
    const ServerSetting& GetSetting() const { return m_setting; }

    /// Runs a query as the setting says. Throws EngineError.
    std::vector<Row> Query(const std::string& query);

private:
    std::string PlanText(const std::string& query);

    const ServerSetting m_setting;
    const ScratchFolder m_scratch;
    const std::filesystem::path m_folder;
    std::optional<EngineProcess> m_process;
    std::optional<EngineClient> m_client;
};

}  // namespace qve::test
