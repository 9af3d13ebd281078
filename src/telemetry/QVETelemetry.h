#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "metrics/Context.h"
#include "system/RefCntPtr.h"

namespace qve {

/// Writes what the layers emit as metrics to a tab-separated text, one line a scope, and adds statistics of the process
/// from time to time. Set it up, then Open it, all from one thread; while it is open the settings `metrics.*` of
/// statements reconfigure it.
class QVETelemetry {
public:
    struct Configuration;
    class Listener;

    QVETelemetry();
    /// Closes it.
    ~QVETelemetry();
    QVETelemetry(const QVETelemetry&) = delete;
    QVETelemetry& operator=(const QVETelemetry&) = delete;

    /// The kinds of events to write, by their mnemonics, and those not to. Both throw std::invalid_argument for unknown
    /// ones.
    void SetBits(std::string_view mnemonics);
    void ClearBits(std::string_view mnemonics);
    /// A pattern that FormatFilename fills in. Empty: no file.
    void SetOutputFileName(std::string path) { m_outputFileName = std::move(path); }
    /// Options as on a command line, see Configuration; they go before what the functions above were told.
    void SetParameters(std::string text) { m_parameters = std::move(text); }

    /// Throws std::invalid_argument for parameters that are none, std::runtime_error when the file cannot be opened.
    void Open();
    bool IsOpen() const noexcept { return m_listener.get() != nullptr; }
    void Close();

private:
    std::string m_parameters;
    std::string m_outputFileName;
    std::uint64_t m_wantedBits = 0;
    std::uint64_t m_clearedBits = 0;
    RefCntPtr<Listener> m_listener;
};

}  // namespace qve
