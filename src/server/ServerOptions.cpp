#include "server/ServerOptions.h"

#include <tclap/CmdLine.h>

#include "system/unicode.h"
#include "types/usrpropkey.h"

namespace qve {
namespace {

/// An option that is also a key of the configuration file goes by the key's text.
std::string NameOf(usrpropkey key) {
    return narrow(UsrPropKey_ToString(key));
}

std::optional<std::string> GivenValue(TCLAP::ValueArg<std::string>& argument) {
    if (!argument.isSet()) return std::nullopt;
    return argument.getValue();
}

}  // namespace

ServerOptions ServerOptions::Parse(const std::vector<std::string>& arguments) {
    using Value = TCLAP::ValueArg<std::string>;
    TCLAP::CmdLine line("qveserver", ' ', "n/a");
    Value log("", "log", "Path to log file", false, "", "string", line);
    Value listen("", "listen", "Listening port", false, "quil.tcp://[::1]:27042", "endpoint", line);
    Value callback("", "callback", "Callback port ", false, "", "endpoint", line);
    Value config("", "config", "Path to log file", false, "qveconfig.yaml", "string", line);
    TCLAP::SwitchArg desktop("", "desktop", "Disable the resource manager", line);
    TCLAP::SwitchArg debugger("", "debugger", "Wait for the debugger be present", line);
    TCLAP::SwitchArg metricsEnable("", NameOf(usrpropkey::metrics_enable), "Enable metrics", line);
    Value metricsSet("", NameOf(usrpropkey::metrics_set), "", false, "", "string", line);
    Value metricsClear("", NameOf(usrpropkey::metrics_clear), "", false, "", "string", line);
    Value metricsOut("", NameOf(usrpropkey::metrics_out), "Path to metrics file", false, "", "string", line);
    Value metricsParameters("", NameOf(usrpropkey::metrics_parameters), "Path to metrics file", false, "", "string",
                            line);
    std::vector<std::string> texts = arguments;
    line.parse(texts);

    ServerOptions options;
    options.log = log.getValue();
    options.listen = listen.getValue();
    options.callback = callback.getValue();
    options.config = config.getValue();
    options.configGiven = config.isSet();
    options.debugger = debugger.getValue();
    options.metricsEnable = metricsEnable.getValue();
    options.metricsSet = GivenValue(metricsSet);
    options.metricsClear = GivenValue(metricsClear);
    options.metricsOut = GivenValue(metricsOut);
    options.metricsParameters = GivenValue(metricsParameters);
    return options;
}

}  // namespace qve
