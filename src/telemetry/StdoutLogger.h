#pragma once

#include "telemetry/SimpleLogger.h"

namespace qve {

/// A logger that writes to standard output.
class StdoutLogger final : public SimpleLogger {
public:
    StdoutLogger();
};

}  // namespace qve
