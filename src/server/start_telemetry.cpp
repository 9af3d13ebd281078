#include "server/start_telemetry.h"

#include <optional>
#include <string>

#include "metrics/MetricsManager.h"
#include "server/ServerOptions.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"

namespace qve {
namespace {

/// What telemetry is told; what is empty was not said.
struct TelemetryOptions {
    std::optional<std::string> parameters;
    std::optional<std::string> set;
    std::optional<std::string> clear;
    std::optional<std::string> out;
};

std::optional<std::string> TextOf(const usrprops& configuration, usrpropkey key) {
    const std::wstring* text = configuration.get(key);
    if (!text) return std::nullopt;
    return narrow(*text);
}

std::optional<TelemetryOptions> OptionsOf(const ServerOptions& options, const usrprops& configuration) {
    if (options.metricsEnable) {
        return TelemetryOptions{options.metricsParameters, options.metricsSet, options.metricsClear,
                                options.metricsOut};
    }
    if (!configuration.is_true(usrpropkey::metrics_enable)) return std::nullopt;
    return TelemetryOptions{
        TextOf(configuration, usrpropkey::metrics_parameters), TextOf(configuration, usrpropkey::metrics_set),
        TextOf(configuration, usrpropkey::metrics_clear), TextOf(configuration, usrpropkey::metrics_out)};
}

void Open(QVETelemetry& telemetry, const TelemetryOptions& options) {
    if (options.set) telemetry.SetBits(*options.set);
    if (options.clear) telemetry.ClearBits(*options.clear);
    if (options.out) telemetry.SetOutputFileName(*options.out);
    if (options.parameters) telemetry.SetParameters(*options.parameters);
    telemetry.Open();
}

}  // namespace

std::unique_ptr<QVETelemetry> StartTelemetry(const ServerOptions& options, const usrprops& configuration) {
    const std::optional<TelemetryOptions> asked = OptionsOf(options, configuration);
    if (!asked) return nullptr;
    auto telemetry = std::make_unique<QVETelemetry>();
    try {
        Metrics::MetricsManager::Enable();
        Open(*telemetry, *asked);
    } catch (const std::exception& exception) {
        LogEntry() << exception.what();
    } catch (...) {
        LogEntry() << "Metrics returned an unexpected exception";
    }
    LogEntry() << (telemetry->IsOpen() ? "metrics opened" : "Failed to enable metrics");
    return telemetry;
}

}  // namespace qve
