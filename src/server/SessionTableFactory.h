#pragma once

#include <cstdint>
#include <map>

#include "server/Session.h"
#include "storage/MaterialisedTableSpace.h"

namespace qve::Server {

class SessionPool;

/// The tables of the schema ".SESSION": what all sessions are doing, and what statements took so far. A table is made
/// when it is first asked for after Refresh, so that all columns a statement reads show the same moment. Used by the
/// thread that works on the session.
class Session::TableFactory : public MaterialisedTableSpace::TableFactory {
public:
    /// @param pool must outlive this
    explicit TableFactory(const SessionPool& pool) : m_pool(pool) {}

    /// Forgets the tables that were made.
    void Refresh() { m_made.clear(); }

    /// "SESSIONS" and "RUNTIMEQUERYSTATS".
    std::vector<std::wstring> GetTableNames() const override;
    RefCntPtr<MaterialisedTableSpace::Source> GetTable(const std::wstring& name) override;

private:
    const SessionPool& m_pool;
    std::map<std::wstring, RefCntPtr<MaterialisedTableSpace::Source>> m_made;
};

}  // namespace qve::Server
