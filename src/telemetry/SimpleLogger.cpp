#include "telemetry/SimpleLogger.h"

#include <condition_variable>
#include <cstdio>
#include <fstream>
#include <istream>
#include <iterator>
#include <vector>

#include "os/Path.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/log_time.h"
#include "telemetry/status.h"

namespace qve {

namespace {

// Names that are tried for a file before the directory itself must be at fault.
constexpr unsigned nameAttempts = 1000;

std::string stamp() {
    return FormatHeader(std::chrono::system_clock::now(), std::this_thread::get_id(),
                        SimpleLogger::s_utc.load(std::memory_order_relaxed));
}

}  // namespace

std::atomic<bool> SimpleLogger::s_utc{false};

struct SimpleLogger::Queue {
    std::mutex mutex;  // held for a push or a swap, never while anything is written
    std::condition_variable filled;
    std::vector<std::string> messages;  // each of one or more whole lines
    size_t bytes = 0;                   // of all messages that are not written yet
    uint64_t dropped = 0;               // lines
    bool stopped = false;
};

SimpleLogger::SimpleLogger(std::wstring path, unsigned rotateInterval)
    : m_output(nullptr),
      m_queue(std::make_unique<Queue>()),
      m_rotateInterval(rotateInterval),
      m_basePath(std::move(path)) {
    if (!Open(m_basePath)) {
        throw QVE_LogicError(status::SimpleLogger_SimpleLogger,
                             "SimpleLogger constructor failed. Couldn't open: '" + Path::utf8path(m_basePath) + "'");
    }
    if (m_rotateInterval != 0) m_rotationTimer.Start();
}

SimpleLogger::SimpleLogger(std::ostream& output) : m_output(&output), m_queue(std::make_unique<Queue>()) {}

SimpleLogger::~SimpleLogger() = default;

bool SimpleLogger::Open(const std::wstring& path) {
    if (m_rotateInterval == 0) return OpenUniqueName(path, false);
    const auto [stem, extension] = Path::splitext(path);
    const std::wstring time =
        FormatRotationTime(std::chrono::system_clock::now(), s_utc.load(std::memory_order_relaxed));
    return OpenUniqueName(stem + time + extension, true);
}

bool SimpleLogger::OpenUniqueName(const std::wstring& path, bool exclusive) {
    if (OpenMaybeTruncate(path, exclusive)) return true;
    const auto [stem, extension] = Path::splitext(path);
    for (unsigned counter = 1; counter <= nameAttempts; ++counter) {
        if (OpenMaybeTruncate(stem + L"_" + std::to_wstring(counter) + extension, exclusive)) return true;
    }
    return false;
}

bool SimpleLogger::OpenMaybeTruncate(const std::wstring& path, bool exclusive) {
    const std::string name = Path::utf8path(path);
    if (exclusive) {
        // A name of a rotation belongs to one process alone, also when two rotate in the same second.
        FILE* made = ::fopen(name.c_str(), "wxe");
        if (!made) return false;
        ::fclose(made);
    } else if (Path::exists(path) && !Path::isfile(path)) {
        return false;
    }
    auto file = std::make_unique<std::ofstream>(name, std::ios::app | std::ios::binary);
    if (!*file) return false;
    m_file = std::move(file);
    m_output = m_file.get();
    ++m_fileCount;
    return true;
}

void SimpleLogger::QueueMessage(std::wistream& text) {
    QueueLines(narrow(std::wstring(std::istreambuf_iterator<wchar_t>(text), {})));
}

void SimpleLogger::QueueMessage(std::istream& text) {
    QueueLines(std::string(std::istreambuf_iterator<char>(text), {}));
}

void SimpleLogger::QueueMessage(const std::wstring& text) {
    QueueLines(narrow(text));
}

void SimpleLogger::QueueMessage(const std::string& text) {
    QueueLines(text);
}

void SimpleLogger::QueueLines(std::string_view text) {
    const std::string header = stamp();
    std::string message;
    uint64_t lines = 0;
    message.reserve(header.size() + text.size() + 1);
    for (; !text.empty(); ++lines) {
        const size_t end = std::min(text.find('\n'), text.size());
        message.append(header).append(text.substr(0, end)).append(1, '\n');
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (lines == 0) return;
    std::lock_guard lock(m_queue->mutex);
    if (m_queue->bytes + message.size() > MaximalQueueBytes) {
        m_queue->dropped += lines;
        return;
    }
    m_queue->bytes += message.size();
    m_queue->messages.push_back(std::move(message));
    if (m_queue->messages.size() == 1) m_queue->filled.notify_one();
}

void SimpleLogger::QueueStop() {
    std::lock_guard lock(m_queue->mutex);
    m_queue->stopped = true;
    m_queue->filled.notify_one();
}

void SimpleLogger::Run() {
    std::vector<std::string> batch;
    for (bool stopped = false; !stopped;) {
        uint64_t dropped;
        {
            std::unique_lock lock(m_queue->mutex);
            m_queue->filled.wait(lock, [this] { return !m_queue->messages.empty() || m_queue->stopped; });
            batch.swap(m_queue->messages);
            dropped = std::exchange(m_queue->dropped, 0);
            stopped = std::exchange(m_queue->stopped, false);
        }
        if (dropped != 0) WriteStamped(std::to_string(dropped) + " log lines were dropped: the log could not keep up");
        for (const std::string& message : batch) {
            RotateCheck();
            WriteText(message);
            std::lock_guard lock(m_queue->mutex);
            m_queue->bytes -= message.size();
        }
        batch.clear();
    }
    Flush();
}

void SimpleLogger::RotateCheck() {
    if (m_rotateInterval == 0 || m_rotationTimer.ElapsedSec() <= m_rotateInterval) return;
    WriteStamped("logfile_rotation: closing this log");
    {
        std::lock_guard lock(m_outputMutex);
        Open(m_basePath);  // when it fails, the present file goes on
    }
    WriteStamped("logfile_rotation: opening new log");
    m_rotationTimer.Reset();
}

void SimpleLogger::WriteStamped(std::string_view text) {
    WriteText(stamp().append(text).append(1, '\n'));
}

void SimpleLogger::WriteText(std::string_view text) {
    std::lock_guard lock(m_outputMutex);
    m_output->clear();  // a full disk may have room again
    m_output->write(text.data(), static_cast<std::streamsize>(text.size()));
    m_output->flush();
}

void SimpleLogger::Flush() {
    std::lock_guard lock(m_outputMutex);
    m_output->flush();
}

}  // namespace qve
