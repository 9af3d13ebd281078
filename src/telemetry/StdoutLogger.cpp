#include "telemetry/StdoutLogger.h"

#include <iostream>

namespace qve {

StdoutLogger::StdoutLogger() : SimpleLogger(std::cout) {}

}  // namespace qve
