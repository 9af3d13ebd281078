#pragma once

#include <cstdint>

namespace qve {

/// Starts the numbers of "random" anew (setting `seed`), so that the same draws in the same order give the same
/// numbers. Without it every process has numbers of its own. Any thread may call it.
void seed_random_numbers(uint64_t seed);

}  // namespace qve
