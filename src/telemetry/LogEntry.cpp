#include "telemetry/LogEntry.h"

#include <new>

#include "system/unicode.h"

namespace qve {

LogEntry::LogEntry() : m_logger(Logger::Get()) {
    if (!m_logger->IsWritten()) m_logger.reset();
}

LogEntry::~LogEntry() {
    if (!m_logger) return;
    try {
        m_logger->QueueMessage(m_text);
    } catch (const std::bad_alloc&) {
        // There is no memory left for the entry itself, and nobody to tell.
    }
}

void LogEntry::Append(std::wstring_view text) {
    m_text += narrow(text);
}

}  // namespace qve
