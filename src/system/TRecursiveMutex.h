#pragma once

#include <mutex>

namespace qve {

/// A mutex that its holder may lock again.
using TRecursiveMutex = std::recursive_mutex;

}  // namespace qve
