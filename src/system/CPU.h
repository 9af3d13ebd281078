#pragma once

namespace qve {

/// Which vector instructions the kernels may use on this processor.
class CPU {
public:
    /// Register numbers of `reg`: 0 EAX, 1 EBX, 2 ECX, 3 EDX.
    /// True when all bits of `mask` are set in that register of CPUID leaf 1 (subleaf 0);
    /// false when vector features are switched off or the processor does not report the leaf.
    static bool CheckInfo(unsigned reg, unsigned mask);
    /// The same on leaf 7.
    static bool CheckExtended(unsigned reg, unsigned mask);
    /// False when the environment variable QUILLON_VECTORIZATION is "0"; read once.
    static bool IsVectFeatureEnabled();
};

}  // namespace qve
