#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "algebra/Namespace.h"
#include "storage/DatabaseFamily.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"
#include "types/usrprops.h"

namespace qve {
class VQLSession;
}

namespace qve::Server {

class Rowset;

/// A text that is prepared, and executed any number of times. One thread at a time, but for Cancel, which any thread
/// may call at any time.
class Statement : public RefCntObject {
public:
    /// What the last statement took, in seconds.
    struct Timers {
        double compile = 0;
        double execute = 0;
        double elapse = 0;
    };
    /// Rows of the result and rows of work, all ones where unknown.
    struct Progress {
        std::uint64_t first = ~std::uint64_t{0};
        std::uint64_t last = ~std::uint64_t{0};
        std::uint64_t done = ~std::uint64_t{0};
        std::uint64_t total = ~std::uint64_t{0};
    };

    /// @param database the current one; null for none
    explicit Statement(RefCntPtr<Database> database);
    ~Statement() override;

    void Configure(const usrprops& properties) { m_properties = properties; }
    void SetPageSize(unsigned rows) { m_pageSize = rows; }
    unsigned GetPageSize() const { return m_pageSize; }
    /// The database after what was prepared; null for none.
    RefCntPtr<Database> GetDatabase() const;

    /// Compiles a text to the plan of the next executions. Throws what the language throws.
    void Prepare(const std::wstring& text);
    /// The same of a text in the language of plans.
    void Plan(const std::wstring& text);
    /// Runs the plan up to its first page; null when there is no plan or it yields nothing. Throws what the plan
    /// throws, Operator::CancelledException too.
    RefCntPtr<Rowset> Execute();
    /// Stops what runs; when nothing is prepared, the next execution.
    void Cancel();
    Progress EstimateProgress() const;
    const Timers& GetTimers() const noexcept { return m_timers; }

private:
    using Compiler = RefCntPtr<Namespace> (VQLSession::*)(const std::wstring&);

    void Compile(const std::wstring& text, Compiler compiler);
    RefCntPtr<Rowset> Open(const RefCntPtr<Namespace>& plan);

    DatabaseFamily m_databases;
    usrprops m_properties;
    unsigned m_pageSize;
    Timers m_timers;
    // The symbols of the plan. Rowsets share it: they may outlive the preparation.
    std::shared_ptr<VQLSession> m_session;

    mutable std::mutex m_mutex;  // of what Cancel sees
    RefCntPtr<Namespace> m_plan;
    bool m_cancelPending = false;
};

}  // namespace qve::Server
