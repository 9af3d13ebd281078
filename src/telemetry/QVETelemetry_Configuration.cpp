#include "telemetry/QVETelemetry_Configuration.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "metrics/MetricsBitsUtils.h"
#include "os/ParseCommandline.h"
#include "telemetry/SwitchArg2.h"

namespace qve {
namespace {

std::uint64_t BitsOf(const TCLAP::ValueArg<std::string>& argument) {
    const std::string& list = argument.getValue();
    const std::string unknown = Metrics::MetricsBitsUtils::ValidateMnemonicList(list);
    if (!unknown.empty()) {
        throw std::invalid_argument("Parameter " + argument.getName() + " has unknown bits - " + unknown);
    }
    return Metrics::MetricsBitsUtils::ToBits(list);
}

}  // namespace

QVETelemetry::Configuration QVETelemetry::Configuration::evaluate(std::string_view parameterText) {
    using Number = TCLAP::ValueArg<unsigned>;
    using Text = TCLAP::ValueArg<std::string>;
    Configuration result;
    TCLAP::CmdLine line("QVEMetricsListener", ' ', "n/a", false);
    line.setExceptionHandling(false);
    SwitchArg2 switches[] = {
        {"emittolog", "Emit scopes to log file (trace)", result.emittolog, line},
        {"emitopenscope", "Emit open scope", result.emitopenscope, line},
        {"etwmarkers", "Enable ETW markers", result.etwmarkers, line},
        {"emitutc", "Emit timestamp as UTC", result.emitutc, line},
        {"sessionspecific", "Only log session specific events", result.sessionspecific, line},
        {"emitemptyevent", "Emit empty events, usually thread generation", result.emitemptyevent, line},
        {"runforeground", "Run on foreground thread", result.runforeground, line},
    };
    Number rotation("", "rotationinterval", "Number of seconds between rotating the telemetry output", false,
                    result.rotationinterval, "unsigned", line);
    Number stats("", "statsinterval", "Number of seconds between process stats", false, result.statsinterval,
                 "unsigned", line);
    Text set("", "metrics.set", "List of mnemonic metrics bits to set", false, "", "text", line);
    Text clear("", "metrics.clear", "List of mnemonic metrics bits to cleared", false, "", "text", line);
    Text out("", "metrics.out", "Path to metrics log file", false, "", "text", line);

    std::vector<std::string> arguments = ParseCommandline::Parse(parameterText);
    arguments.insert(arguments.begin(), "QVETelemetryListener");
    try {
        line.parse(arguments);
        for (const SwitchArg2& one : switches) one.check();
    } catch (const TCLAP::ArgException& exception) {
        throw std::invalid_argument(exception.argId() + ": " + exception.error());
    }
    result.rotationinterval = std::max(rotation.getValue(), s_leastRotationInterval);
    result.statsinterval = std::clamp(stats.getValue(), 1U, s_greatestStatsInterval);
    result.set = BitsOf(set);
    result.clear = BitsOf(clear);
    result.out = out.getValue();
    return result;
}

}  // namespace qve
