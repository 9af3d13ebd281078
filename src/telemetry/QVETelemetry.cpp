#include "telemetry/QVETelemetry.h"

#include <stdexcept>

#include "metrics/MetricsManager.h"
#include "telemetry/LogEntry.h"
#include "telemetry/QVETelemetry_Configuration.h"
#include "telemetry/QVETelemetry_Listener.h"

namespace qve {
namespace {

using Metrics::MetricsBitsUtils;
using Metrics::MetricsManager;

std::uint64_t CheckedBits(const char* function, std::string_view mnemonics) {
    const std::string unknown = MetricsBitsUtils::ValidateMnemonicList(mnemonics);
    if (!unknown.empty()) throw std::invalid_argument(std::string(function) + ", unknown bits " + unknown);
    return MetricsBitsUtils::ToBits(mnemonics);
}

}  // namespace

QVETelemetry::QVETelemetry() = default;

QVETelemetry::~QVETelemetry() {
    Close();
}

void QVETelemetry::SetBits(std::string_view mnemonics) {
    m_wantedBits |= CheckedBits("SetBits", mnemonics);
}

void QVETelemetry::ClearBits(std::string_view mnemonics) {
    m_clearedBits |= CheckedBits("ClearBits", mnemonics);
}

void QVETelemetry::Open() {
    Configuration configuration = Configuration::evaluate(m_parameters);
    if (configuration.out.empty()) configuration.out = m_outputFileName;
    if (configuration.etwmarkers) LogEntry() << "Warning: ETW markers are emitted on the background thread.";
    const std::uint64_t cleared = m_clearedBits | configuration.clear;
    MetricsManager& manager = MetricsManager::GetInstance();
    manager.SetBits((m_wantedBits | configuration.set) & ~cleared);
    manager.ClearBits(cleared);
    manager.SetBits(Metrics::Bits::Session);
    auto listener = MakeRef<Listener>(std::move(configuration));
    listener->OpenOutput();
    manager.AddConsumer(listener);
    m_listener = std::move(listener);
    m_listener->Start(Metrics::Context());
}

void QVETelemetry::Close() {
    if (!m_listener) return;
    m_listener->Close();
    MetricsManager::GetInstance().RemoveConsumer(m_listener);
    m_listener.reset();
}

}  // namespace qve
