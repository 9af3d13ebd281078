#include "cli/ProgressBar.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace qve::cli {
namespace {

constexpr uint64_t s_unknown = ~uint64_t{0};
constexpr std::size_t s_defaultWidth = 80;

std::size_t TerminalWidth() {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : s_defaultWidth;
}

}  // namespace

std::string Grouped(unsigned long long number) {
    std::string digits = std::to_string(number);
    for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
    return digits;
}

std::string ProgressLine(const QVE_Progress& progress, double seconds, std::size_t width) {
    std::string facts;
    if (progress.first_rows != s_unknown) facts += Grouped(progress.first_rows) + " rows  ";
    facts += fmt::format("{:.1f} s", seconds);
    if (progress.total == s_unknown || progress.total == 0 || progress.done == s_unknown) return facts.substr(0, width);

    const double share =
        std::min(1.0, static_cast<double>(progress.done) / static_cast<double>(std::max<uint64_t>(progress.total, 1)));
    const std::string percent = fmt::format("{:3}%  ", static_cast<int>(share * 100));
    const std::size_t taken = percent.size() + facts.size() + 3;
    std::string bar;
    if (width > taken + 4) {
        const std::size_t cells = std::min<std::size_t>(width - taken, 40);
        const auto full = static_cast<std::size_t>(share * static_cast<double>(cells));
        bar = "[" + std::string(full, '#') + std::string(cells - full, '.') + "] ";
    }
    return (bar + percent + facts).substr(0, width);
}

ProgressBar::ProgressBar() : m_visible(isatty(STDERR_FILENO) != 0) {}

ProgressBar::~ProgressBar() {
    if (m_visible) std::cerr << "\r\x1B[K" << std::flush;
}

void ProgressBar::Show(const QVE_Progress& progress) {
    if (!m_visible) return;
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - m_start;
    // The last column stays free: some terminals go to the next line behind it.
    std::cerr << "\r" << ProgressLine(progress, elapsed.count(), TerminalWidth() - 1) << "\x1B[K" << std::flush;
}

}  // namespace qve::cli
