#pragma once

#include "primitives/primitive_func.h"

namespace qve {

// Kernels picked by the width of a value in bytes (1, 2, 4 or 8) instead of by name, for operators that move values
// without an expression. Any other width raises logic error 40677 with the name of the function.
// "type" means plain values, "usr" tokens of a heap: where source and target have different heaps the value is read
// from the one and put into the other, else the token is copied.

/// out[i] = source[index[i]]; arguments: index, source. An index beyond source.count, as an all-ones one, gives the
/// all-ones pattern of the width. Where the null of the type must come, take the "fetch" of that type.
binary_func map_fetch_ulng_col_type_col(unsigned long width);
binary_func map_fetch_ulng_col_usr_col(unsigned long width);
binary_func map_fetch_oid_col_type_col(unsigned long width);
binary_func map_fetch_oid_col_usr_col(unsigned long width);

/// out[i] = a[i], or a[0] for every row.
unary_func map_type_type_col(unsigned long width);
unary_func map_type_type_val(unsigned long width);
unary_func map_usr_usr_col(unsigned long width);
unary_func map_usr_usr_val(unsigned long width);

/// Token of `from` bytes to token of `to` bytes. The all-ones null of the one becomes the all-ones null of the other.
unary_func map_idx_col_idx_col(unsigned long from, unsigned long to);

/// out[index[i]] = a[i]; arguments: a, index. Serves to scatter rows to places of their own.
binary_func map_any_type_col_ulng_col(unsigned long width);

/// out[group[i]] = a[i] where the group has no value yet: any value of the group that is not null; arguments: a, group
/// index. Plain values take the all-ones pattern of the width for null.
binary_func agg_any_type_col_uidx_col(unsigned long width);
binary_func agg_any_usr_col_uidx_col(unsigned long width);

/// out[i] (bit) = a[i] differs from the row before, in selection order; the first row's output stays as it was.
/// The second form ORs into what is there.
unary_func map_run_type_col(unsigned long width);
unary_func map_rerun_type_col(unsigned long width);

/// From a bit vector, or one bit for all, to a selection: the positions whose value is true.
unary_func sel_copy_bit_col();
unary_func sel_copy_bit_val();

}  // namespace qve
