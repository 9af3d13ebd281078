#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "algebra/Namespace.h"

namespace qve {

/// How cells print, as a sort compares them: nulls first, numbers as such, of which NaN is the last, and text and times
/// by their characters.
inline int CompareCells(const std::string& a, const std::string& b) {
    const auto rank = [](const std::string& cell) { return cell == "NULL" ? 0 : 1; };
    if (rank(a) != rank(b)) return rank(a) - rank(b);
    if (rank(a) == 0) return 0;
    const auto isText = [](const std::string& cell) {
        if (cell.front() == '\'' || cell == "t" || cell == "f" || cell.find(':') != std::string::npos) return true;
        return cell.find('-', 1) != std::string::npos && cell.find('e') == std::string::npos;
    };
    if (isText(a) || isText(b)) return a.compare(b);
    const auto number = [](const std::string& cell) {
        return cell.find("nan") != std::string::npos ? std::numeric_limits<long double>::infinity() : std::stold(cell);
    };
    const bool nanA = a.find("nan") != std::string::npos;
    const bool nanB = b.find("nan") != std::string::npos;
    if (nanA || nanB) return static_cast<int>(nanA) - static_cast<int>(nanB);
    return number(a) < number(b) ? -1 : (number(a) > number(b) ? 1 : 0);
}

/// The order of rows by their first cells, as the specs, one for each cell, say.
inline int CompareRows(const std::vector<std::string>& a, const std::vector<std::string>& b,
                       const std::vector<Namespace::SortSpec>& specs) {
    for (size_t k = 0; k < specs.size(); ++k) {
        const int order = CompareCells(a[k], b[k]);
        if (order != 0) return specs[k].descending ? -order : order;
    }
    return 0;
}

/// The row with another zero than minus zero, which sorts and compares like it.
inline std::vector<std::string> WithOneZero(std::vector<std::string> row) {
    std::replace(row.begin(), row.end(), std::string("-0"), std::string("0"));
    return row;
}

}  // namespace qve
