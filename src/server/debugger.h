#pragma once

namespace qve {

/// Waits until a debugger traces this process, for 100 seconds at most, and stops the process for it in either case.
void WaitForDebugger();

}  // namespace qve
