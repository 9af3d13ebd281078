#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qve::cli {

/// Columns that UTF-8 text takes on a terminal: wide characters take two, marks that combine none.
std::size_t DisplayWidth(std::string_view utf8);

/// The text with control characters written as escapes, so that data cannot steer the terminal or break lines.
std::string Printable(std::string_view utf8);

}  // namespace qve::cli
