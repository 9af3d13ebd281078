#include "client/QVE_ServerProcess2.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "client/status.h"
#include "server/ipc/IPC_ConnectionDescriptor.h"
#include "server/ipc/IPC_ServerProxy.h"
#include "system/QuillonException.h"
#include "telemetry/LogEntry.h"

// POSIX asks programs to declare it.
extern char** environ;

namespace qve {
namespace {

/// How long a server may take to call back, in milliseconds.
constexpr int s_callBackTimeout = 30000;

std::string ErrorText(int error) {
    return std::generic_category().message(error);
}

/// Texts as execvpe wants them: made before the fork, as the child of a program with threads must not allocate.
class TextArray {
public:
    void Add(std::string text) { m_texts.push_back(std::move(text)); }
    void Add(std::string_view option, const std::string& value) {
        if (value.empty()) return;
        Add(std::string(option));
        Add(value);
    }
    char** Get() {
        m_pointers.clear();
        for (std::string& text : m_texts) m_pointers.push_back(text.data());
        m_pointers.push_back(nullptr);
        return m_pointers.data();
    }

private:
    std::vector<std::string> m_texts;
    std::vector<char*> m_pointers;
};

TextArray MakeEnvironment(const std::string& tempDirectory) {
    constexpr std::string_view key = "TMPDIR=";
    TextArray texts;
    for (char** entry = environ; *entry; ++entry) {
        if (tempDirectory.empty() || !std::string_view(*entry).starts_with(key)) texts.Add(*entry);
    }
    if (!tempDirectory.empty()) texts.Add(std::string(key) + tempDirectory);
    return texts;
}

/// In the child, between fork and exec: only what a signal handler may do, too.
[[noreturn]] void RunServer(char** arguments, char** environment, int failure) {
    // What this program ignores or blocks is not the server's business.
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    // Ctrl-C at the terminal of the parent is for the parent.
    setpgid(0, 0);
    execvpe(arguments[0], arguments, environment);
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(failure, &error, sizeof(error));
    _exit(127);
}

[[noreturn]] void ThrowLaunchFailure(const std::string& path, int error) {
    const std::string text = path + ": " + ErrorText(error);
    LogEntry() << "Failed to launch server: " << text;
    throw QVE_RuntimeError(status::QVE_ServerProcess_Launch, "Failed to launch server: " + text);
}

/// Forks and runs the program. Gives its process id.
pid_t Launch(TextArray& arguments, TextArray& environment) {
    char** const argumentTexts = arguments.Get();
    char** const environmentTexts = environment.Get();
    const std::string path = argumentTexts[0];
    // The child's end closes by itself when the program runs; a failure to run it comes through.
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) ThrowLaunchFailure(path, errno);
    const pid_t child = fork();
    if (child == 0) RunServer(argumentTexts, environmentTexts, ends[1]);
    const int forkError = errno;
    close(ends[1]);
    int error = 0;
    ssize_t received = 0;
    if (child > 0) {
        do {
            received = read(ends[0], &error, sizeof(error));
        } while (received < 0 && errno == EINTR);
    }
    close(ends[0]);
    if (child < 0) ThrowLaunchFailure(path, forkError);
    if (received == sizeof(error)) {
        waitpid(child, nullptr, 0);
        ThrowLaunchFailure(path, error);
    }
    return child;
}

}  // namespace

class QVE_ServerProcess2::Impl {
public:
    ~Impl() {
        try {
            if (m_child) Stop();
        } catch (const std::exception&) {
            // Nobody is left to tell.
        }
    }

    void Start(const QVE_ServerOptions& options) {
        if (m_child) throw QVE_LogicError(status::QVE_ServerProcess_AlreadyStarted, "server process already started");
        m_proxy = IPC_ServerProxy::MakeProxy();
        LogEntry() << "server callback endpoint: " << m_proxy->GetDescriptor()->str();
        LogEntry() << "server listen endpoint: " << options.listen;
        TextArray arguments;
        arguments.Add(options.path);
        arguments.Add("--callback", m_proxy->GetDescriptor()->str());
        arguments.Add("--listen", options.listen);
        arguments.Add("--log", options.log);
        arguments.Add("--config", options.config);
        if (options.desktop) arguments.Add("--desktop");
        TextArray environment = MakeEnvironment(options.tempDirectory);
        m_child = Launch(arguments, environment);
        m_descriptor = WaitForCallBack();
        LogEntry() << "Server is up and running";
        LogEntry() << "Server is listening at: " << m_descriptor;
    }

    void Stop() {
        CheckStarted();
        if (m_descriptor.empty()) {
            LogEntry() << "Closing server (no descriptor available).";
        } else {
            LogEntry() << "Closing server at " << m_descriptor;
        }
        m_proxy->Close();
        if (IsAlive()) kill(*m_child, SIGTERM);
        for (int i = 0; i < 5 && IsAlive(); ++i) Sleep();
        if (IsAlive()) {
            LogEntry() << "Server would not shutdown. Sending kill signal";
            kill(*m_child, SIGKILL);
            waitpid(*m_child, nullptr, 0);
        } else {
            LogEntry() << "Server was successfully closed";
        }
        m_child.reset();
        m_ended = false;
        m_descriptor.clear();
        m_proxy.reset();
    }

    bool IsAlive() {
        if (!m_child) return false;
        // A child that was waited for once is gone: its number may be another's by now.
        if (!m_ended) m_ended = waitpid(*m_child, nullptr, WNOHANG) != 0;
        return !m_ended;
    }

    const std::string& GetServerDescriptor() const {
        CheckStarted();
        return m_descriptor;
    }
    int GetProcessId() const {
        CheckStarted();
        return *m_child;
    }

private:
    void CheckStarted() const {
        if (!m_child) throw QVE_LogicError(status::QVE_ServerProcess_NotStarted, "server process not started");
    }

    /// Most servers leave within a few milliseconds: a tenth of a second in short steps.
    void Sleep() {
        for (int i = 0; i < 20 && IsAlive(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }

    std::string WaitForCallBack() {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(s_callBackTimeout);
        try {
            // In steps, as a server that has ended will never call.
            while (Clock::now() < deadline) {
                const bool alive = IsAlive();
                constexpr int step = 50;
                if (const auto descriptor = m_proxy->WaitForServer(step)) return descriptor->str();
                if (!alive) break;
            }
        } catch (const std::exception& exception) {
            LogEntry() << "server call-back failed: " << exception.what();
        }
        Stop();
        throw QVE_RuntimeError(status::QVE_ServerProcess_CallBack, "server did not call us back");
    }

    std::unique_ptr<IPC_ServerProxy> m_proxy;
    std::optional<pid_t> m_child;
    bool m_ended = false;
    std::string m_descriptor;
};

QVE_ServerProcess2::QVE_ServerProcess2() : m_impl(std::make_unique<Impl>()) {}
QVE_ServerProcess2::~QVE_ServerProcess2() = default;

void QVE_ServerProcess2::Start(const QVE_ServerOptions& options) {
    m_impl->Start(options);
}
void QVE_ServerProcess2::Stop() {
    m_impl->Stop();
}
bool QVE_ServerProcess2::IsAlive() {
    return m_impl->IsAlive();
}
const std::string& QVE_ServerProcess2::GetServerDescriptor() const {
    return m_impl->GetServerDescriptor();
}
int QVE_ServerProcess2::GetProcessId() const {
    return m_impl->GetProcessId();
}

}  // namespace qve
