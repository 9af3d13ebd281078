#pragma once

#include "primitives/primitive_func.h"
#include "types/input_column.h"
#include "types/output_column.h"

namespace qve {

/// Parses the texts of a token column as values of a plain type T; a text that is no such value gives a null. Blanks
/// around it do not count, and a text with a fraction gives an integer its whole part.
template <class T, bool Constant>
unsigned parse_text(unsigned n, output_column out, input_column a, unsigned const* sel);

/// Prints values of a plain type T into the heap of the output.
template <class T, bool Constant>
unsigned print_text(unsigned n, output_column out, input_column a, unsigned const* sel);

/// Copies tokens, or their values when the heaps differ; the widths may differ too.
template <bool Constant>
unsigned copy_text(unsigned n, output_column out, input_column a, unsigned const* sel);

}  // namespace qve
