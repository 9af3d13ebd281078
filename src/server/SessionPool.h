#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "server/protocol/QVE_Command.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"
#include "system/TReadWriteLock.h"
#include "types/datetime.h"
#include "types/usrprops.h"

namespace qve::Server {

class RuntimeQueryStatsCollector;
class Session;

/// What a session is doing, for others to see.
struct SessionState {
    std::uint64_t guid = 0;
    datetime timestamp{};  ///< of the last change
    QVE_Command command = QVE_Command::Idle;
    std::wstring database;  ///< where it lies; empty for none
    std::wstring query;     ///< the last statement text
};

/// All sessions, and the table of what each is doing. Any thread.
class SessionPool : public RefCntObject {
public:
    explicit SessionPool(usrprops properties);
    ~SessionPool() override;

    /// A new session. Throws QVE_RuntimeError (40422).
    RefCntPtr<Session> MakeSession();
    /// Throws QVE_RuntimeError (40421).
    RefCntPtr<Session> GetSession(std::uint64_t guid) const;
    /// Lets go of a session; harmless when there is none.
    void EraseSession(std::uint64_t guid);
    /// Cancels whatever the sessions run.
    void CancelAll();

    /// Changes a session's state and its timestamp; nothing happens when there is no such session.
    void UpdateSessionState(std::uint64_t guid, const std::function<void(SessionState&)>& update);
    /// A copy of the table, in the order of the guids.
    std::vector<SessionState> GetSessionStateTable() const;

    RuntimeQueryStatsCollector& GetQueryStats() const { return *m_queryStats; }

private:
    const usrprops m_properties;
    const RefCntPtr<RuntimeQueryStatsCollector> m_queryStats;
    mutable std::mutex m_mutex;  // of the sessions
    std::uint64_t m_nextGuid = 1;
    std::unordered_map<std::uint64_t, RefCntPtr<Session>> m_sessions;
    mutable TReadWriteLock m_stateLock;
    std::unordered_map<std::uint64_t, SessionState> m_states;
};

}  // namespace qve::Server
