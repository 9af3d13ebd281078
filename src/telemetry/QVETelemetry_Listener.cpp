#include "telemetry/QVETelemetry_Listener.h"

#include <fmt/chrono.h>
#include <unistd.h>

#include <ctime>
#include <stdexcept>
#include <utility>

#include "metrics/MetricsManager.h"
#include "metrics/Scope.h"
#include "os/FormatFilename.h"
#include "os/OS.h"
#include "os/ProcessInfo.h"
#include "telemetry/LogEntry.h"

namespace qve {
namespace {

using Metrics::ControlCode;
using Metrics::EventKind;
using Metrics::ToString;
using Seconds = std::chrono::duration<double>;

constexpr char s_separator = '\t';
constexpr const char* s_columns[] = {"id",  "depth", "datetime", "timestamp", "elapse", "elapse exclude", "pid",
                                     "tid", "cid",   "session",  "scope",     "type",   "queryband",      "info"};
/// How long a line may wait in memory for the disk.
constexpr std::chrono::seconds s_flushInterval(1);

/// A text as one field: in quote marks, those inside doubled, when it holds what would end a field or a line.
std::string EncodeString(std::string_view text) {
    if (text.find_first_of("\t\"\r\n") == text.npos) return std::string(text);
    std::string encoded = "\"";
    for (const char c : text) {
        if (c == '"') encoded += c;
        encoded += c;
    }
    return encoded + '"';
}

void BuildAttributeString(std::string& info, std::string_view name, const Metrics::MetricsValue& value) {
    if (!info.empty()) info += ' ';
    info += name;
    info += '=';
    info += ToString(value);
}

std::string FormatDateTime(bool utc) {
    const std::time_t now = std::time(nullptr);
    return fmt::format("{:%Y%m%d %H%M%S}", utc ? fmt::gmtime(now) : fmt::localtime(now));
}

std::uint64_t SessionOf(const Metrics::MetricsValue& value) {
    if (const auto* number = std::get_if<std::uint64_t>(&value)) return *number;
    if (const auto* number = std::get_if<std::int64_t>(&value)) return static_cast<std::uint64_t>(*number);
    return 0;
}

const std::string& FirstOf(const std::string& given, const std::string& system) {
    return given.empty() ? system : given;
}

}  // namespace

QVETelemetry::Listener::Listener(Configuration configuration) : m_configuration(std::move(configuration)) {}

QVETelemetry::Listener::~Listener() {
    Close();
}

void QVETelemetry::Listener::OpenOutput() {
    const std::lock_guard lock(m_mutex);
    OpenOutputFile(m_configuration);
}

void QVETelemetry::Listener::Start(Metrics::Context context) {
    m_context = context;
    if (!m_configuration.runforeground) m_background = std::thread([this] { BackgroundThread(); });
}

void QVETelemetry::Listener::Close() {
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
    }
    m_close.notify_all();
    if (m_background.joinable()) m_background.join();
    const std::lock_guard lock(m_mutex);
    m_output.close();
}

void QVETelemetry::Listener::Reconfigure(std::string_view text) {
    try {
        Configuration configuration = Configuration::evaluate(text);
        const std::uint64_t set = configuration.set & ~configuration.clear;
        const std::uint64_t clear = configuration.clear;
        if (configuration.etwmarkers) LogEntry() << "Warning: ETW markers are emitted on the background thread.";
        {
            const std::lock_guard lock(m_mutex);
            if (configuration.out.empty()) configuration.out = m_configuration.out;
            OpenOutputFile(configuration);
            m_configuration = std::move(configuration);
        }
        Metrics::MetricsManager::GetInstance().SetBits(set);
        Metrics::MetricsManager::GetInstance().ClearBits(clear);
    } catch (const std::exception& exception) {
        LogEntry() << "Metrics reconfiguration failed: " << exception.what();
    }
}

void QVETelemetry::Listener::OnMetricsEvent(const Event& event) noexcept {
    try {
        if (event.kind == EventKind::Control) {
            OnControl(event);
        } else {
            const std::lock_guard lock(m_mutex);
            if (!m_output.is_open() && !m_configuration.emittolog) return;
            Handle(event);
        }
    } catch (const std::exception&) {
        // An event may come where nothing may be thrown; the statistics tell how many were lost.
        const std::lock_guard lock(m_mutex);
        ++m_dropped;
    }
}

