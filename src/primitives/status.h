#pragma once

namespace qve::status {

inline constexpr int ResolvePrimitive = 40378;
inline constexpr int pack_func = 40676;
/// A width resolver was asked for a value width other than 1, 2, 4 and 8.
inline constexpr int column_kernel_width = 40677;

}  // namespace qve::status
