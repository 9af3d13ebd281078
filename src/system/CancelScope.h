#pragma once

namespace qve {

class ProgressCallback;

/// While one exists, the work of this thread is that of an operator, and long steps in layers that know no operators,
/// such as writing out a window of a temporary file, end when the operator is cancelled. Scopes nest; the innermost
/// counts.
class CancelScope {
public:
    /// `progress` may be null, and outlives the scope.
    explicit CancelScope(const ProgressCallback* progress);
    ~CancelScope();
    CancelScope(const CancelScope&) = delete;
    CancelScope& operator=(const CancelScope&) = delete;

    /// Throws Operator::CancelledException when the operator of the innermost scope of this thread was cancelled.
    static void Check();

private:
    const ProgressCallback* const m_outer;
};

}  // namespace qve
