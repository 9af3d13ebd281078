#include "server/SessionPool.h"

#include <algorithm>
#include <utility>

#include "server/RuntimeQueryStatsCollector.h"
#include "server/Session.h"
#include "server/status.h"
#include "system/QuillonException.h"

namespace qve::Server {

SessionPool::SessionPool(usrprops properties)
    : m_properties(std::move(properties)), m_queryStats(MakeRef<RuntimeQueryStatsCollector>()) {}

SessionPool::~SessionPool() = default;

RefCntPtr<Session> SessionPool::MakeSession() {
    std::uint64_t guid;
    {
        std::lock_guard lock(m_mutex);
        guid = m_nextGuid++;
    }
    const auto session = MakeRef<Session>(guid, RefCntPtr<SessionPool>(this), m_properties);
    {
        std::lock_guard lock(m_mutex);
        if (!m_sessions.emplace(guid, session).second) {
            throw QVE_RuntimeError(status::SessionPool_AddSession, "SessionPool::AddSession: bad session id");
        }
    }
    std::lock_guard lock(m_stateLock);
    SessionState& state = m_states[guid];
    state.guid = guid;
    state.timestamp = datetime::now();
    return session;
}

RefCntPtr<Session> SessionPool::GetSession(std::uint64_t guid) const {
    std::lock_guard lock(m_mutex);
    const auto found = m_sessions.find(guid);
    if (found == m_sessions.end()) {
        throw QVE_RuntimeError(status::SessionPool_GetSession, "SessionPool::GetSession: bad session id");
    }
    return found->second;
}

void SessionPool::EraseSession(std::uint64_t guid) {
    RefCntPtr<Session> erased;  // its end, which may take a while, is none of the lock's business
    {
        std::lock_guard lock(m_mutex);
        const auto found = m_sessions.find(guid);
        if (found != m_sessions.end()) {
            erased = std::move(found->second);
            m_sessions.erase(found);
        }
    }
    std::lock_guard lock(m_stateLock);
    m_states.erase(guid);
}

void SessionPool::CancelAll() {
    std::vector<RefCntPtr<Session>> sessions;
    {
        std::lock_guard lock(m_mutex);
        for (const auto& [guid, session] : m_sessions) sessions.push_back(session);
    }
    for (const RefCntPtr<Session>& session : sessions) session->CancelAll();
}

void SessionPool::UpdateSessionState(std::uint64_t guid, const std::function<void(SessionState&)>& update) {
    std::lock_guard lock(m_stateLock);
    const auto found = m_states.find(guid);
    if (found == m_states.end()) return;
    found->second.timestamp = datetime::now();
    update(found->second);
}

std::vector<SessionState> SessionPool::GetSessionStateTable() const {
    std::vector<SessionState> table;
    {
        std::shared_lock lock(m_stateLock);
        for (const auto& [guid, state] : m_states) table.push_back(state);
    }
    std::sort(table.begin(), table.end(), [](const SessionState& a, const SessionState& b) { return a.guid < b.guid; });
    return table;
}

}  // namespace qve::Server
