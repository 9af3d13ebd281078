#pragma once

namespace qve {

/// Gives the process a temporary directory of its own inside the present one. When that cannot be, logs why and leaves
/// things as they are.
void UsePidTempDirectory();

}  // namespace qve
