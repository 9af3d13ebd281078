#pragma once

#include <cstdint>
#include <string>

#include "storage/TableSpace.h"
#include "system/ProgressCallback.h"
#include "system/RefCntPtr.h"

namespace qve::Package {

/// Bytes that are copied at a time, between two looks whether to go on.
constexpr uint64_t copyWindow = 0x100000;

/// Reports how many files of a tree are done.
class TreeProgress {
public:
    /// @param progress null when nobody wants to know
    explicit TreeProgress(RefCntPtr<ProgressCallback> progress) : m_progress(std::move(progress)) {}

    /// Counts the files of a space.
    void Count(TableSpace& space);
    void AddFile();
    /// Throws Operator::CancelledException when it was cancelled.
    void Check() const;

private:
    static uint64_t CountFiles(TableSpace& space, const std::wstring& path);
    void Report() const;

    const RefCntPtr<ProgressCallback> m_progress;
    uint64_t m_done = 0;
    uint64_t m_total = 0;
};

}  // namespace qve::Package
