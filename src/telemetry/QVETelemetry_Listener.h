#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "metrics/Context.h"
#include "metrics/MetricsEvent.h"
#include "os/Timer.h"
#include "telemetry/QVETelemetry_Configuration.h"

namespace qve {

/// Follows the scopes of every context and writes a line for each. Each line has the columns of s_columns, separated by
/// tabs; "elapse" and "elapse exclude" (without the scopes inside) are in seconds, "timestamp" is in seconds since
/// its construction. Events come from any thread.
class QVETelemetry::Listener : public Metrics::MetricsConsumer {
public:
    explicit Listener(Configuration configuration);
    ~Listener() override;

    /// Opens the file that the pattern names now, unless it is open. Throws std::runtime_error when that fails.
    void OpenOutput();
    /// Starts the thread that gathers statistics of the process in `context`, unless that is unwanted.
    void Start(Metrics::Context context);
    /// Ends the thread and the file. Events that come later are dropped.
    void Close();
    /// Takes new parameters over and sets and clears bits as they say. Wrong parameters are logged and change nothing.
    void Reconfigure(std::string_view text);

    void OnMetricsEvent(const Metrics::MetricsEvent& event) noexcept override;

private:
    using Event = Metrics::MetricsEvent;
    using TimePoint = std::chrono::steady_clock::time_point;

    /// A scope that is open.
    struct ScopeInfo {
        std::string name;
        std::string info;
        TimePoint start;
        std::chrono::steady_clock::duration children{};
    };
    struct ContextInfo {
        std::vector<ScopeInfo> scopes;
        std::string name;  ///< of the thread or the work
        std::string info;  ///< attributes that wait for a scope
        std::string pid;   ///< these three stand for the numbers of the system when they are not empty
        std::string tid;
        std::string cid;
        std::uint64_t session = 0;  ///< 0 for none
    };
    struct SessionInfo {
        unsigned contexts = 0;  ///< that belong to it; with the last one it is forgotten
        std::string queryBand;
    };

    void Handle(const Event& event);
    void OnOpenScope(const Event& event);
    void OnCloseScope(const Event& event);
    void OnNameValue(const Event& event);
    void OnAttribute(const Event& event);
    void OnCreateContext(const Event& event);
    void OnOpenContext(const Event& event);
    void OnCloseContext(const Event& event);
    void OnControl(const Event& event);

    void SetSession(ContextInfo& context, std::uint64_t session);
    std::string GetQueryBand(std::uint64_t session) const;
    bool IsWanted(const ContextInfo& context) const;

    void OpenOutputFile(const Configuration& configuration);
    void WriteHeader();
    void Rotation();
    void OutputScope(const ContextInfo& context, std::uint64_t contextId, const ScopeInfo& scope, const char* type,
                     TimePoint end);
    void OutputEmpty(const Event& event, const char* type);
    void BackgroundThread();
    void DumpProcessStats(const char* name, bool last);

    std::mutex m_mutex;  // guards all below; no event is emitted and no setting changed under it
    Configuration m_configuration;
    std::map<std::uint64_t, ContextInfo> m_contexts;
    std::unordered_map<std::uint64_t, SessionInfo> m_sessions;
    std::set<std::uint64_t> m_tracedSessions;  // when there are any, only their scopes are written
    std::ofstream m_output;
    std::string m_outputName;
    Timer m_rotationTimer;
    const TimePoint m_start = std::chrono::steady_clock::now();
    std::uint64_t m_nextLine = 1;
    std::uint64_t m_dropped = 0;  // events for which memory or disk did not suffice
    bool m_closed = false;
    std::condition_variable m_close;
    Metrics::Context m_context{0};
    std::thread m_background;
};

}  // namespace qve
