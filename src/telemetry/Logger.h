#pragma once

#include <iosfwd>
#include <string>

#include "system/RefCntPtr.h"
#include "system/Runnable.h"

namespace qve {

/// The process's log. A message is one entry; each of its lines is stamped. Writing happens on a thread that runs the
/// logger, so that no caller waits for the disk. All operations but Run may be called from any thread.
/// To build an entry only when it will be written, use LogEntry.
class Logger : public Runnable {
public:
    /// The body of the logging thread: writes what is queued, until QueueStop.
    void Run() override = 0;
    virtual void QueueMessage(std::wistream& text) = 0;
    /// The text is UTF-8, here and below.
    virtual void QueueMessage(std::istream& text) = 0;
    virtual void QueueMessage(const std::wstring& text) = 0;
    virtual void QueueMessage(const std::string& text) = 0;
    /// Flushes the output of what was written so far; the queue is not waited for.
    virtual void Flush() = 0;
    /// Ends Run once all that was queued before is written.
    virtual void QueueStop() = 0;
    /// The path as configured, without the time that rotation adds; empty without a file.
    virtual const std::wstring& GetBaseFilePath() const = 0;
    /// False when messages go nowhere.
    virtual bool IsWritten() const { return true; }

    /// Installs the logger of the process.
    static void Init(RefCntPtr<Logger> logger);
    /// The installed logger; one that drops everything when there is none. Never null.
    static RefCntPtr<Logger> Get();
};

}  // namespace qve
