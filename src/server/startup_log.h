#pragma once

namespace qve {

/// Logs what the machine offers and what of it queries may use.
void LogMachine();

}  // namespace qve
