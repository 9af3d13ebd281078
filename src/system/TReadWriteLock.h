#pragma once

#include <shared_mutex>

namespace qve {

/// Many readers or one writer. Held through std::shared_lock and std::unique_lock.
using TReadWriteLock = std::shared_mutex;

}  // namespace qve