void QVETelemetry::Listener::Handle(const Event& event) {
    switch (event.kind) {
        case EventKind::CreateContext:
            return OnCreateContext(event);
        case EventKind::OpenContext:
            return OnOpenContext(event);
        case EventKind::CloseContext:
            return OnCloseContext(event);
        case EventKind::OpenScope:
            return OnOpenScope(event);
        case EventKind::CloseScope:
            return OnCloseScope(event);
        case EventKind::NameValue:
            return OnNameValue(event);
        case EventKind::Attribute:
            return OnAttribute(event);
        case EventKind::Control:
            return;
    }
}

void QVETelemetry::Listener::OnControl(const Event& event) {
    if (event.code == ControlCode::Reconfigure) return Reconfigure(ToString(event.value));
    if (event.code != ControlCode::TraceSession) return;
    const std::lock_guard lock(m_mutex);
    if (event.name == "on") {
        m_tracedSessions.insert(SessionOf(event.value));
    } else {
        m_tracedSessions.erase(SessionOf(event.value));
    }
}

void QVETelemetry::Listener::OnCreateContext(const Event& event) {
    OutputEmpty(event, "create");
}

void QVETelemetry::Listener::OnOpenContext(const Event& event) {
    m_contexts[event.context].name = event.name;
    OutputEmpty(event, "open");
}

void QVETelemetry::Listener::OnCloseContext(const Event& event) {
    const auto found = m_contexts.find(event.context);
    if (found == m_contexts.end()) return;
    OutputEmpty(event, "close");
    SetSession(found->second, 0);
    m_contexts.erase(found);
}

void QVETelemetry::Listener::OnOpenScope(const Event& event) {
    ContextInfo& context = m_contexts[event.context];
    context.scopes.push_back(
        {.name = std::string(event.name), .info = std::exchange(context.info, {}), .start = event.time});
    if (m_configuration.emitopenscope) {
        OutputScope(context, event.context, context.scopes.back(), "open", event.time);
        context.scopes.back().info.clear();
    }
}

void QVETelemetry::Listener::OnCloseScope(const Event& event) {
    ContextInfo& context = m_contexts[event.context];
    if (context.scopes.empty()) return;  // it was opened before anyone listened
    const ScopeInfo& scope = context.scopes.back();
    OutputScope(context, event.context, scope, "close", event.time);
    const auto elapsed = event.time - scope.start;
    context.scopes.pop_back();
    if (!context.scopes.empty()) context.scopes.back().children += elapsed;
}

void QVETelemetry::Listener::OnNameValue(const Event& event) {
    ContextInfo& context = m_contexts[event.context];
    BuildAttributeString(context.scopes.empty() ? context.info : context.scopes.back().info, event.name, event.value);
}

void QVETelemetry::Listener::OnAttribute(const Event& event) {
    ContextInfo& context = m_contexts[event.context];
    const std::string_view name = event.name;
    if (name == "session") {
        SetSession(context, SessionOf(event.value));
    } else if (name == "queryband") {
        if (context.session != 0) m_sessions[context.session].queryBand = ToString(event.value);
    } else if (name == "tid") {
        context.tid = ToString(event.value);
    } else if (name == "pid") {
        context.pid = ToString(event.value);
    } else if (name == "cid") {
        context.cid = ToString(event.value);
    } else if (name == "thread") {
        context.name = ToString(event.value);
    } else {
        OnNameValue(event);
    }
}

void QVETelemetry::Listener::SetSession(ContextInfo& context, std::uint64_t session) {
    if (context.session == session) return;
    const auto former = m_sessions.find(std::exchange(context.session, session));
    if (session != 0) ++m_sessions[session].contexts;
    if (former != m_sessions.end() && --former->second.contexts == 0) m_sessions.erase(former);
}

std::string QVETelemetry::Listener::GetQueryBand(std::uint64_t session) const {
    const auto found = m_sessions.find(session);
    return found == m_sessions.end() ? std::string() : found->second.queryBand;
}

bool QVETelemetry::Listener::IsWanted(const ContextInfo& context) const {
    if (m_configuration.sessionspecific && context.session == 0) return false;
    return m_tracedSessions.empty() || m_tracedSessions.contains(context.session);
}

