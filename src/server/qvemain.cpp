#include "server/qvemain.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "algebra/Namespace.h"
#include "metrics/MetricsManager.h"
#include "os/MappedFile.h"
#include "os/OS.h"
#include "os/Path.h"
#include "os/Thread.h"
#include "os/WorkFolder.h"
#include "server/QVE_Server.h"
#include "server/ServerOptions.h"
#include "server/StopSignals.h"
#include "server/TerminateHandling.h"
#include "server/apply_settings.h"
#include "server/configuration.h"
#include "server/debugger.h"
#include "server/ipc/IPC_Server.h"
#include "server/ipc/IPC_SocketConnectionDescriptor.h"
#include "server/ipc/IPC_Whitelist.h"
#include "server/pid_temp_directory.h"
#include "server/qve_initialization.h"
#include "server/start_telemetry.h"
#include "server/startup_log.h"
#include "server/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"
#include "telemetry/SimpleLogger.h"
#include "telemetry/StdoutLogger.h"
#include "vql/eval/VQLQueryEvaluator.h"

namespace qve {
namespace {

using Endpoint = IPC_ConnectionDescriptor::Ptr;

/// Where the server listens: "port" of the configuration before its "listen" before the command line.
Endpoint ListenEndpoint(const usrprops& configuration, const Endpoint& fromCommandLine) {
    if (const std::wstring* port = configuration.get(usrpropkey::port)) {
        if (*port == L"auto") return std::make_shared<IPC_SocketConnectionDescriptor>(0);
        const std::uint64_t number = ReadUnsigned(*port);
        if (number == 0 || number > std::numeric_limits<std::uint16_t>::max()) {
            throw std::range_error("--port should be non-zero or 'auto'");
        }
        return std::make_shared<IPC_SocketConnectionDescriptor>(static_cast<std::uint16_t>(number));
    }
    if (const std::wstring* listen = configuration.get(usrpropkey::listen)) {
        return IPC_ConnectionDescriptor::Parse(narrow(*listen));
    }
    return fromCommandLine;
}

Endpoint CallbackEndpoint(const std::string& text) {
    if (text.empty()) return nullptr;
    Endpoint callback = IPC_ConnectionDescriptor::Parse(text);
    const auto* socket = dynamic_cast<const IPC_SocketConnectionDescriptor*>(callback.get());
    if (socket && socket->GetPort() == 0) throw std::range_error("Callback port must be positive integer");
    return callback;
}

void CheckConfig(const ServerOptions& options) {
    if (options.configGiven && !Path::isfile(widen(options.config))) {
        throw std::invalid_argument("--config " + options.config + ": file not found");
    }
}

usrprops LoadConfiguration(const std::string& path) {
    std::ifstream stream(Path::utf8path(widen(path)));
    return ReadConfiguration(stream);
}

/// The logger of the process and the thread that runs it; both end with this object.
class Logging {
public:
    Logging(const std::wstring& path, unsigned rotateInterval) {
        try {
            if (path.empty()) {
                Logger::Init(MakeRef<StdoutLogger>());
            } else {
                Logger::Init(MakeRef<SimpleLogger>(path, rotateInterval));
            }
        } catch (const std::exception&) {
            // A server without a log serves as well.
        }
        m_logger = Logger::Get();
        m_thread = MakeRef<Thread>(m_logger);
    }
    ~Logging() {
        m_logger->QueueStop();
        m_thread->join();
    }
    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;

private:
    RefCntPtr<Logger> m_logger;
    RefCntPtr<Thread> m_thread;
};

/// One run of the server, from the configuration to the end of its listener.
class Run {
public:
    explicit Run(const ServerOptions& options) : m_options(options) {
        m_listen = IPC_ConnectionDescriptor::Parse(options.listen);
        CheckConfig(options);
        m_log = widen(options.log);
        m_callback = CallbackEndpoint(options.callback);
        m_configuration = LoadConfiguration(options.config);
        m_listen = ListenEndpoint(m_configuration, m_listen);
        m_log = m_configuration.text(usrpropkey::log, m_log);
        VQLQueryEvaluator::SetDefaultDetailedLogging(m_configuration.is_true(usrpropkey::detailed_query_logging));
        Server::Connection::s_logQueueLength = m_configuration.is_true(usrpropkey::queue_length_logging);
        SimpleLogger::s_utc = m_configuration.is_true(usrpropkey::log_utc);
        MappedFile::s_trackingMappedFiles = m_configuration.is_true(usrpropkey::track_file_mapping);
    }

    const std::wstring& GetLogPath() const { return m_log; }
    unsigned GetLogRotateInterval() const {
        return static_cast<unsigned>(ReadUnsigned(m_configuration.text(usrpropkey::log_rotate_interval)));
    }

