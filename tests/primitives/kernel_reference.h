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

}  // namespace qve::test
