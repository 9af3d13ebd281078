#pragma once

namespace qve {

/// The highest group number of `n` rows, at least one, of a selection or from row 0 on.
unsigned highest_group(unsigned n, unsigned const* groups, unsigned const* sel);

}  // namespace qve
