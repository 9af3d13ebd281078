#pragma once

#include <cstdint>

namespace qve {

/// A number that tells this run of the machine, from its start to its end, from all others; 0 when the system does not
/// say.
uint64_t BootNumber();

}  // namespace qve
