#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "client/qve.h"

namespace qve::cli {

/// One line that tells how far a statement is: a bar and its share of the work, or the rows alone while that is not
/// known, and the seconds so far. At most `width` columns of the terminal.
std::string ProgressLine(const QVE_Progress& progress, double seconds, std::size_t width);

/// A progress line on the terminal of standard error; nothing when that is none. One statement, from its beginning to
/// the end of the object, which takes the line away.
class ProgressBar {
public:
    ProgressBar();
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    bool IsVisible() const { return m_visible; }
    void Show(const QVE_Progress& progress);

private:
    const bool m_visible;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

/// A number with its thousands apart: "12,345".
std::string Grouped(unsigned long long number);

}  // namespace qve::cli
