#pragma once

#include <atomic>
#include <cstdint>

/// What a test and the preloaded library of fault_injection.cpp share: the test maps the file that the environment
/// variable QVE_FAULTS names, and the library in the server maps it too.
struct FaultControl {
    enum Kind : int32_t { none, kill, noSpace, inputOutput };

    /// Calls that change the disk, counted while `armed`.
    std::atomic<int64_t> calls;
    /// The call, from 0, that is hit.
    std::atomic<int64_t> at;
    std::atomic<int32_t> kind;
    std::atomic<int32_t> armed;
    /// The name of the call that was hit.
    char name[24];
};
