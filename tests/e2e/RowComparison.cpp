#include "tests/e2e/RowComparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace qve::test {
namespace {

std::optional<double> Number(const Cell& cell) {
    if (const auto* integer = std::get_if<long long>(&cell)) return static_cast<double>(*integer);
    if (const auto* real = std::get_if<double>(&cell)) return *real;
    return std::nullopt;
}

// A text by which rows can be brought in one order on both sides, also where numbers differ in their last digits or one
// side has an integer and the other a double.
std::string SortKey(const Row& row) {
    std::string key;
    for (const Cell& cell : row) {
        if (const auto* real = std::get_if<double>(&cell)) {
            const double whole = std::round(*real);
            const bool isWhole = std::abs(*real - whole) <= 1e-9 * std::abs(whole);
            key += isWhole ? fmt::format("{:.0f}", whole + 0.0) : fmt::format("{:.6g}", *real);
        } else {
            key += FormatCell(cell);
        }
        key += '\x1f';
    }
    return key;
}

}  // namespace

bool Same(const Cell& a, const Cell& b) {
    const auto x = Number(a);
    const auto y = Number(b);
    if (!x || !y) return a == b;
    if (std::holds_alternative<long long>(a) && std::holds_alternative<long long>(b)) return a == b;
    return *x == *y || std::abs(*x - *y) <= 1e-9 * std::max(std::abs(*x), std::abs(*y));
}

bool Same(const Row& a, const Row& b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](const Cell& x, const Cell& y) { return Same(x, y); });
}

// Whether of two rows of one sort key the first has the lower numbers.
static bool NumbersBefore(const Row& a, const Row& b) {
    for (size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        const auto x = Number(a[i]);
        const auto y = Number(b[i]);
        if (x && y && !Same(a[i], b[i])) return *x < *y;
    }
    return false;
}

void Sort(std::vector<Row>& rows) {
    std::vector<std::pair<std::string, size_t>> keys;
    for (size_t i = 0; i < rows.size(); ++i) keys.emplace_back(SortKey(rows[i]), i);
    std::sort(keys.begin(), keys.end(), [&rows](const auto& a, const auto& b) {
        return a.first != b.first ? a.first < b.first : NumbersBefore(rows[a.second], rows[b.second]);
    });
    std::vector<Row> sorted;
    for (const auto& [key, row] : keys) sorted.push_back(std::move(rows[row]));
    rows = std::move(sorted);
}

std::string FormatRow(const Row& row) {
    std::string text;
    for (const Cell& cell : row) text += (text.empty() ? "" : " | ") + FormatCell(cell);
    return text;
}

std::string Differences(std::vector<Row> actual, std::vector<Row> expected, bool anyOrder) {
    if (anyOrder) {
        Sort(actual);
        Sort(expected);
    }
    const size_t rows = std::min(actual.size(), expected.size());
    size_t i = 0;
    while (i < rows && Same(actual[i], expected[i])) ++i;
    if (i == actual.size() && i == expected.size()) return {};
    const auto show = [i](const std::vector<Row>& from) { return i < from.size() ? FormatRow(from[i]) : "no row"; };
    return fmt::format("{} rows, expected {}; row {}\n  is       {}\n  expected {}", actual.size(), expected.size(), i,
                       show(actual), show(expected));
}

}  // namespace qve::test
