#pragma once

#include <string>
#include <vector>

#include "tests/primitives/test_column.h"

namespace qve::test {

/// What one row of an operation gives, computed the slow way: from the result's type, the arguments' types and values.
using row_reference = cell (*)(const type_info& result, const std::vector<const type_info*>& types,
                               const std::vector<cell>& arguments);

/// The reference of a map or select over plain types; null when this operation over these types is tested elsewhere.
row_reference reference_of(const std::wstring& operation, const std::vector<const type_info*>& types);

/// Likewise of operations with dates and moments, and conversions to and from them; these are to lie within the years
/// that have four digits.
row_reference date_reference_of(const std::wstring& operation, const std::vector<const type_info*>& types);

/// What the output of an operation that folds its argument into it holds before.
inline constexpr unsigned folded_before = 0xA5A5A5A5;

}  // namespace qve::test