void QVETelemetry::Listener::OpenOutputFile(const Configuration& configuration) {
    m_rotationTimer = Timer(true);
    if (configuration.out.empty()) return;
    std::string name = FormatFilename(configuration.emitutc).format(configuration.out);
    if (m_output.is_open() && name == m_outputName) return;
    std::ofstream output(name, std::ios::app);
    if (!output) throw std::runtime_error("telemetry cannot write to \"" + name + "\"");
    m_output = std::move(output);
    m_outputName = std::move(name);
    WriteHeader();
}

void QVETelemetry::Listener::WriteHeader() {
    std::string line;
    for (const char* column : s_columns) {
        if (!line.empty()) line += s_separator;
        line += column;
    }
    m_output << line << '\n';
}

void QVETelemetry::Listener::Rotation() {
    if (m_rotationTimer.ElapsedSec() < m_configuration.rotationinterval) return;
    OpenOutputFile(m_configuration);
}

void QVETelemetry::Listener::OutputScope(const ContextInfo& context, std::uint64_t contextId, const ScopeInfo& scope,
                                         const char* type, TimePoint end) {
    if (!IsWanted(context)) return;
    Rotation();
    const double elapsed = Seconds(end - scope.start).count();
    const double excluded = elapsed - Seconds(scope.children).count();
    const std::string line = fmt::format(
        "{}\t{}\t{}\t{:.6f}\t{:.6f}\t{:.6f}\t{}\t{}\t{}\t{}\t{}\t{}\t{}\t{}", m_nextLine++,
        context.scopes.empty() ? 0 : context.scopes.size() - 1, FormatDateTime(m_configuration.emitutc),
        Seconds(scope.start - m_start).count(), elapsed, excluded, FirstOf(context.pid, std::to_string(OS::getpid())),
        FirstOf(context.tid, std::to_string(gettid())), FirstOf(context.cid, std::to_string(contextId)),
        context.session == 0 ? std::string() : std::to_string(context.session), EncodeString(scope.name), type,
        EncodeString(GetQueryBand(context.session)), EncodeString(scope.info));
    if (m_configuration.emittolog) LogEntry() << line;
    if (!m_output.is_open()) return;
    m_output << line << '\n';
    if (m_output) return;
    ++m_dropped;
    m_output.clear();
}

void QVETelemetry::Listener::OutputEmpty(const Event& event, const char* type) {
    if (!m_configuration.emitemptyevent) return;
    const ContextInfo& context = m_contexts[event.context];
    OutputScope(context, event.context, {.name = context.name, .info = {}, .start = event.time}, type, event.time);
}

void QVETelemetry::Listener::BackgroundThread() {
    LogEntry() << "QVETelemetry::Background thread starting";
    const Metrics::Context former = m_context.Attach("telemetry status collector");
    {
        const Metrics::Scope scope("QVETelemetry::BackgroundThread", Metrics::Bits::Process);
        DumpProcessStats("First process stats", false);
        Timer timer(true);
        std::unique_lock lock(m_mutex);
        while (!m_close.wait_for(lock, s_flushInterval, [this] { return m_closed; })) {
            m_output.flush();
            if (timer.ElapsedSec() < m_configuration.statsinterval) continue;
            timer.Reset();
            lock.unlock();
            DumpProcessStats("process stats", false);
            lock.lock();
        }
        lock.unlock();
        DumpProcessStats("Last process stats", true);
    }
    former.Restore();
    m_context.Close();
    LogEntry() << "QVETelemetry::Background thread exiting";
}

void QVETelemetry::Listener::DumpProcessStats(const char* name, bool last) {
    const Metrics::Scope scope(name, Metrics::Bits::Process);
    auto entries = ProcessInfo::ProcessSummary();
    {
        const std::lock_guard lock(m_mutex);
        if (m_dropped != 0) entries.emplace_back("telemetry.dropped", std::to_string(m_dropped));
    }
    std::string text;
    for (const auto& [entry, value] : entries) {
        Metrics::Attribute(entry, std::string_view(value), Metrics::Bits::Process);
        if (!text.empty()) text += ", ";
        text += entry + "=" + value;
    }
    LogEntry() << "process stats: " << text;
    if (!last) return;
    const std::lock_guard lock(m_mutex);
    m_output.flush();
}

}  // namespace qve