    void Serve(const std::vector<std::wstring>& arguments) {
        m_telemetry = StartTelemetry(m_options, m_configuration);
        ApplyTempDirectory();
        if (m_configuration.is_true(usrpropkey::pid_temp_dir)) UsePidTempDirectory();
        // A folder of its own, so that the next server can tell what this one leaves should it be killed.
        const WorkFolder temporary(OS::gettempdir(), L"qve_temp_");
        OS::tempdir(temporary.GetPath());
        SetupFaultReporting();
        std::shared_ptr<const IPC_Whitelist> whitelist;
        if (const std::wstring* text = m_configuration.get(usrpropkey::whitelist)) {
            whitelist = std::make_shared<IPC_Whitelist>(narrow(*text));
        }
        ApplyBlockLength();
        for (std::size_t i = 0; i < arguments.size(); ++i) LogEntry() << "argv[" << i << "]=\"" << arguments[i] << "\"";
        LogEntry() << "pid=" << OS::getpid();
        ApplySettings(m_configuration);
        LogConfiguration();
        LogMachine();

        auto listener = IPC_Server::MakeServer(m_listen, m_configuration.is_true(usrpropkey::allow_remote), m_callback,
                                               std::move(whitelist));
        const std::string descriptor = listener->GetDescriptor()->str();
        QVE_Server server(std::move(listener), m_configuration);
        const StopSignals stop([&server] { server.Shutdown(); });
        LogEntry() << "qveserver: server listening for incoming connections at: " << descriptor << "\n";
        while (server.Pump()) {
        }
    }

    /// Telemetry outlives the run: it ends when the exit is logged.
    std::unique_ptr<QVETelemetry> TakeTelemetry() { return std::move(m_telemetry); }

private:
    void SetupFaultReporting() const {
        TerminateHandling::Options options = TerminateHandling::BesideLog(Logger::Get()->GetBaseFilePath());
        options.noDumpFile = m_configuration.is_true(usrpropkey::no_dump_file);
        options.suspendOnCrash = m_configuration.is_true(usrpropkey::suspend_on_crash);
        TerminateHandling::SetupFaultReporting(options);
    }
    void ApplyTempDirectory() const {
        const std::wstring* directory = m_configuration.get(usrpropkey::temp_dir);
        if (!directory || directory->empty()) return;
        if (!Path::isdir(*directory)) {
            throw QVE_InvalidArgument(status::Server_TempDirectory,
                                      "the setting temp-dir names no folder: " + narrow(*directory) +
                                          "; make the folder, or take the setting out of the configuration");
        }
        OS::tempdir(*directory);
    }
    void ApplyBlockLength() const {
        constexpr unsigned least = 1024;
        const std::uint64_t length = ReadUnsigned(m_configuration.text(usrpropkey::block_length));
        if (length < least || length > std::numeric_limits<std::uint32_t>::max()) return;
        Namespace::s_blockLength = static_cast<unsigned>(length);
        LogEntry() << "block length=" << length;
    }
    void LogConfiguration() const {
        std::wostringstream text;
        text << m_configuration;
        if (!m_configuration.empty()) LogEntry() << text.str();
    }

    const ServerOptions& m_options;
    std::wstring m_log;
    usrprops m_configuration;
    Endpoint m_listen;
    Endpoint m_callback;
    std::unique_ptr<QVETelemetry> m_telemetry;
};

int LogFailure(const std::exception& exception) {
    LogEntry() << "qveserver: error (" << exception.what() << ")";
    return -1;
}

}  // namespace

int qvemain(const std::vector<std::wstring>& arguments) {
    std::vector<std::string> texts;
    for (const std::wstring& argument : arguments) texts.push_back(narrow(argument));
    const ServerOptions options = ServerOptions::Parse(texts);
    StopSignals::Block();
    MappedFile::SurviveCutFiles();
    qve_initialization();
    if (options.debugger) WaitForDebugger();
    std::unique_ptr<Run> run;
    try {
        run = std::make_unique<Run>(options);
    } catch (const std::exception& exception) {
        // There is no log yet.
        return LogFailure(exception);
    }
    const Logging logging(run->GetLogPath(), run->GetLogRotateInterval());
    int exitCode = 0;
    try {
        run->Serve(arguments);
    } catch (const std::exception& exception) {
        exitCode = LogFailure(exception);
    }
    std::unique_ptr<QVETelemetry> telemetry = run->TakeTelemetry();
    run.reset();
    LogEntry() << "qveserver: exit (" << exitCode << ")";
    telemetry.reset();
    Metrics::MetricsManager::ShutdownAndFreeInstance();
    return exitCode;
}

}  // namespace qve
