#pragma once

#include <memory>

#include "telemetry/QVETelemetry.h"
#include "types/usrprops.h"

namespace qve {

struct ServerOptions;

/// Opens telemetry as the command line asks, or else as the configuration does; null when neither does. What fails is
/// logged and leaves the server without telemetry.
std::unique_ptr<QVETelemetry> StartTelemetry(const ServerOptions& options, const usrprops& configuration);

}  // namespace qve
