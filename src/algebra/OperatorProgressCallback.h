#pragma once

#include <cstdint>

#include "algebra/DelegatedProgressCallback.h"

namespace qve {

/// The progress of an operator that works in steps, for others to read and cancel, and the check that its long loops
/// make.
class OperatorProgressCallback : public DelegatedProgressCallback {
public:
    using DelegatedProgressCallback::DelegatedProgressCallback;

    /// Reports `done` of `total` rows, and throws Operator::CancelledException when the operator was cancelled.
    void Step(uint64_t done, uint64_t total);
    /// Throws Operator::CancelledException when `progress` is not null and was cancelled.
    static void Check(const ProgressCallback* progress);
};

}  // namespace qve
