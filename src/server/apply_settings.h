#pragma once

#include "types/usrprops.h"

namespace qve {

/// Writes the settings of the evaluator and the engine that stand in the configuration; the others keep their defaults.
/// Called once, before there are other threads that read them.
void ApplySettings(const usrprops& configuration);

}  // namespace qve
