#pragma once

#include <charconv>
#include <string>
#include <string_view>
#include <type_traits>

#include "system/RefCntPtr.h"
#include "telemetry/Logger.h"

namespace qve {

/// One message, put together by `<<` and queued by the destructor, which throws nothing: `LogEntry() << "pid=" <<
/// OS::getpid();`. Nothing is built when the logger drops it. Narrow text is UTF-8.
class LogEntry {
public:
    LogEntry();
    ~LogEntry();
    LogEntry(const LogEntry&) = delete;
    LogEntry& operator=(const LogEntry&) = delete;

    /// False when the entry goes nowhere: guards what is costly to gather.
    explicit operator bool() const { return m_logger.get() != nullptr; }

    template <class T>
    LogEntry& operator<<(const T& part) {
        if (!m_logger) return *this;
        if constexpr (std::is_same_v<T, bool>) {
            m_text += part ? "true" : "false";
        } else if constexpr (std::is_same_v<T, char>) {
            m_text += part;
        } else if constexpr (std::is_arithmetic_v<T>) {
            char digits[64];
            m_text.append(digits, std::to_chars(digits, digits + sizeof(digits), part).ptr);
        } else if constexpr (std::is_convertible_v<const T&, std::wstring_view>) {
            Append(std::wstring_view(part));
        } else {
            m_text += std::string_view(part);
        }
        return *this;
    }

private:
    void Append(std::wstring_view text);

    RefCntPtr<Logger> m_logger;  // null when nothing will be written
    std::string m_text;
};

}  // namespace qve
