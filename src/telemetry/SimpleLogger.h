#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "os/Timer.h"
#include "telemetry/Logger.h"

namespace qve {

/// A logger that writes to a file, or to a sequence of files that are named by the time of their opening.
class SimpleLogger : public Logger {
public:
    /// Opens the file; throws QVE_LogicError when that fails.
    /// @param rotateInterval seconds after which a new file is begun; 0 for one file for ever
    SimpleLogger(std::wstring path, unsigned rotateInterval);
    ~SimpleLogger() override;

    void Run() override;
    void QueueMessage(std::wistream& text) override;
    void QueueMessage(std::istream& text) override;
    void QueueMessage(const std::wstring& text) override;
    void QueueMessage(const std::string& text) override;
    void Flush() override;
    void QueueStop() override;
    const std::wstring& GetBaseFilePath() const override { return m_basePath; }

    /// Stamps and names of files are in UTC, else in local time. Written at start-up.
    static std::atomic<bool> s_utc;
    /// Bytes of text that may wait for the disk. Beyond them lines are dropped and counted, and the count is logged
    /// once there is room again: a stalled disk must not take all memory.
    static constexpr size_t MaximalQueueBytes = size_t{64} << 20;

protected:
    /// A logger without a file of its own; `output` outlives it.
    explicit SimpleLogger(std::ostream& output);

private:
    struct Queue;

    void QueueLines(std::string_view text);
    bool Open(const std::wstring& path);
    bool OpenUniqueName(const std::wstring& path, bool exclusive);
    bool OpenMaybeTruncate(const std::wstring& path, bool exclusive);
    void RotateCheck();
    void WriteStamped(std::string_view text);
    void WriteText(std::string_view text);

    std::unique_ptr<std::ostream> m_file;  // null when the output belongs to another
    std::ostream* m_output;
    std::mutex m_outputMutex;  // Flush may be called while the logging thread writes
    std::unique_ptr<Queue> m_queue;
    Timer m_rotationTimer;
    unsigned m_rotateInterval = 0;
    unsigned m_fileCount = 0;
    std::wstring m_basePath;
};

}  // namespace qve
