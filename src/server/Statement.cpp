#include "server/Statement.h"

#include <utility>

#include "algebra/DataFlow.h"
#include "algebra/Scan.h"
#include "algebra/Table.h"
#include "algebra/plan/CancelStatement.h"
#include "algebra/plan/EstimateProgress.h"
#include "os/Timer.h"
#include "server/Rowset.h"
#include "vql/eval/VQLSession.h"

namespace qve::Server {
namespace {

/// Adds what passes until its end to a count of seconds, also on the way of an exception.
class Stopwatch {
public:
    explicit Stopwatch(double& seconds) : m_seconds(seconds), m_timer(true) {}
    ~Stopwatch() { m_seconds = m_timer.ElapsedSec(); }
    Stopwatch(const Stopwatch&) = delete;
    Stopwatch& operator=(const Stopwatch&) = delete;

private:
    double& m_seconds;
    const Timer m_timer;
};

/// What the plan of a rowset refers to.
struct PlanContext {
    RefCntPtr<Statement> statement;
    std::shared_ptr<VQLSession> session;
};

}  // namespace

Statement::Statement(RefCntPtr<Database> database)
    : m_databases(std::move(database)), m_pageSize(Namespace::s_blockLength) {}

Statement::~Statement() = default;

RefCntPtr<Database> Statement::GetDatabase() const {
    return m_databases.GetDefaultDatabase();
}

void Statement::Prepare(const std::wstring& text) {
    Compile(text, &VQLSession::Prepare);
}
void Statement::Plan(const std::wstring& text) {
    Compile(text, &VQLSession::Plan);
}

void Statement::Compile(const std::wstring& text, Compiler compiler) {
    m_timers = {};
    {
        // A cancel from here on is meant for the new plan.
        std::lock_guard lock(m_mutex);
        m_plan.reset();
    }
    const Stopwatch compile(m_timers.compile);
    m_session = std::make_shared<VQLSession>(m_databases);
    m_session->Configure(m_properties);
    RefCntPtr<Namespace> plan = (m_session.get()->*compiler)(text);
    std::lock_guard lock(m_mutex);
    m_plan = std::move(plan);
}

RefCntPtr<Rowset> Statement::Open(const RefCntPtr<Namespace>& plan) {
    const RefCntPtr<Namespace> result = plan->Execute(m_pageSize);
    if (!result) return nullptr;
    RefCntPtr<DataFlow> flow = DynamicPtrCast<DataFlow>(result);
    if (!flow) flow = MakeRef<Scan>(DynamicPtrCast<Table>(result));
    auto context = std::make_shared<PlanContext>(PlanContext{RefCntPtr<Statement>(this), m_session});
    return MakeRef<Rowset>(std::move(flow), m_pageSize, std::move(context));
}

RefCntPtr<Rowset> Statement::Execute() {
    RefCntPtr<Namespace> plan;
    bool cancelled;
    {
        std::lock_guard lock(m_mutex);
        plan = m_plan;
        if (!plan) return nullptr;
        cancelled = std::exchange(m_cancelPending, false);
    }
    if (cancelled) CancelStatement::Do(*plan);
    RefCntPtr<Rowset> rowset;
    try {
        const Stopwatch execute(m_timers.execute);
        rowset = Open(plan);
    } catch (...) {
        m_timers.elapse = m_timers.compile + m_timers.execute;
        throw;
    }
    m_timers.elapse = m_timers.compile + m_timers.execute;
    return rowset;
}

void Statement::Cancel() {
    RefCntPtr<Namespace> plan;
    {
        std::lock_guard lock(m_mutex);
        plan = m_plan;
        m_cancelPending = !plan;
    }
    if (plan) CancelStatement::Do(*plan);
}

Statement::Progress Statement::EstimateProgress() const {
    RefCntPtr<Namespace> plan;
    {
        std::lock_guard lock(m_mutex);
        plan = m_plan;
    }
    if (!plan) return {};
    const auto estimate = qve::EstimateProgress::Do(*plan);
    return {estimate.first, estimate.last, estimate.done, estimate.total};
}

}  // namespace qve::Server
